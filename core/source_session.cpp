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

source_query::source_query(source_session &source, const operation_log &operation, const char *text,
                           const failure_text &failure_texts)
    : session(source), log(operation), statement_text(text), texts(failure_texts)
{
}

bool source_query::prepare()
{
    if (!statement.is_prepared() && prepare_error.isNull() && !statement.prepare(session.database(), statement_text)) {
        prepare_error = session.database().error_text();
    }
    return statement.is_prepared();
}

bool source_query::execute(std::initializer_list<QString> values)
{
    state = progress::ended;
    if (!prepare()) {
        log_failure(prepare_error);
        return false;
    }
    statement.reset();
    int position = 0;
    for (const QString &value : values) {
        statement.bind(position++, value);
    }
    // Whether a statement can be executed shows at its first step.
    if (!step()) {
        return false;
    }
    state = state == progress::on_row ? progress::before_first_row : state;
    return true;
}

bool source_query::next()
{
    if (state == progress::on_row) {
        step();
    } else if (state == progress::before_first_row) {
        state = progress::on_row;
    }
    return state == progress::on_row;
}

bool source_query::step()
{
    const sqlite_statement::outcome stepped = statement.step();
    state = stepped == sqlite_statement::outcome::row ? progress::on_row : progress::ended;
    if (stepped == sqlite_statement::outcome::failed) {
        // A damaged page in the middle of a table ends the rows as well; that must not look like their end.
        log_failure(session.database().error_text());
        return false;
    }
    return true;
}

QString source_query::text(const char *column)
{
    const int index = state == progress::on_row ? index_of(column) : -1;
    return index < 0 ? QString() : statement.text(index);
}

int source_query::index_of(const char *column)
{
    for (const auto &[name, index] : resolved_columns) {
        if (name == column) {
            return index;
        }
    }
    resolved_columns.emplace_back(column, statement.column_index(column));
    return resolved_columns.back().second;
}

void source_query::log_failure(const QString &error_text) const
{
    log.failure(texts, session.database_name(), error_text, statement_text);
}
