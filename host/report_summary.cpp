#include "host/report_summary.h"

#include "host/log_reader.h"
#include "host/value_text.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace {

constexpr int files_told = 100;
constexpr int values_told = 15;
constexpr int failures_told = 100;
constexpr qint64 close_seconds = 300; // between the last change of the results and the end of the log beside them

struct picture
{
    const char *table;
    const char *title;
    const char *column;
    const char *second_column; ///< tells values of one name apart; nullptr: none
};

// clang-format off
constexpr picture time_pictures[] = {
    {"messages",         "Messages by date sent",                "message_date_sent",     nullptr},
    {"recents",          "Recent addresses by date last mailed", "last_mailed_timestamp", nullptr},
    {"open_attachments", "Attachments by date opened",           "date_opened",           nullptr},
    {"call_history",     "Calls by date",                        "start_timestamp",       nullptr},
};

constexpr picture value_pictures[] = {
    {"messages",        "Messages per mailbox",            "mailbox_name",   "mailbox_account_name"},
    {"messages",        "Messages per sender",             "from_str",       nullptr},
    {"all_attachments", "Attachments per type",            "suffix",         nullptr},
    {"recents",         "Recent addresses per sender",     "sender_address", nullptr},
};
// clang-format on

bool can_show(const result_database &database, const picture &shown)
{
    const QString table = QString::fromLatin1(shown.table);
    if (!database.tables().contains(table)) {
        return false;
    }
    const QStringList columns = database.columns(table);
    return columns.contains(QLatin1String(shown.column)) &&
           (shown.second_column == nullptr || columns.contains(QLatin1String(shown.second_column)));
}

// In: how many rows of the table the picture holds. Out: empty where the table has no rows.
QJsonObject description(const result_database &database, const picture &shown, qint64 pictured)
{
    const qint64 rows = database.row_count(QString::fromLatin1(shown.table));
    if (rows == 0) {
        return {};
    }
    return {{QStringLiteral("title"), QString::fromLatin1(shown.title)},
            {QStringLiteral("table"), QString::fromLatin1(shown.table)},
            {QStringLiteral("column"), QString::fromLatin1(shown.column)},
            {QStringLiteral("without"), rows - pictured}};
}

// Adds to what the picture is told by; a table without rows stays untold.
void tell(QJsonObject &told, const char *name, const QJsonValue &value)
{
    if (!told.isEmpty()) {
        told.insert(QLatin1String(name), value);
    }
}

// The days of the column's times in the years 1 to 9999, as days since 1970; other values are none.
QString days_of(const picture &shown)
{
    return QStringLiteral(
               "SELECT CAST((\"%1\" + 62135596800) / 86400 AS INTEGER) - 719162 AS day FROM \"%2\" "
               "WHERE typeof(\"%1\") IN ('integer', 'real') AND \"%1\" BETWEEN -62135596800 AND 253402300799")
        .arg(QLatin1String(shown.column), QLatin1String(shown.table));
}

QJsonObject time_picture(const result_database &database, const picture &shown)
{
    constexpr qint64 most_steps = 20000; // fifty years of days
    QSqlQuery range = database.select(QStringLiteral("SELECT min(day), max(day) FROM (%1)").arg(days_of(shown)));
    const qint64 first = range.next() ? range.value(0).toLongLong() : 0;
    const qint64 step = (range.value(1).toLongLong() - first) / most_steps + 1;
    QSqlQuery query =
        database.select(QStringLiteral("SELECT %1 + (day - %1) / %2 * %2 AS begin, count(*) FROM (%3) GROUP BY begin")
                            .arg(QString::number(first), QString::number(step), days_of(shown)));
    QJsonArray days;
    qint64 rows = 0;
    while (query.next()) {
        days.append(QJsonArray{query.value(0).toLongLong(), query.value(1).toLongLong()});
        rows += query.value(1).toLongLong();
    }
    database.check_ended_well(query);
    QJsonObject told = description(database, shown, rows);
    tell(told, "step", step);
    tell(told, "days", days);
    return told;
}

// In: the table's columns that a value is known by. Out: a pair of column and text for each; empty where one of the
// texts is too long to be kept in the page a second time.
QJsonArray filters_of(const picture &shown, const QString &value, const QString &second)
{
    constexpr int longest_filter = 1000;
    if (std::max(value.size(), second.size()) > longest_filter) {
        return {};
    }
    QJsonArray filters{QJsonArray{QString::fromLatin1(shown.column), value}};
    if (shown.second_column != nullptr) {
        filters.append(QJsonArray{QString::fromLatin1(shown.second_column), second});
    }
    return filters;
}

QJsonObject value_picture(const result_database &database, const picture &shown)
{
    constexpr int label_length = 200;
    const QString second =
        shown.second_column == nullptr ? QStringLiteral("''") : quoted_name(QString::fromLatin1(shown.second_column));
    QSqlQuery query =
        database.select(QStringLiteral("SELECT \"%1\", ifnull(%2, ''), count(*) AS n FROM \"%3\" WHERE \"%1\" <> '' "
                                       "GROUP BY 1, 2 ORDER BY n DESC, 1, 2")
                            .arg(QLatin1String(shown.column), second, QLatin1String(shown.table)));
    QJsonArray values;
    qint64 others = 0;
    qint64 other_rows = 0;
    qint64 rows = 0;
    while (query.next()) {
        const qint64 rows_of_value = query.value(2).toLongLong();
        rows += rows_of_value;
        if (values.size() < values_told) {
            const QString value = value_text(query.value(0));
            const QString second_value = value_text(query.value(1));
            values.append(QJsonArray{value.left(label_length), second_value.left(label_length), rows_of_value,
                                     filters_of(shown, value, second_value)});
        } else {
            ++others;
            other_rows += rows_of_value;
        }
    }
    database.check_ended_well(query);
    QJsonObject told = description(database, shown, rows);
    tell(told, "values", values);
    tell(told, "others", others);
    tell(told, "other_rows", other_rows);
    return told;
}

void add_sources_of(const result_database &database, const QString &table, QJsonArray &sources)
{
    const QStringList columns = database.columns(table);
    const auto column = [&](const char *name) {
        return columns.contains(QLatin1String(name)) ? quoted_name(QString::fromLatin1(name)) : QStringLiteral("NULL");
    };
    QSqlQuery query = database.select(QStringLiteral("SELECT %1, %2, %3, %4, count(*) AS n FROM %5 GROUP BY 1, 2, 3, 4 "
                                                     "ORDER BY 1, n DESC, 4")
                                          .arg(column("source_count_name"), column("os_scheme_display"),
                                               column("system_user"), column("source_file"), quoted_name(table)));
    QString source;
    int told = 0;
    qint64 others = 0;
    qint64 other_rows = 0;
    const auto add_others = [&] {
        if (others > 0) {
            sources.append(QJsonObject{{QStringLiteral("table"), table},
                                       {QStringLiteral("source"), source},
                                       {QStringLiteral("others"), others},
                                       {QStringLiteral("rows"), other_rows}});
        }
        told = 0;
        others = 0;
        other_rows = 0;
    };
    while (query.next()) {
        if (query.value(0).toString() != source) {
            add_others();
            source = query.value(0).toString();
        }
        const qint64 rows = query.value(4).toLongLong();
        if (++told > files_told) {
            ++others;
            other_rows += rows;
            continue;
        }
        sources.append(QJsonObject{{QStringLiteral("table"), table},
                                   {QStringLiteral("source"), source},
                                   {QStringLiteral("scheme"), query.value(1).toString()},
                                   {QStringLiteral("user"), query.value(2).toString()},
                                   {QStringLiteral("file"), query.value(3).toString()},
                                   {QStringLiteral("rows"), rows}});
    }
    database.check_ended_well(query);
    add_others();
}

// A line of a log begins with its local time: "[2020-Jan-06T10-40-00][".
QDateTime time_of_line(const QString &line)
{
    const int length = QStringLiteral("2020-Jan-06T10-40-00").size();
    return QLocale::c().toDateTime(line.mid(1, length), QStringLiteral("yyyy-MMM-ddThh-mm-ss"));
}

} // namespace

QJsonArray report_sources(const result_database &database)
{
    QJsonArray sources;
    for (const QString &table : database.tables()) {
        add_sources_of(database, table, sources);
    }
    return sources;
}

QJsonArray report_pictures(const result_database &database)
{
    QJsonArray pictures;
    const auto add = [&](const QJsonObject &told) {
        if (!told.isEmpty()) {
            pictures.append(told);
        }
    };
    for (const picture &shown : time_pictures) {
        if (can_show(database, shown)) {
            add(time_picture(database, shown));
        }
    }
    for (const picture &shown : value_pictures) {
        if (can_show(database, shown)) {
            add(value_picture(database, shown));
        }
    }
    return pictures;
}

QJsonObject report_database(const result_database &database)
{
    QFile file(database.path());
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const bool is_hashed = file.open(QIODevice::ReadOnly) && hash.addData(&file);
    return {{QStringLiteral("path"), QFileInfo(database.path()).absoluteFilePath()},
            {QStringLiteral("bytes"), file.size()},
            {QStringLiteral("sha256"), is_hashed ? QString::fromLatin1(hash.result().toHex()) : QString()}};
}

QJsonObject report_log(const result_database &database)
{
    const QString path =
        QDir::cleanPath(QFileInfo(database.path()).absolutePath() + QStringLiteral("/../../mail-extract.log"));
    QJsonObject told{{QStringLiteral("path"), path}};
    if (!QFileInfo(path).isFile()) {
        return told;
    }
    log_reader log(path, log_reader::form::plain);
    const log_failures failures = failures_in(log, failures_told);
    told.insert(QStringLiteral("count"), failures.count);
    told.insert(QStringLiteral("told"), failures.told);
    told.insert(QStringLiteral("lines"), QJsonArray::fromStringList(failures.first));
    const QDateTime end = time_of_line(log.line());
    const QDateTime changed = QFileInfo(database.path()).lastModified();
    if (end.isValid()) {
        told.insert(QStringLiteral("end"), end.toSecsSinceEpoch());
    }
    if (!end.isValid() || end.secsTo(changed) > close_seconds) {
        told.insert(QStringLiteral("changed"), changed.toSecsSinceEpoch());
    }
    return told;
}
