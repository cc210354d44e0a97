#include "host/command_show.h"

#include "host/command_line.h"
#include "host/result_database.h"
#include "host/row_printer.h"
#include "host/terminal.h"
#include "host/time_columns.h"

#include <algorithm>
#include <vector>

namespace {

constexpr int readable_rows = 20; // as many as one reads on a terminal
constexpr int all_rows = -1;      // SQLite's word for no limit

enum class output_form
{
    readable,
    csv,
    json_lines
};

output_form form_of(const command_arguments &given)
{
    if (given.has("csv") && given.has("jsonl")) {
        throw unusable_input{QStringLiteral("--csv and --jsonl exclude each other: give one of them")};
    }
    return given.has("csv") ? output_form::csv : given.has("jsonl") ? output_form::json_lines : output_form::readable;
}

std::unique_ptr<row_printer> make_exact_printer(output_form form, const QStringList &columns)
{
    return form == output_form::csv ? make_csv_printer(columns) : make_json_lines_printer(columns);
}

// How many rows each source brought, such as "Source1 800, Source2 400"; empty for a table that does not tell.
QString rows_by_source(const result_database &database, const QString &table)
{
    if (!database.columns(table).contains(QLatin1String("source_count_name"))) {
        return QString();
    }
    QStringList parts;
    QSqlQuery query = database.select(QStringLiteral("SELECT source_count_name, count(*) FROM %1 GROUP BY 1 "
                                                     "ORDER BY length(source_count_name), source_count_name")
                                          .arg(quoted_name(table)));
    while (query.next()) {
        parts += query.value(0).toString() + QLatin1Char(' ') + query.value(1).toString();
    }
    database.check_ended_well(query);
    return parts.join(QStringLiteral(", "));
}

void show_tables(const result_database &database, output_form form)
{
    const QStringList columns{QStringLiteral("table"), QStringLiteral("rows"), QStringLiteral("rows_by_source")};
    if (form != output_form::readable) {
        const auto printer = make_exact_printer(form, columns);
        for (const QString &table : database.tables()) {
            printer->print_row({table, database.row_count(table), rows_by_source(database, table)});
        }
        return;
    }
    print_line(escaped_for_terminal(database.path()));
    int name_width = 0;
    for (const QString &table : database.tables()) {
        name_width = std::max(name_width, escaped_for_terminal(table).size());
    }
    for (const QString &table : database.tables()) {
        const QString line = QStringLiteral("  %1  %2  %3")
                                 .arg(escaped_for_terminal(table).leftJustified(name_width),
                                      QString::number(database.row_count(table)).rightJustified(10),
                                      escaped_for_terminal(rows_by_source(database, table)));
        print_line(line.trimmed().prepend(QStringLiteral("  ")));
    }
}

// Indexes of the columns that are not NULL in all of the table's first rows.
QVector<int> filled_columns(const result_database &database, const QString &table, const QStringList &columns,
                            int limit)
{
    QStringList counts;
    for (const QString &column : columns) {
        counts += QStringLiteral("count(%1)").arg(quoted_name(column));
    }
    QSqlQuery query =
        database.select(QStringLiteral("SELECT %1 FROM (SELECT * FROM %2 ORDER BY rowid LIMIT %3)")
                            .arg(counts.join(QLatin1Char(',')), quoted_name(table), QString::number(limit)));
    QVector<int> filled;
    const bool has_counts = query.next();
    for (int i = 0; has_counts && i < columns.size(); ++i) {
        if (query.value(i).toLongLong() > 0) {
            filled.append(i);
        }
    }
    return filled;
}

// A column of the table, or the one beside it that says its time for other tools.
struct exported_column
{
    QString name;
    int index;
    bool is_utc;
};

std::vector<exported_column> exported_columns(const QStringList &columns, output_form form)
{
    std::vector<exported_column> exported;
    for (int i = 0; i < columns.size(); ++i) {
        exported.push_back({columns.at(i), i, false});
        if (form != output_form::readable && is_time_column(columns.at(i))) {
            exported.push_back({columns.at(i) + QStringLiteral("_utc"), i, true});
        }
    }
    return exported;
}

QStringList names_of(const std::vector<exported_column> &columns)
{
    QStringList names;
    for (const exported_column &column : columns) {
        names += column.name;
    }
    return names;
}

row_values values_of(const QSqlQuery &query, const std::vector<exported_column> &columns)
{
    row_values values;
    values.reserve(static_cast<int>(columns.size()));
    for (const exported_column &column : columns) {
        const QVariant value = query.value(column.index);
        values.append(column.is_utc ? QVariant(utc_text_for_tools(value)) : value);
    }
    return values;
}

void show_rows(const result_database &database, const QString &table, output_form form, int limit)
{
    const QStringList columns = database.columns(table);
    const std::vector<exported_column> exported = exported_columns(columns, form);
    const auto printer = form == output_form::readable
                             ? make_record_printer(table, columns, filled_columns(database, table, columns, limit))
                             : make_exact_printer(form, names_of(exported));
    QSqlQuery query = database.select(
        QStringLiteral("SELECT * FROM %1 ORDER BY rowid LIMIT %2").arg(quoted_name(table), QString::number(limit)));
    qint64 shown = 0;
    while (query.next()) {
        printer->print_row(values_of(query, exported));
        ++shown;
    }
    database.check_ended_well(query);
    if (form == output_form::readable) {
        const qint64 all = database.row_count(table);
        print_line(QStringLiteral("%1 of %2 rows of %3%4")
                       .arg(QString::number(shown), QString::number(all), escaped_for_terminal(table),
                            shown < all ? QStringLiteral(" (--limit N shows N rows)") : QString()));
    }
}

} // namespace

int command_show(const QStringList &arguments)
{
    const command_arguments given{
        QStringLiteral("show"),
        arguments,
        {{"limit", option_description::value}, {"csv", option_description::flag}, {"jsonl", option_description::flag}},
        {QStringLiteral("DIR"), QStringLiteral("TABLE")},
        1};
    const output_form form = form_of(given);
    const int limit = given.whole_number("limit", form == output_form::readable ? readable_rows : all_rows);
    const result_database database(find_result_database(given.at(0)));
    const QString table = given.at(1);
    if (table.isEmpty()) {
        show_tables(database, form);
        return exit_done;
    }
    if (!database.tables().contains(table)) {
        throw unusable_input{QStringLiteral("there is no table \"%1\" in \"%2\": its tables are %3")
                                 .arg(table, database.path(), database.tables().join(QStringLiteral(", ")))};
    }
    show_rows(database, table, form, limit);
    return exit_done;
}
