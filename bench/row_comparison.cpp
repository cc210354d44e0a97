#include "bench/row_comparison.h"

#include "bench/floor_database.h"

namespace bench {

namespace {

QString shown(sqlite3_stmt *statement, int column)
{
    if (sqlite3_column_type(statement, column) == SQLITE_NULL) {
        return QStringLiteral("NULL");
    }
    const auto *text = reinterpret_cast<const char *>(sqlite3_column_text(statement, column));
    return QLatin1Char('"') + QString::fromUtf8(text, sqlite3_column_bytes(statement, column)) + QLatin1Char('"');
}

QString difference_of_rows(sqlite3_stmt *floor, sqlite3_stmt *plugin)
{
    for (int column = 0; column < sqlite3_column_count(floor); ++column) {
        const bool is_same = sqlite3_column_type(floor, column) == sqlite3_column_type(plugin, column) &&
                             shown(floor, column) == shown(plugin, column);
        if (!is_same) {
            return QStringLiteral("column %1, floor %2 (type %3), plug-in %4 (type %5)")
                .arg(QString::fromUtf8(sqlite3_column_name(floor, column)), shown(floor, column))
                .arg(sqlite3_column_type(floor, column))
                .arg(shown(plugin, column))
                .arg(sqlite3_column_type(plugin, column));
        }
    }
    return {};
}

QString first_difference(const compared_table &table, sqlite3 *floor, sqlite3 *plugin)
{
    const QByteArray query = QByteArray("SELECT ") + table.columns + " FROM " + table.table + " ORDER BY " + table.key;
    const evidence::sqlite_statement floor_rows = prepare(floor, query);
    const evidence::sqlite_statement plugin_rows = prepare(plugin, query);
    for (qint64 row = 1;; ++row) {
        const bool has_floor_row = sqlite3_step(floor_rows.get()) == SQLITE_ROW;
        const bool has_plugin_row = sqlite3_step(plugin_rows.get()) == SQLITE_ROW;
        if (!has_floor_row && !has_plugin_row) {
            return {};
        }
        const QString difference = has_floor_row != has_plugin_row
                                       ? QStringLiteral("only the %1 has it")
                                             .arg(has_floor_row ? QLatin1String("floor") : QLatin1String("plug-in"))
                                       : difference_of_rows(floor_rows.get(), plugin_rows.get());
        if (!difference.isEmpty()) {
            return QStringLiteral("Row %1 of %2 in the order of %3: %4.")
                .arg(row)
                .arg(QLatin1String(table.table), QLatin1String(table.key), difference);
        }
    }
}

} // namespace

QString first_difference(const work &work, const QString &floor_database, const QString &plugin_database)
{
    const evidence::sqlite_connection floor = open_database(floor_database);
    const evidence::sqlite_connection plugin = open_database(plugin_database);
    QString difference = first_difference({work.table, work.columns, work.key}, floor.get(), plugin.get());
    if (work.further_tables != nullptr) {
        for (const compared_table &table : *work.further_tables) {
            const bool is_due = difference.isEmpty() && table.table != nullptr;
            difference = is_due ? first_difference(table, floor.get(), plugin.get()) : difference;
        }
    }
    return difference;
}

qint64 row_count(const work &work, const QString &database)
{
    const evidence::sqlite_connection connection = open_database(database);
    return number(connection.get(), QStringLiteral("SELECT count(*) FROM %1").arg(QLatin1String(work.table)));
}

} // namespace bench
