// Conversions of the times found in sources, in several time zones and, by a second registration, under a locale whose
// digits and month names are not English.
#include "tests/services/service_test.h"

#include <QTemporaryDir>

#include <fcntl.h>

class test_times : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        row("apple: words", "never", "978307200");

        convert = &service::convert_timestamp_to_human_readable_in_UTC;
        row("readable: English month, no fraction", " 1425205230.9 ", "01-Mar-2015 10:20:30");
        row("readable: before 1970", "-1", "31-Dec-1969 23:59:59");
        row("readable: last of 32 bits", "2147483647", "19-Jan-2038 03:14:07");
        row("readable: beyond 32 bits", "2147483648", "");
        row("readable: zero", "0", "");
        row("readable: less than a second", "0.5", "");
        row("readable: words", "never", "");
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

    void iso_date_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("as_read");           // empty: no date-time
        QTest::addColumn<QString>("seconds_in_berlin"); // since 1970
        text_row("no offset is local time", "2015-03-01T10:20:30", "2015-03-01 10:20:30", "1425201630");
        text_row("Z", " 2015-03-01T10:20:30Z ", "2015-03-01 10:20:30", "1425205230");
        text_row("offset", "2015-03-01T10:20:30-03:30", "2015-03-01 10:20:30", "1425217830");
        text_row("offset behind a blank", "2015-03-01 10:20:30 +0530", "2015-03-01 10:20:30", "1425185430");
        text_row("no such day", "2015-02-30 10:20:30 +0000", "", "");
        text_row("words", "the day before yesterday", "", "");
        text_row("blanks", "  ", "", "");
    }

    void iso_date()
    {
        QFETCH(QString, text);
        set_time_zone("Europe/Berlin");
        const QDateTime result = service::get_datetime_from_string_with_iso_date(text);
        const QString as_read = result.date().toString(Qt::ISODate) + " "_s + result.time().toString(Qt::ISODate);
        QTEST(result.isValid() ? as_read : QString(), "as_read");
        QTEST(result.isValid() ? QString::number(result.toMSecsSinceEpoch() / 1000) : QString(), "seconds_in_berlin");
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
};

QTEST_GUILESS_MAIN(test_times)
#include "test_times.moc"
