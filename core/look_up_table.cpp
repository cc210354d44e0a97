#include "core/look_up_table.h"

#include <QByteArray>

namespace {

// Whether finding rows by the key walks the table, as the first step of the plan tells.
bool walks_the_table(source_session &source, const look_up_table &table)
{
    sqlite_statement plan;
    const QByteArray statement = QByteArray("EXPLAIN QUERY PLAN SELECT ") + table.columns + " FROM " + table.table +
                                 " WHERE " + table.key + " = ?";
    return plan.prepare(source.database(), statement.constData()) && plan.step() == sqlite_statement::outcome::row &&
           plan.text(plan.column_index("detail")).startsWith(QLatin1String("SCAN"));
}

} // namespace

void make_look_up_fast(source_session &source, const look_up_table &table)
{
    if (!walks_the_table(source, table)) {
        return;
    }
    const QByteArray name(table.table);
    const auto execute = [&source](const QByteArray &statement) {
        return source.database().execute(statement.constData());
    };
    const bool is_copied =
        execute("PRAGMA temp.max_page_count = 65536") && // what is named as a table may never end
        execute("CREATE TEMP TABLE " + name + " AS SELECT " + table.columns + " FROM main." + name) &&
        execute("CREATE INDEX temp." + name + "_by_key ON " + name + '(' + table.key + ')');
    if (!is_copied) {
        execute("DROP TABLE temp." + name);
        execute("BEGIN"); // a copy that became too large has ended the transaction
    }
}
