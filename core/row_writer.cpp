#include "core/row_writer.h"

#include "core/extractor_frame.h"

#include <QStringList>

namespace {

// The columns that take a "?", in order: what stands between the first and the second pair of parentheses.
QStringList bound_columns_of(const QString &statement)
{
    const auto list_behind = [&statement](int from) {
        const int begin = statement.indexOf(QLatin1Char('('), from) + 1;
        return statement.mid(begin, statement.indexOf(QLatin1Char(')'), begin) - begin).split(QLatin1Char(','));
    };
    const QStringList columns = list_behind(0);
    const QStringList values = list_behind(statement.indexOf(QLatin1Char(')')));
    QStringList bound;
    for (int i = 0; i < columns.size() && i < values.size(); ++i) {
        if (values.at(i).trimmed() == QLatin1String("?")) {
            bound.append(columns.at(i).trimmed());
        }
    }
    return bound;
}

} // namespace

row_writer::row_writer(extractor_frame &extractor, result_session &result, const operation_log &operation,
                       const char *text, const failure_text &failure_texts, row_count which)
    : frame(extractor), destination(result), log(operation), statement_text(text), texts(failure_texts), counted(which)
{
}

bool row_writer::prepare(const row_values &values)
{
    if (statement.is_prepared() || !prepare_error.isNull()) {
        return statement.is_prepared();
    }
    QStringList given;
    for (const column_value &value : values) {
        given.append(QString::fromUtf8(value.column));
    }
    if (given != bound_columns_of(QString::fromUtf8(statement_text))) {
        prepare_error = QStringLiteral("The values are not those of the statement: ") + given.join(QLatin1Char(','));
    } else if (!statement.prepare(destination.database(), statement_text)) {
        prepare_error = destination.database().error_text();
    }
    return statement.is_prepared();
}

bool row_writer::execute(const row_values &values)
{
    if (!prepare(values)) {
        log.failure(texts, destination.database_name(), prepare_error, statement_text);
        return false;
    }
    int position = 0;
    for (const column_value &value : values) {
        statement.bind(position++, value.value);
    }
    const bool is_inserted = statement.step() == sqlite_statement::outcome::done;
    if (!is_inserted) {
        log.failure(texts, destination.database_name(), destination.database().error_text(), statement_text);
    }
    statement.reset();
    return is_inserted;
}

bool row_writer::insert(const row_values &values)
{
    const bool is_inserted = execute(values);
    if ((is_inserted && counted == row_count::inserted) || counted == row_count::attempted) {
        frame.count_row();
    }
    return is_inserted;
}
