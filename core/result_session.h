/// An operation's connection to the result database, with one transaction over the whole operation. Whatever way the
/// operation ends, the rows so far are committed and the connection is closed. Declared before the queries that use it.
#pragma once

#include "core/database_connection.h"
#include "core/operation_log.h"

class result_session
{
public:
    /// The connection bears the signature of the operation.
    result_session(const operation_log &log, const QString &database_path);
    ~result_session();
    result_session(const result_session &) = delete;
    result_session &operator=(const result_session &) = delete;

    /// Opens the database and begins the transaction. Out: false when it does not open, which is logged with the texts.
    bool open(const failure_text &texts);
    /// Commits and closes, for operations that log their end behind it. A second call does nothing.
    void finish();

    QSqlDatabase &database() { return connection.handle(); }
    QString database_name() const { return connection.name(); }

private:
    const operation_log &log;
    database_connection connection;
    bool is_open = false;
};
