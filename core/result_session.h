/// An operation's connection to the result database, with one transaction over the whole operation. Whatever way the
/// operation ends, the rows so far are committed and the connection is closed. Declared before the writers that use it.
#pragma once

#include "core/operation_log.h"
#include "core/sqlite_database.h"

class result_session
{
public:
    result_session(const operation_log &log, const QString &database_path);
    ~result_session();
    result_session(const result_session &) = delete;
    result_session &operator=(const result_session &) = delete;

    /// Opens the database and begins the transaction. Out: false when it does not open, which is logged with the texts.
    bool open(const failure_text &texts);
    /// Commits the rows so far and begins the next transaction, for operations whose rows stand by themselves. Rows
    /// lost because the commit failed are logged.
    void keep();
    /// Commits and closes, for operations that log their end behind it. A second call does nothing. Rows lost because
    /// the commit failed are logged.
    void finish();

    sqlite_database &database() { return connection; }
    /// The path as it stands in log lines.
    const QString &database_name() const { return path; }

private:
    void commit();

    const operation_log &log;
    QString path;
    sqlite_database connection;
};
