// Suffixes, sizes, and the filters that take a value out of its printed description.
#include "tests/services/service_test.h"

#include <QFileInfo>
#include <QTemporaryDir>

class test_filters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { service::set_cancel_extraction(false); }

    void value_data()
    {
        QTest::addColumn<text_operation>("filter");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        text_operation filter = &service::mining_suffix;
        const auto row = [&filter](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << filter << QString::fromUtf8(text) << QString::fromUtf8(expected);
        };
        row("suffix: hidden file", "/home/anna/.profile", "");
        row("suffix: hidden file with a suffix", ".profile.bak", "bak");
        row("suffix: of two the last", "archive.tar.gz", "gz");
        row("suffix: point at the end", "name.", "");
        row("suffix: point in the folder only", "/Mail.mbox/Info", "");
        row("suffix: capitals stay", "/a/Größe.ÄML", "ÄML");
        row("suffix: blanks", "  ", "");

        filter = &service::get_filtered_number_value;
        row("number", "<CFNumber 0xb037 [0x7fff]>{value = +1234, type = kCFNumberSInt64Type}", "1234");
        row("number: negative has no value", "<CFNumber 0xb037 [0x7fff]>{value = -1234, type = kCFNumberSInt64Type}",
            "");
        row("number: second plus ends it", "{value = +1.5e+10, type}", "1.5e");
        row("number: plus behind the comma", "{value = 5, +7}", "");
        row("number: no comma", "+1234", "");

        filter = &service::get_filtered_boolean_value;
        row("boolean", "<CFBoolean 0x7fff [0x7fff]>{value = true}", "true");
        row("boolean: no marker", "{value = true}", "");
        row("boolean: no equals sign", "<CFBoolean 0x7fff [0x7fff]>{true}", "");
        row("boolean: nothing behind the equals sign", "<CFBoolean 0x7fff [0x7fff]>{value =", "");

        filter = &service::get_filtered_cfstring_value;
        row("string", "<CFString 0x1 [0x2]>{contents = \" Übersicht, 2015 \"}", "Übersicht, 2015");
        row("string: quotes inside go", "<CFString 0x1 [0x2]>{contents = \"say \"hi\"\"}", "say hi");
        row("string: an equals sign ends it", "<CFString 0x1 [0x2]>{contents = \"a == b\"}", "a");

        filter = &service::get_filtered_string_value;
        row("list: two", "(\n    \"Anna (home)\",\n    Berta\n)", "Anna home;Berta");
        row("list: one", "(\n    Anna\n)", "Anna");
        row("list: empty entries stay", "(,Anna,)", ";Anna;");
        row("list: blanks", " \n ", "");

        filter = &service::get_filtered_wherefrom_value;
        row("origins: two", "(\n    \"http://a.example/x\",\n    \"http://b.example/\"\n)",
            "http://a.example/x;http://b.example/");
        row("origins: comma inside", "(\n    \"http://a.example/1,2\"\n)", "http://a.example/1\n2");
        row("origins: escapes", "(\"Gr%C3%B6%C3%9Fe <anna@a.example>\")", "Größe (anna@a.example)");
        row("origins: apostrophe", "(\"Anna\\U2019s   Mac\")", "Anna's Mac");
        row("origins: blanks", "   ", "");

        filter = &service::get_filtered_date_value;
        row("date: offset has no effect", "2015-03-01 10:20:30 +0530", "1425205230");
        row("date: no offset, no fraction", "2015-03-01T10:20:30.999", "1425205230");
        row("date: first with a value", "1973-03-03 09:46:40 +0000", "100000000");
        row("date: last without one", "1973-03-03 09:46:39 +0000", "");
        row("date: words", "yesterday", "");
    }

    void value()
    {
        QFETCH(text_operation, filter);
        QFETCH(QString, text);
        set_time_zone("America/St_Johns"); // none of the values depends on the machine's time zone
        QTEST(filter(text), "expected");
    }

    void size()
    {
        const QTemporaryDir root;
        const QTemporaryDir elsewhere;
        const auto at = [&root](const char *name) { return root.filePath(QString::fromUtf8(name)); };
        evidence::make_folder(at("Mail/Ordner/leer"));
        evidence::write_file(at("Mail/a"), QByteArray(1000, 'a'));
        evidence::write_file(at("Mail/.hidden"), QByteArray(200, 'h'));
        evidence::write_file(at("Mail/Ordner/ü"), QByteArray(30, 'u'));
        evidence::write_file(elsewhere.filePath("outside"_s), QByteArray(7, 'o'));
        QVERIFY(QFile::link(elsewhere.filePath("outside"_s), at("Mail/link to a file")));
        QVERIFY(QFile::link(elsewhere.path(), at("Mail/link to a folder")));
        QVERIFY(QFile::link(at("Mail"), at("Mail/Ordner/circle")));
        make_pipe(at("Mail/pipe"));

        QCOMPARE(service::mining_size(at("Mail")), "1230"_s);
        QCOMPARE(service::mining_size(at("Mail/a")), "1000"_s);
        QCOMPARE(service::mining_size(at("Mail/Ordner/leer")), "0"_s);
        QCOMPARE(service::mining_size(at("missing")), QString());
        service::set_cancel_extraction(true);
        QCOMPARE(service::mining_size(at("Mail")), QString::number(QFileInfo(at("Mail")).size()));
    }

    void cancelled()
    {
        service::set_cancel_extraction(true);
        QCOMPARE(service::get_filtered_string_value("(Anna, Berta)"_s), QString());
        QCOMPARE(service::get_filtered_wherefrom_value("(\"Anna\")"_s), "Anna"_s); // asks no flag
    }
};

QTEST_GUILESS_MAIN(test_filters)
#include "test_filters.moc"
