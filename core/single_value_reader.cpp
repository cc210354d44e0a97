#include "core/single_value_reader.h"

#include <algorithm>

// The kinds of the values stand in the statement so that SQLite walks the rows in the same way as for the values; a
// kind is told without reading its value.
single_value_reader::single_value_reader(sqlite_database &database, const operation_log &operation,
                                         const QByteArray &statement, const QByteArray &row_id)
    : log(operation)
{
    const QByteArray lower_case = statement.toLower();
    const int list_begin = statement.indexOf(' ') + 1;
    const int list_end = lower_case.indexOf(" from ");
    const QByteArray tables = statement.mid(list_end);
    const QByteArray of_row = (lower_case.contains(" where ") ? " AND " : " WHERE ") + row_id + "=?";
    QByteArray kinds;
    for (const QByteArray &name : statement.mid(list_begin, list_end - list_begin).split(',')) {
        kinds += "typeof(" + name + "),";
        column &added = columns.emplace_back();
        added.name = name;
        added.statement.prepare(database, ("SELECT " + name + tables + of_row).constData());
    }
    rows.prepare(database, ("SELECT " + kinds + row_id + tables).constData());
}

bool single_value_reader::is_whole() const
{
    return rows.is_prepared() &&
           std::all_of(columns.begin(), columns.end(), [](const column &each) { return each.statement.is_prepared(); });
}

void single_value_reader::start(const std::vector<QString> &values)
{
    if (!is_whole()) {
        return;
    }
    rows.reset();
    bound_count = 0;
    for (const QString &value : values) {
        rows.bind(bound_count, value);
        for (column &each : columns) {
            each.statement.reset();
            each.statement.bind(bound_count, value);
        }
        ++bound_count;
    }
}

sqlite_statement::outcome single_value_reader::next(qint64 rows_passed)
{
    if (!is_whole()) {
        return sqlite_statement::outcome::failed;
    }
    sqlite_statement::outcome stepped = rows.step();
    for (; rows_passed > 0 && stepped == sqlite_statement::outcome::row; --rows_passed) {
        stepped = rows.step();
    }
    if (stepped != sqlite_statement::outcome::row) {
        return stepped;
    }
    const QString row_id = rows.text(static_cast<int>(columns.size()));
    for (column &each : columns) {
        each.statement.reset();
        each.statement.bind(bound_count, row_id);
        const sqlite_statement::outcome read = each.statement.step();
        if (read == sqlite_statement::outcome::cancelled) {
            return read;
        }
        each.has_value = read == sqlite_statement::outcome::row;
        if (!each.has_value) {
            log("value larger than 16 MiB -----FAILED-----, left out: ", QString::fromLatin1(each.name));
        }
    }
    return stepped;
}

QString single_value_reader::text(int position) const
{
    const column &asked = columns.at(static_cast<std::size_t>(position));
    return asked.has_value ? asked.statement.text(0) : QString();
}

QByteArray single_value_reader::bytes(int position) const
{
    const column &asked = columns.at(static_cast<std::size_t>(position));
    return asked.has_value ? asked.statement.bytes(0) : QByteArray();
}
