#include "core/source_session.h"

source_session::source_session(const operation_log &operation, const QString &copy_path,
                               const std::atomic<bool> &cancel_flag)
    : log(operation), path(copy_path), is_cancelled(cancel_flag)
{
}

bool source_session::open(const failure_text &texts)
{
    if (!connection.open_for_reading(path, is_cancelled)) {
        log.failure(texts, path, connection.error_text());
        return false;
    }
    // One lock for the whole of the reading, not one for each look-up: those cost more than the look-ups do.
    connection.execute("BEGIN");
    return true;
}

source_query::source_query(sqlite_database &connection, const QString &name, const operation_log &operation,
                           const std::vector<const char *> &statements, const failure_text &failure_texts)
    : database(connection), database_name(name), log(operation), texts(failure_texts)
{
    variants.reserve(statements.size());
    for (const char *statement : statements) {
        variants.push_back({statement, {}, {}, {}});
    }
}

source_query::source_query(source_session &source, const operation_log &operation, const char *statement,
                           const failure_text &failure_texts)
    : source_query(source, operation, std::vector<const char *>{statement}, failure_texts)
{
}

source_query::source_query(source_session &source, const operation_log &operation,
                           const std::vector<const char *> &statements, const failure_text &failure_texts)
    : source_query(source.database(), source.database_name(), operation, statements, failure_texts)
{
}

source_query::source_query(result_session &rows_so_far, const operation_log &operation, const char *statement,
                           const failure_text &failure_texts)
    : source_query(rows_so_far.database(), rows_so_far.database_name(), operation, {statement}, failure_texts)
{
}

source_query::source_query(source_session &source, const operation_log &operation, const char *statement,
                           const failure_text &failure_texts, const QString &subject)
    : source_query(source.database(), subject, operation, {statement}, failure_texts)
{
}

bool source_query::prepare(variant &candidate)
{
    if (!candidate.statement.is_prepared() && candidate.prepare_error.isNull() &&
        !candidate.statement.prepare(database, candidate.text)) {
        candidate.prepare_error = database.error_text();
    }
    return candidate.statement.is_prepared();
}

bool source_query::start(variant &candidate, std::initializer_list<QString> values)
{
    running = &candidate;
    if (!prepare(candidate)) {
        error_text = candidate.prepare_error;
        return false;
    }
    candidate.statement.reset();
    int position = 0;
    for (const QString &value : values) {
        candidate.statement.bind(position++, value);
    }
    if (row_id_name) {
        given_values.assign(values.begin(), values.end());
    }
    row_count = 0;
    is_reading_singly = false;
    // Whether a statement can be executed shows at its first step.
    return step();
}

bool source_query::execute(std::initializer_list<QString> values)
{
    for (variant &candidate : variants) {
        if (start(candidate, values)) {
            state = state == progress::on_row ? progress::before_first_row : state;
            return !is_cancelled;
        }
    }
    state = progress::ended;
    log_failure();
    return false;
}

bool source_query::next()
{
    if (state == progress::before_first_row) {
        state = progress::on_row;
    } else if (state == progress::on_row && !step()) {
        // A damaged page in the middle of a table ends the rows as well; that must not look like their end.
        log_failure();
    }
    return state == progress::on_row;
}

bool source_query::step()
{
    sqlite_statement::outcome stepped = is_reading_singly ? single_values->next() : running->statement.step();
    if (stepped == sqlite_statement::outcome::too_large && row_id_name && !is_reading_singly) {
        stepped = step_behind_large_value();
    }
    ++row_count;
    state = stepped == sqlite_statement::outcome::row ? progress::on_row : progress::ended;
    is_cancelled = is_cancelled || stepped == sqlite_statement::outcome::cancelled;
    if (stepped == sqlite_statement::outcome::failed || stepped == sqlite_statement::outcome::too_large) {
        error_text = database.error_text();
        return false;
    }
    return true;
}

// The rows so far stand; the others of this execution are read value by value.
sqlite_statement::outcome source_query::step_behind_large_value()
{
    running->statement.reset();
    if (!single_values) {
        single_values.emplace(database, log, running->text, row_id_name);
    }
    is_reading_singly = true;
    single_values->start(given_values);
    return single_values->next(row_count);
}

QString source_query::text(const char *column)
{
    return text_at(state == progress::on_row ? index_of(column) : -1);
}

QString source_query::text_at(int position) const
{
    if (state != progress::on_row || position < 0) {
        return QString();
    }
    return is_reading_singly ? single_values->text(position) : running->statement.text(position);
}

QByteArray source_query::bytes_at(int position) const
{
    if (state != progress::on_row || position < 0) {
        return QByteArray();
    }
    return is_reading_singly ? single_values->bytes(position) : running->statement.bytes(position);
}

int source_query::index_of(const char *column)
{
    for (const auto &[name, index] : running->resolved_columns) {
        if (name == column) {
            return index;
        }
    }
    running->resolved_columns.emplace_back(column, running->statement.column_index(column));
    return running->resolved_columns.back().second;
}

void source_query::log_failure() const
{
    log.failure(texts, database_name, error_text, running->text);
}
