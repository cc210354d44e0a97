// Suffixes, sizes, and the filters that take a value out of its printed description.
#include "core/plugin_static_function.h"
#include "evidence/files.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using service = plugin_static_function;
using text_filter = QString (*)(const QString &);
Q_DECLARE_METATYPE(text_filter)

class filters_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { service::set_cancel_extraction(false); }

    void value_data();
    void value();
    void size();
    void cancelled();
};

void filters_test::value_data()
{
    QTest::addColumn<text_filter>("filter");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    text_filter filter = nullptr;
    const auto row = [&filter](const char *name, const char *text, const char *expected) {
        QTest::newRow(name) << filter << QString::fromUtf8(text) << QString::fromUtf8(expected);
    };

    filter = &service::mining_suffix;
    row("suffix: hidden file", "/home/anna/.profile", "");
    row("suffix: hidden file with a suffix", ".profile.bak", "bak");
    row("suffix: two leading points", "..profile", "profile");
    row("suffix: of two the last", "archive.tar.gz", "gz");
    row("suffix: point at the end", "name.", "");
    row("suffix: point in the folder only", "/Mail.mbox/Info", "");
    row("suffix: capitals stay", "/a/Größe.ÄML", "ÄML");
    row("suffix: blanks", "  ", "");

    filter = &service::get_filtered_number_value;
    row("number", "<CFNumber 0xb037 [0x7fff]>{value = +1234, type = kCFNumberSInt64Type}", "1234");
    row("number: negative has no value", "<CFNumber 0xb037 [0x7fff]>{value = -1234, type = kCFNumberSInt64Type}", "");
    row("number: second plus ends it", "{value = +1.5e+10, type}", "1.5e");
    row("number: plus behind the comma", "{value = 5, +7}", "");
    row("number: no comma", "+1234", "");
    row("number: blanks", "  ", "");

    filter = &service::get_filtered_boolean_value;
    row("boolean", "<CFBoolean 0x7fff [0x7fff]>{value = true}", "true");
    row("boolean: no marker", "{value = true}", "");
    row("boolean: no equals sign", "<CFBoolean 0x7fff [0x7fff]>{true}", "");
    row("boolean: nothing behind the equals sign", "<CFBoolean 0x7fff [0x7fff]>{value =", "");

    filter = &service::get_filtered_cfstring_value;
    row("string", "<CFString 0x1 [0x2]>{contents = \" Übersicht, 2015 \"}", "Übersicht, 2015");
    row("string: quotes inside go", "<CFString 0x1 [0x2]>{contents = \"say \"hi\"\"}", "say hi");
    row("string: an equals sign ends it", "<CFString 0x1 [0x2]>{contents = \"a == b\"}", "a");
    row("string: blanks", " ", "");

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
    row("origins: apostrophe", "(\"Anna\\U2019s Mac\")", "Anna's Mac");
    row("origins: three blanks", "(\"a   b\")", "a b");
    row("origins: blanks", "   ", "");

    filter = &service::get_filtered_date_value;
    row("date: offset has no effect", "2015-03-01 10:20:30 +0530", "1425205230");
    row("date: no offset", "2015-03-01T10:20:30", "1425205230");
    row("date: fraction is cut off", "2015-03-01T10:20:30.999Z", "1425205230");
    row("date: first with a value", "1973-03-03 09:46:40 +0000", "100000000");
    row("date: last without one", "1973-03-03 09:46:39 +0000", "");
    row("date: words", "yesterday", "");
    row("date: blanks", "  ", "");
}

void filters_test::value()
{
    QFETCH(text_filter, filter);
    QFETCH(QString, text);
    qputenv("TZ", "America/St_Johns"); // none of the values depends on the machine's time zone
    ::tzset();
    QTEST(filter(text), "expected");
}

void filters_test::size()
{
    const QTemporaryDir root;
    const QTemporaryDir elsewhere;
    const auto at = [&root](const char *name) { return root.filePath(QString::fromUtf8(name)); };
    const QString outside = elsewhere.filePath(QStringLiteral("outside"));
    evidence::make_folder(at("Mail/Ordner/leer"));
    evidence::write_file(at("Mail/a"), QByteArray(1000, 'a'));
    evidence::write_file(at("Mail/.hidden"), QByteArray(200, 'h'));
    evidence::write_file(at("Mail/Ordner/ü"), QByteArray(30, 'u'));
    evidence::write_file(outside, QByteArray(7, 'o'));
    QVERIFY(QFile::link(outside, at("Mail/link to a file")));
    QVERIFY(QFile::link(elsewhere.path(), at("Mail/link to a folder")));
    QVERIFY(QFile::link(at("Mail"), at("Mail/Ordner/circle")));
    QCOMPARE(::mkfifo(at("Mail/pipe").toUtf8().constData(), 0600), 0);

    QCOMPARE(service::mining_size(at("Mail")), QStringLiteral("1230"));
    QCOMPARE(service::mining_size(at("Mail/a")), QStringLiteral("1000"));
    QCOMPARE(service::mining_size(at("Mail/Ordner/leer")), QStringLiteral("0"));
    QCOMPARE(service::mining_size(at("missing")), QString());

    service::set_cancel_extraction(true);
    QCOMPARE(service::mining_size(at("Mail")), QString::number(QFileInfo(at("Mail")).size()));
    QCOMPARE(service::mining_size(at("Mail/a")), QStringLiteral("1000"));
}

void filters_test::cancelled()
{
    service::set_cancel_extraction(true);
    QCOMPARE(service::get_filtered_string_value(QStringLiteral("(Anna, Berta)")), QString());
    QCOMPARE(service::get_filtered_wherefrom_value(QStringLiteral("(\"Anna\")")), QStringLiteral("Anna"));
}

QTEST_GUILESS_MAIN(filters_test)
#include "filters_test.moc"
