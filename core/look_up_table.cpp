#include "core/look_up_table.h"

#include <QByteArrayList>

#include <algorithm>

namespace {

// How rows are found by a column, as the first step of the plan tells; empty when the table or a column is missing.
QString plan_of(source_session &source, const look_up_table &table, const QByteArray &column)
{
    sqlite_statement plan;
    const QByteArray statement =
        QByteArray("EXPLAIN QUERY PLAN SELECT ") + table.columns + " FROM " + table.table + " WHERE " + column + " = ?";
    return plan.prepare(source.database(), statement.constData()) && plan.step() == sqlite_statement::outcome::row
               ? plan.text(plan.column_index("detail"))
               : QString();
}

// Whether a row has a number of its own that finds it: a table may lack one, or call a column by its name.
bool has_row_numbers(source_session &source, const look_up_table &table)
{
    return plan_of(source, table, "_rowid_").contains(QLatin1String("(rowid=?)"));
}

// The view stands in the place of the table: the keys come from the temporary index, all else from the table itself.
QByteArray view_of(const look_up_table &table, const QByteArrayList &keys)
{
    const QByteArray name(table.table);
    QByteArray columns;
    bool is_numbered = false;
    for (const QByteArray &column : QByteArray(table.columns).split(',')) {
        const int key = keys.indexOf(column);
        columns += (key < 0 ? "r." + column : "k.key" + QByteArray::number(key)) + " AS " + column + ',';
        is_numbered = is_numbered || column == "ROWID";
    }
    columns = is_numbered ? columns.chopped(1) : columns + "r._rowid_ AS ROWID";
    return "CREATE TEMP VIEW " + name + " AS SELECT " + columns + " FROM temp." + name + "_keys AS k CROSS JOIN main." +
           name + " AS r ON r._rowid_ = k.at";
}

} // namespace

void make_look_up_fast(source_session &source, const look_up_table &table)
{
    const QByteArray name(table.table);
    const QByteArrayList keys = QByteArray(table.keys).split(',');
    const bool is_wanted = std::any_of(keys.begin(), keys.end(), [&](const QByteArray &key) {
        return plan_of(source, table, key).startsWith(QLatin1String("SCAN"));
    });
    const bool is_possible = std::all_of(keys.begin(), keys.end(), [&](const QByteArray &key) {
        return source.database().collation_of(table.table, key.constData()) == "BINARY";
    });
    if (!is_wanted || !is_possible || !has_row_numbers(source, table)) {
        return;
    }
    const auto execute = [&source](const QByteArray &statement) {
        return source.database().execute(statement.constData());
    };
    QByteArray copied;
    for (int i = 0; i < keys.size(); ++i) {
        copied += keys.at(i) + " AS key" + QByteArray::number(i) + ',';
    }
    bool is_made =
        execute("PRAGMA temp.max_page_count = 65536") && // what is named as a table may never end
        execute("CREATE TEMP TABLE " + name + "_keys AS SELECT " + copied + "_rowid_ AS at FROM main." + name);
    for (int i = 0; is_made && i < keys.size(); ++i) {
        const QByteArray key = "key" + QByteArray::number(i);
        is_made = execute("CREATE INDEX temp." + name + "_by_" + key + " ON " + name + "_keys (" + key + ",at)");
    }
    if (!is_made || !execute(view_of(table, keys))) {
        execute("DROP TABLE temp." + name + "_keys");
        execute("BEGIN"); // a table that became too large has ended the transaction
    }
}
