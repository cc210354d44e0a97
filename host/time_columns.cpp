#include "host/time_columns.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace {

// Columns that hold seconds since 1970.
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
                                        "timestamp"};

QString formatted(const QVariant &seconds, const QString &format)
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

} // namespace

bool is_time_column(const QString &name)
{
    return std::any_of(std::begin(time_columns), std::end(time_columns),
                       [&](const char *column) { return name == QLatin1String(column); });
}

QString utc_text(const QVariant &seconds)
{
    return formatted(seconds, QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"));
}

QString utc_text_for_tools(const QVariant &seconds)
{
    return formatted(seconds, QStringLiteral("yyyy-MM-dd'T'HH:mm:ss'Z'"));
}
