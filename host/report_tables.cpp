#include "host/report_tables.h"

#include "host/time_columns.h"
#include "host/value_text.h"

#include <QJsonObject>

namespace {

constexpr int block_bytes = 256 * 1024; // small enough for the page to parse without a pause that is felt

// Of the case's bookkeeping, not of the evidence: read last.
constexpr const char *last_columns[] = {"bookmark", "INT"};

QStringList filled_columns(const result_database &database, const QString &table)
{
    const QStringList columns = database.columns(table);
    QStringList counts;
    for (const QString &column : columns) {
        counts += QStringLiteral("count(nullif(%1, ''))").arg(quoted_name(column));
    }
    QSqlQuery query =
        database.select(QStringLiteral("SELECT %1 FROM %2").arg(counts.join(QLatin1Char(',')), quoted_name(table)));
    QStringList filled;
    const bool has_counts = query.next();
    for (int i = 0; has_counts && i < columns.size(); ++i) {
        if (query.value(i).toLongLong() > 0) {
            filled += columns.at(i);
        }
    }
    for (const char *column : last_columns) {
        if (filled.removeOne(QString::fromLatin1(column))) {
            filled += QString::fromLatin1(column);
        }
    }
    return filled;
}

QByteArray cell_json(const QVariant &value, const report_limits &limits)
{
    constexpr qint64 exact_in_javascript = 1LL << 53;
    if (value.isNull()) {
        return QByteArrayLiteral("null");
    }
    const auto type = static_cast<QMetaType::Type>(value.type());
    if (type == QMetaType::Int || type == QMetaType::LongLong) {
        const qint64 number = value.toLongLong();
        const bool is_exact = number > -exact_in_javascript && number < exact_in_javascript;
        return is_exact ? QByteArray::number(number) : '"' + QByteArray::number(number) + '"';
    }
    const QString text = value_text(value);
    if (text.size() <= limits.characters_of_a_value) {
        return json_text(text).toUtf8();
    }
    const bool splits_pair = text.at(limits.characters_of_a_value).isLowSurrogate();
    const QString beginning = text.left(limits.characters_of_a_value - (splits_pair ? 1 : 0));
    return '[' + json_text(beginning).toUtf8() + ',' + QByteArray::number(text.size()) + ']';
}

// Out: how many rows were written.
qint64 write_rows(report_page &page, const QString &block_name, QSqlQuery &query, int columns,
                  const report_limits &limits)
{
    qint64 rows = 0;
    qint64 bytes = 0;
    QByteArray block;
    const auto close_block = [&] {
        if (!block.isEmpty()) {
            page.add_block(block_name, block + ']');
            bytes += block.size();
            block.clear();
        }
    };
    while (bytes < limits.bytes_of_a_table && query.next()) {
        block += block.isEmpty() ? "[" : ",\n";
        for (int i = 0; i < columns; ++i) {
            block += (i == 0 ? '[' : ',') + cell_json(query.value(i), limits);
        }
        block += ']';
        ++rows;
        if (block.size() >= block_bytes) {
            close_block();
        }
    }
    close_block();
    return rows;
}

QJsonObject write_table(report_page &page, const QString &block_name, const result_database &database,
                        const QString &table, const report_limits &limits)
{
    const QStringList columns = filled_columns(database, table);
    QStringList names;
    QJsonArray times;
    for (const QString &column : columns) {
        names += quoted_name(column);
        if (is_time_column(column)) {
            times.append(names.size() - 1);
        }
    }
    QJsonObject described{{QStringLiteral("name"), table},
                          {QStringLiteral("rows"), database.row_count(table)},
                          {QStringLiteral("columns"), QJsonArray::fromStringList(columns)},
                          {QStringLiteral("times"), times}};
    qint64 embedded = 0;
    if (!columns.isEmpty()) {
        QSqlQuery query = database.select(
            QStringLiteral("SELECT %1 FROM %2 ORDER BY rowid LIMIT %3")
                .arg(names.join(QLatin1Char(',')), quoted_name(table), QString::number(limits.rows_of_a_table)));
        embedded = write_rows(page, block_name, query, columns.size(), limits);
        database.check_ended_well(query);
    }
    described.insert(QStringLiteral("embedded"), embedded);
    return described;
}

} // namespace

QJsonArray write_report_tables(report_page &page, const result_database &database, const report_limits &limits)
{
    QJsonArray tables;
    for (const QString &table : database.tables()) {
        if (database.row_count(table) > 0) {
            tables.append(write_table(page, QStringLiteral("rows-%1").arg(tables.size()), database, table, limits));
        }
    }
    return tables;
}
