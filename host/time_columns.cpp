#include "host/time_columns.h"

#include <QDateTime>
#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace {

// Columns that hold seconds since 1970, one or several in a text.
constexpr const char *time_columns[] = {"application_install_timestamp",
                                        "arrival_timestamp",
                                        "content_creation_date",
                                        "content_modification_date",
                                        "creation_date",
                                        "creation_timestamp",
                                        "date_added",
                                        "date_opened",
                                        "dateoflastsync",
                                        "emlx_file_date_created",
                                        "end_timestamp",
                                        "event_timestamp",
                                        "exp_time",
                                        "file_modification_date",
                                        "first_date",
                                        "fs_content_change_date",
                                        "fs_creation_date",
                                        "last_access_timestamp",
                                        "last_date",
                                        "last_mailed_timestamp",
                                        "last_used_date",
                                        "mailed_timestamp",
                                        "message_date_received",
                                        "message_date_sent",
                                        "message_last_view_date",
                                        "modification_date",
                                        "modification_timestamp",
                                        "recent_interaction_date",
                                        "start_timestamp",
                                        "timestamp",
                                        "used_dates"};

// What stands between times in one text: the dates a file was used have a separator of their own.
constexpr const char *separators[] = {";++::++;", ";"};

QString formatted_time(const QVariant &seconds, const QString &format)
{
    constexpr double first_second = -62135596800.0; // 0001-01-01
    constexpr double last_second = 253402300799.0;  // 9999-12-31
    bool is_number = false;
    const double number = seconds.toDouble(&is_number);
    if (!is_number || !(number >= first_second && number <= last_second)) {
        return QString();
    }
    return QLocale::c().toString(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(number)), Qt::UTC),
                                 format);
}

// A text of several times becomes a text of as many parts. In: what stands for a part that is no time, and between two;
// a null `between` is what the value itself has there.
QString formatted(const QVariant &value, const QString &format, const QString &no_time, const QString &between)
{
    const QString text = value.type() == QVariant::String ? value.toString() : QString();
    const auto *const separator =
        std::find_if(std::begin(separators), std::end(separators),
                     [&](const char *candidate) { return text.contains(QLatin1String(candidate)); });
    if (separator == std::end(separators)) {
        return formatted_time(value, format);
    }
    QStringList times;
    bool has_time = false;
    for (const QString &part : text.split(QLatin1String(*separator))) {
        const QString time = formatted_time(part, format);
        has_time |= !time.isEmpty();
        times += time.isEmpty() ? no_time : time;
    }
    return has_time ? times.join(between.isNull() ? QString::fromLatin1(*separator) : between) : QString();
}

} // namespace

bool is_time_column(const QString &name)
{
    return std::any_of(std::begin(time_columns), std::end(time_columns),
                       [&](const char *column) { return name == QLatin1String(column); });
}

QString utc_text(const QVariant &seconds)
{
    return formatted(seconds, QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"), QStringLiteral("?"), QStringLiteral("; "));
}

QString utc_text_for_tools(const QVariant &seconds)
{
    return formatted(seconds, QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"), QString(), QString());
}
