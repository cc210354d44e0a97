// Conversions of the times found in sources, in several time zones and, by a second registration, under a locale whose
// digits and month names are not English.
#include "core/plugin_static_function.h"
#include "evidence/files.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTimeZone>

#include <ctime>
#include <fcntl.h>
#include <sys/stat.h>

using service = plugin_static_function;

namespace {

void set_time_zone(const QByteArray &zone)
{
    qputenv("TZ", zone);
    ::tzset();
}

void text_row(const char *name, const char *text, const char *expected)
{
    QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(expected);
}

} // namespace

class times_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { set_time_zone("UTC"); }

    void apple_time_data();
    void apple_time();
    void local_time_data();
    void local_time();
    void readable_time_data();
    void readable_time();
    void iso_date_data();
    void iso_date();
    void file_times();
    void file_times_of_nothing();
};

void times_test::apple_time_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    text_row("whole seconds", "446898030", "1425205230");
    text_row("fraction is cut off", " 446898030.999 ", "1425205230");
    text_row("before 2001", "-978307201", "-1");
    text_row("none", "", "");
    text_row("blanks", "  \t", "");
    text_row("zero", " 0 ", "");
    text_row("zero with a fraction is a time", "0.0", "978307200");
    text_row("largest of 32 bits", "2147483647", "3125790847");
    text_row("beyond 32 bits", "2147483648", "978307200");
    text_row("exponent is no number", "4.46898030e8", "978307204");
    text_row("words", "never", "978307200");
}

void times_test::apple_time()
{
    QFETCH(QString, text);
    QTEST(service::convert_apple_time_to_epoch(text), "expected");
}

void times_test::local_time_data()
{
    QTest::addColumn<QByteArray>("zone");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *zone, const char *text, const char *expected) {
        QTest::newRow(name) << QByteArray(zone) << QString::fromUtf8(text) << QString::fromUtf8(expected);
    };
    row("date alone, UTC", "UTC", "20150301", "1425168000");
    row("date alone, one hour ahead", "Europe/Berlin", "20150301", "1425164400");
    row("date alone, half hours behind", "America/St_Johns", "20150301", "1425180600");
    row("date alone, half hours ahead", "Asia/Kolkata", " 20150301 ", "1425148200");
    row("T without a time", "Asia/Kolkata", "20150301T", "1425148200");
    row("summer time", "Europe/Berlin", "2015-07-01T10:20:30", "1435738830");
    row("hyphens in the time", "America/St_Johns", "2015-03-01T10-20-30", "1425217830");
    row("no hyphens", "Asia/Kolkata", "20150301T102030", "1425185430");
    row("blank in place of the T", "Europe/Berlin", " 20150301 102030 ", "1425201630");
    row("Z is local time all the same", "Europe/Berlin", "20150301T102030Z", "1425201630");
    row("fraction is cut off", "UTC", "2015-03-01 10:20:30.999", "1425205230");
    row("cut towards zero before 1970", "UTC", "1969-12-31 23:59:58.500", "-1");
    row("offset behind a blank is not read", "UTC", "2015-03-01 10:20:30 +0100", "1425205230");
    row("none", "UTC", "", "");
    row("blanks", "UTC", " \n ", "");
}

void times_test::local_time()
{
    QFETCH(QByteArray, zone);
    QFETCH(QString, text);
    QVERIFY2(QTimeZone::availableTimeZoneIds().contains(zone), "the time zone data is not installed");
    set_time_zone(zone);
    QTEST(service::convert_T_Z_time_to_epoch(text), "expected");
}

void times_test::readable_time_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected");
    text_row("English month", "1425205230", "01-Mar-2015 10:20:30");
    text_row("fraction is cut off", " 1425205230.9 ", "01-Mar-2015 10:20:30");
    text_row("before 1970", "-1", "31-Dec-1969 23:59:59");
    text_row("last of 32 bits", "2147483647", "19-Jan-2038 03:14:07");
    text_row("beyond 32 bits", "2147483648", "");
    text_row("zero", "0", "");
    text_row("less than a second", "0.5", "");
    text_row("point in front", ".5", "");
    text_row("words", "never", "");
    text_row("blanks", "  ", "");
}

void times_test::readable_time()
{
    QFETCH(QString, text);
    set_time_zone("Asia/Kolkata");
    QTEST(service::convert_timestamp_to_human_readable_in_UTC(text), "expected");
}

void times_test::iso_date_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("expected_wall_clock"); // empty: no date-time
    QTest::addColumn<qint64>("expected_seconds");     // in the time zone of the test
    const auto row = [](const char *name, const char *text, const char *wall_clock, qint64 seconds) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(wall_clock) << seconds;
    };
    row("no offset is local time", "2015-03-01T10:20:30", "2015-03-01T10:20:30", 1425201630);
    row("Z", " 2015-03-01T10:20:30Z ", "2015-03-01T10:20:30", 1425205230);
    row("offset", "2015-03-01T10:20:30-03:30", "2015-03-01T10:20:30", 1425217830);
    row("offset behind a blank", "2015-03-01 10:20:30 +0530", "2015-03-01T10:20:30", 1425185430);
    row("offset zero behind a blank", "2015-03-01 10:20:30 +0000", "2015-03-01T10:20:30", 1425205230);
    row("two blanks are too many", "2015-03-01 10:20:30  +0000", "2015-03-01T10:20:30", 1425201630);
    row("no such day", "2015-02-30 10:20:30 +0000", "", 0);
    row("words", "the day before yesterday", "", 0);
    row("none", "", "", 0);
}

void times_test::iso_date()
{
    QFETCH(QString, text);
    QFETCH(QString, expected_wall_clock);
    set_time_zone("Europe/Berlin");
    const QDateTime result = service::get_datetime_from_string_with_iso_date(text);
    QCOMPARE(result.isValid(), !expected_wall_clock.isEmpty());
    if (result.isValid()) {
        QCOMPARE(result.date().toString(Qt::ISODate) + QLatin1Char('T') + result.time().toString(Qt::ISODate),
                 expected_wall_clock);
        QTEST(result.toMSecsSinceEpoch() / 1000, "expected_seconds");
    }
}

void times_test::file_times()
{
    const QTemporaryDir root;
    const QString file = root.filePath(QStringLiteral("Märzbrief.emlx"));
    evidence::write_file(file, "content");
    const timespec times[] = {{1425205230, 999000000}, {-2, 500000000}}; // last read, and 1.5 seconds before 1970
    QCOMPARE(::utimensat(AT_FDCWD, file.toUtf8().constData(), times, 0), 0);
    struct statx status = {};
    QCOMPARE(::statx(AT_FDCWD, file.toUtf8().constData(), 0, STATX_BTIME, &status), 0);

    set_time_zone("America/St_Johns");
    const posix_timestamp_record record =
        service::get_posix_timestamp(QStringLiteral(" /Märzbrief.emlx "), root.path() + QLatin1Char(' '));
    QCOMPARE(record.last_access_timestamp, qint64(1425205230));
    QCOMPARE(record.modification_timestamp, qint64(-1));
    QCOMPARE(record.creation_timestamp, (status.stx_mask & STATX_BTIME) ? qint64(status.stx_btime.tv_sec) : qint64(0));
}

void times_test::file_times_of_nothing()
{
    const QTemporaryDir root;
    const QString file = root.filePath(QStringLiteral("a.emlx"));
    evidence::write_file(file, "content");
    // Another root, no root, no path: never the file that the path alone would name.
    for (const auto &[path, source_root] : {std::pair{file, QStringLiteral("/elsewhere")}, std::pair{file, QString()},
                                            std::pair{QStringLiteral("  "), file}}) {
        const posix_timestamp_record record = service::get_posix_timestamp(path, source_root);
        QCOMPARE(record.creation_timestamp, qint64(0));
        QCOMPARE(record.last_access_timestamp, qint64(0));
        QCOMPARE(record.modification_timestamp, qint64(0));
    }
}

QTEST_GUILESS_MAIN(times_test)
#include "times_test.moc"
