// Time conversions.
#include "core/operation_log.h"
#include "core/plugin_static_function.h"

#include <QDateTime>
#include <QFile>
#include <QLocale>
#include <QStringList>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

constexpr qint64 seconds_from_1970_to_2001 = 978307200;
constexpr qint64 milliseconds = 1000;

// Cut towards zero, as the count of milliseconds would be.
qint64 seconds_of(const statx_timestamp &file_time)
{
    return (file_time.tv_sec * milliseconds + file_time.tv_nsec / 1000000) / milliseconds;
}

QString epoch_text_of(const QDateTime &date_time)
{
    return QString::number(date_time.toMSecsSinceEpoch() / milliseconds);
}

// The format that a date and a time, as they stand in a source, are written in.
QString format_of(const QString &date, const QString &time)
{
    if (time.isEmpty()) {
        return QStringLiteral("yyyyMMdd");
    }
    if (time.contains(QLatin1Char('Z'))) {
        return QStringLiteral("yyyyMMdd hhmmssZ");
    }
    if (!date.contains(QLatin1Char('-'))) {
        return QStringLiteral("yyyyMMdd hhmmss");
    }
    return time.contains(QLatin1Char('.')) ? QStringLiteral("yyyy-MM-dd hh:mm:ss.zzz")
                                           : QStringLiteral("yyyy-MM-dd hh:mm:ss");
}

} // namespace

QString plugin_static_function::convert_apple_time_to_epoch(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty() || trimmed == QLatin1String("0")) {
        return QString();
    }
    const int seconds = trimmed.split(QLatin1Char('.')).constFirst().toInt(); // 0 for what is no number
    return QString::number(seconds + seconds_from_1970_to_2001);
}

QString plugin_static_function::convert_T_Z_time_to_epoch(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return QString();
    }
    const QLatin1Char separator(trimmed.contains(QLatin1Char('T')) ? 'T' : ' ');
    const QStringList parts = trimmed.split(separator);
    const QString date = parts.constFirst().trimmed();
    QString time = parts.size() > 1 ? parts.at(1).trimmed() : QString();
    time.replace(QLatin1Char('-'), QLatin1Char(':'));

    const QString joined = (date + QLatin1Char(' ') + time).trimmed();
    return epoch_text_of(QDateTime::fromString(joined, format_of(date, time)).toUTC());
}

QString plugin_static_function::convert_timestamp_to_human_readable_in_UTC(const QString &text)
{
    const QString trimmed = text.trimmed();
    const int seconds = trimmed.left(trimmed.indexOf(QLatin1Char('.'))).toInt();
    if (seconds == 0) {
        return QString();
    }
    return QLocale::c().toString(QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC),
                                 QStringLiteral("dd-MMM-yyyy hh:mm:ss"));
}

posix_timestamp_record plugin_static_function::get_posix_timestamp(const QString &file_path, const QString &source_root)
{
    posix_timestamp_record times;
    const QString path = file_path.trimmed();
    const QString root = source_root.trimmed();
    if (path.isEmpty() || root.isEmpty()) {
        return times;
    }
    // Qt turns each time into a local one on the way, which costs more than asking for the times.
    struct statx status = {};
    const QByteArray name = QFile::encodeName(root + path);
    if (::statx(AT_FDCWD, name.constData(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0 ||
        !S_ISREG(status.stx_mode)) {
        return times;
    }
    if ((status.stx_mask & STATX_BTIME) != 0) { // some file systems keep none
        times.creation_timestamp = seconds_of(status.stx_btime);
    }
    times.last_access_timestamp = seconds_of(status.stx_atime);
    times.modification_timestamp = seconds_of(status.stx_mtime);
    return times;
}

QDateTime plugin_static_function::get_datetime_from_string_with_iso_date(const QString &text)
{
    static constexpr operation_log log{
        "static QDateTime plugin_static_function::get_datetime_from_string_with_iso_date(QString)"};
    log("Start ");
    const QString trimmed = text.trimmed();
    const QDateTime plain = QDateTime::fromString(trimmed, Qt::ISODate);
    if (!plain.toString().isEmpty()) {
        return plain;
    }
    // "2015-03-01 10:20:30 +0100": the blank in front of the offset is not ISO 8601.
    const QStringList parts = trimmed.split(QLatin1Char(' '));
    if (parts.size() < 3) {
        return plain;
    }
    const QDateTime joined =
        QDateTime::fromString(parts.at(0) + QLatin1Char(' ') + parts.at(1) + parts.at(2), Qt::ISODate);
    log("End ");
    return joined;
}
