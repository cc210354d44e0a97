// Values of the result tables that are made of texts alone or of a file's facts: times in several time zones, filters
// of printed descriptions, percent escapes, suffixes and what they tell, sizes. A second registration runs all of it
// under a locale whose digits and month names are not English.
#include "services/percent_encoding.h"
#include "services/plugin_helper_functions.h"
#include "tests/services/service_test.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <fcntl.h>

class test_values : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { service::set_cancel_extraction(false); }

    void conversion_data()
    {
        QTest::addColumn<text_operation>("convert");
        QTest::addColumn<QByteArray>("zone");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("expected");
        text_operation convert = &service::convert_apple_time_to_epoch;
        QByteArray zone = "America/St_Johns"; // half an hour off, behind UTC
        const auto row = [&convert, &zone](const char *name, const char *text, const char *expected) {
            QTest::newRow(name) << convert << zone << QString::fromUtf8(text) << QString::fromUtf8(expected);
        };
        row("apple: fraction is cut off", " 446898030.999 ", "1425205230");
        row("apple: before 2001", "-978307201", "-1");
        row("apple: blanks", "  \t", "");
        row("apple: zero", " 0 ", "");
        row("apple: zero with a fraction is a time", "0.0", "978307200");
        row("apple: largest of 32 bits", "2147483647", "3125790847");
        row("apple: beyond 32 bits", "2147483648", "978307200");

        convert = &service::convert_timestamp_to_human_readable_in_UTC;
        row("readable: English month, no fraction", " 1425205230.9 ", "01-Mar-2015 10:20:30");
        row("readable: before 1970", "-1", "31-Dec-1969 23:59:59");
        row("readable: last of 32 bits", "2147483647", "19-Jan-2038 03:14:07");
        row("readable: beyond 32 bits", "2147483648", "");
        row("readable: zero", "0", "");
        row("readable: less than a second", "0.5", "");
        row("readable: blanks", "  ", "");

        convert = &service::convert_T_Z_time_to_epoch;
        row("local: date, behind UTC", "20150301", "1425180600");
        row("local: hyphens in the time", "2015-03-01T10-20-30", "1425217830");
        row("local: blanks", " \n ", "");
        zone = "Asia/Kolkata";
        row("local: T without a time, ahead of UTC", " 20150301T ", "1425148200");
        row("local: no hyphens", "20150301T102030", "1425185430");
        zone = "Europe/Berlin";
        row("local: winter", " 20150301 102030 ", "1425201630");
        row("local: summer", "2015-07-01T10:20:30", "1435738830");
        row("local: Z is local time all the same", "20150301T102030Z", "1425201630");
        row("local: offset behind a blank is not read", "2015-03-01 10:20:30 +0500", "1425201630");
        zone = "UTC";
        row("local: fraction is cut off", "2015-03-01 10:20:30.999", "1425205230");
        row("local: cut towards zero before 1970", "1969-12-31 23:59:58.500", "-1");

        zone = "Europe/Berlin";
        convert = [](const QString &text) {
            const QDateTime read = service::get_datetime_from_string_with_iso_date(text);
            return !read.isValid() ? QString()
                                   : read.date().toString(Qt::ISODate) + " "_s + read.time().toString(Qt::ISODate) +
                                         " = "_s + QString::number(read.toMSecsSinceEpoch() / 1000);
        };
        row("ISO date: no offset is local time", "2015-03-01T10:20:30", "2015-03-01 10:20:30 = 1425201630");
        row("ISO date: Z", " 2015-03-01T10:20:30Z ", "2015-03-01 10:20:30 = 1425205230");
        row("ISO date: offset", "2015-03-01T10:20:30-03:30", "2015-03-01 10:20:30 = 1425217830");
        row("ISO date: offset behind a blank", "2015-03-01 10:20:30 +0530", "2015-03-01 10:20:30 = 1425185430");
        row("ISO date: no such day", "2015-02-30 10:20:30 +0000", "");
        row("ISO date: blanks", "  ", "");

        zone = "America/St_Johns"; // none of the following depends on the machine's time zone
        convert = &service::mining_suffix;
        row("suffix: hidden file", "/home/anna/.profile", "");
        row("suffix: hidden file with a suffix", ".profile.bak", "bak");
        row("suffix: of two the last", "archive.tar.gz", "gz");
        row("suffix: point at the end", "name.", "");
        row("suffix: point in the folder only", "/Mail.mbox/Info", "");
        row("suffix: capitals stay", "/a/Größe.ÄML", "ÄML");

        convert = &service::get_filtered_number_value;
        row("number", "<CFNumber 0xb037 [0x7fff]>{value = +1234, type = kCFNumberSInt64Type}", "1234");
        row("number: negative has no value", "<CFNumber 0xb037 [0x7fff]>{value = -1234, type = kCFNumberSInt64Type}",
            "");
        row("number: second plus ends it", "{value = +1.5e+10, type}", "1.5e");
        row("number: plus behind the comma", "{value = 5, +7}", "");
        row("number: no comma", "+1234", "");

        convert = &service::get_filtered_boolean_value;
        row("boolean", "<CFBoolean 0x7fff [0x7fff]>{value = true}", "true");
        row("boolean: no marker", "{value = true}", "");
        row("boolean: no equals sign", "<CFBoolean 0x7fff [0x7fff]>{true}", "");
        row("boolean: nothing behind the equals sign", "<CFBoolean 0x7fff [0x7fff]>{value =", "");

        convert = &service::get_filtered_cfstring_value;
        row("string", "<CFString 0x1 [0x2]>{contents = \" Übersicht, 2015 \"}", "Übersicht, 2015");
        row("string: quotes inside go", "<CFString 0x1 [0x2]>{contents = \"say \"hi\"\"}", "say hi");
        row("string: an equals sign ends it", "<CFString 0x1 [0x2]>{contents = \"a == b\"}", "a");

        convert = &service::get_filtered_string_value;
        row("list: two", "(\n    \"Anna (home)\",\n    Berta\n)", "Anna home;Berta");
        row("list: empty entries stay", "(,Anna,)", ";Anna;");
        row("list: blanks", " \n ", "");

        convert = &service::get_filtered_wherefrom_value;
        row("origins: two", "(\n    \"http://a.example/x\",\n    \"http://b.example/\"\n)",
            "http://a.example/x;http://b.example/");
        row("origins: comma inside", "(\n    \"http://a.example/1,2\"\n)", "http://a.example/1\n2");
        row("origins: escapes", "(\"Gr%C3%B6%C3%9Fe <anna@a.example>\")", "Größe (anna@a.example)");
        row("origins: apostrophe", "(\"Anna\\U2019s   Mac\")", "Anna's Mac");
        row("origins: blanks", "   ", "");

        convert = &service::get_filtered_date_value;
        row("date: offset has no effect", "2015-03-01 10:20:30 +0530", "1425205230");
        row("date: no offset, no fraction", "2015-03-01T10:20:30.999", "1425205230");
        row("date: first with a value", "1973-03-03 09:46:40 +0000", "100000000");
        row("date: last without one", "1973-03-03 09:46:39 +0000", "");
        row("date: words", "yesterday", "");

        convert = [](const QString &text) {
            return QString::fromLatin1(percent_decoded(text.toLatin1()).replace('\0', "<0>"));
        };
        row("escapes: both cases", "%5BGmail%5d/All%20Mail", "[Gmail]/All Mail");
        row("escapes: once only", "%2541", "%41");
        row("escapes: no digits", "%zz %4g %g4 %-1", "%zz %4g %g4 %-1");
        row("escapes: behind a percent sign", "%%41%4%42", "%A%4B");
        row("escapes: cut off", "a%4", "a%4");
        row("escapes: at the end", "100%", "100%");
        row("escapes: zero byte", "a%00b", "a<0>b");

        convert = [](const QString &names) { // the sets that tell images, audio and video by the names' extensions
            plugin_helper_functions helper{nullptr};
            QStringList sets;
            for (const QString &name : names.split(QLatin1Char(' '))) {
                sets += (helper.check_is_image_by_extn(name) ? "image "_s : QString()) +
                        (helper.check_is_audio_by_extn(name) ? "audio "_s : QString()) +
                        (helper.check_is_video_by_extn(name) ? "video "_s : QString());
            }
            sets.removeDuplicates();
            return sets.join(QLatin1Char('|'));
        };
        row("media: images", ".001 .2bp .36 .411 .73i .8pbs .8xi .abm .accountpicture-ms .acorn", "image ");
        row("media: audio, which video falls back to", ".2sf .2sflib .3ga .4mp .669 .6cm .8cm .8med .8svx .a2m",
            "audio video ");
        row("media: video", ".264 .3g2 .3gp .3gp2 .3gpp .3gpp2 .3mm .3p2 .60d .787 .aaf", "video ");
        row("media: capital letters, and a blank behind", "PHOTO.ACORN photo.Acorn\t", "image ");
        row("media: another extension", "acorn photo.acorn.txt photo.acor photo.acorns", "");
        row("media: points at the end", "photo.acorn. photo.acorn.. photo.acorn.\t . ..", "");
        row("media: other first characters", "photo.-acorn photo.äcorn film.\u0663gp", "");
    }

    void conversion()
    {
        QFETCH(text_operation, convert);
        QFETCH(QByteArray, zone);
        QFETCH(QString, text);
        QVERIFY2(QFile::exists("/usr/share/zoneinfo/"_s + QString::fromLatin1(zone)), "install the time zones");
        set_time_zone(zone);
        QTEST(convert(text), "expected");
    }

    void file_times()
    {
        const QTemporaryDir root;
        const QString file = root.filePath("brief.emlx"_s);
        evidence::write_file(file, "content");
        const timespec times[] = {{1425205230, 999000000}, {-2, 500000000}}; // last read, and 1.5 seconds before 1970
        QCOMPARE(::utimensat(AT_FDCWD, file.toUtf8().constData(), times, 0), 0);
        struct statx status = {};
        QCOMPARE(::statx(AT_FDCWD, file.toUtf8().constData(), 0, STATX_BTIME, &status), 0);

        set_time_zone("America/St_Johns");
        const posix_timestamp_record record = service::get_posix_timestamp(" /brief.emlx "_s, root.path() + " "_s);
        QCOMPARE(record.last_access_timestamp, qint64(1425205230));
        QCOMPARE(record.modification_timestamp, qint64(-1));
        QCOMPARE(record.creation_timestamp,
                 (status.stx_mask & STATX_BTIME) ? qint64(status.stx_btime.tv_sec) : qint64(0));

        // Another root, no root, no path: never the file that the rest alone would name.
        for (const auto &[path, source_root] : {std::pair{file, "/elsewhere"_s}, {file, " "_s}, {"  "_s, file}}) {
            const posix_timestamp_record none = service::get_posix_timestamp(path, source_root);
            QVERIFY(!none.creation_timestamp && !none.last_access_timestamp && !none.modification_timestamp);
        }
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

        plugin_helper_functions helper{nullptr};
        helper.set_cancel_extraction(true);
        QVERIFY(!helper.check_is_image_by_extn("photo.acorn"_s));
        QVERIFY(!helper.check_is_video_by_extn("sound.8svx"_s));
        helper.set_essentials();
        QVERIFY(helper.check_is_image_by_extn("photo.acorn"_s));
    }
};

QTEST_GUILESS_MAIN(test_values)
#include "test_values.moc"
