/// Reading a source database through its working copy: a read-only connection, and the prepared statements on it.
#pragma once

#include "core/database_connection.h"
#include "core/operation_log.h"

#include <QSqlQuery>
#include <QString>

#include <initializer_list>
#include <vector>

class source_session
{
public:
    /// The connection bears the signature of the operation with the suffix behind it.
    source_session(const operation_log &log, const char *name_suffix, const QString &copy_path);

    /// Out: false when the copy does not open, which is logged with the texts. A file that is no database shows only at
    /// the first statement.
    bool open(const failure_text &texts);

    QSqlDatabase &database() { return connection.handle(); }
    QString database_name() const { return connection.name(); }

private:
    const operation_log &log;
    database_connection connection;
};

/// One statement over a source, prepared at its first use and kept; its session and its log outlive it. Failures are
/// logged with the statement's own texts, each time that they occur.
class source_query
{
public:
    source_query(source_session &session, const operation_log &log, const char *statement, const failure_text &texts);

    /// Runs the statement with these values in place of its "?". Out: false when it fails, which is logged.
    bool execute(std::initializer_list<QString> values = {});
    /// Steps to the next row. Out: false behind the last one, also where the database broke off, which is logged.
    bool next();

    /// The value of a column of the row in hand as text: a REAL as the database prints it; a NULL, or a column that the
    /// statement does not give, is a null text.
    QString text(const char *column) const;

private:
    bool prepare();
    void log_failure(const QString &error_text) const;

    source_session &session;
    const operation_log &log;
    const char *statement;
    const failure_text &texts;
    QSqlQuery query;
    bool is_prepared = false;
    QString prepare_error; // kept, since a statement that failed once is not tried again
    std::vector<QByteArray> columns;
};

/// A real number as SQLite turns it into text: 15 significant digits and always a decimal point, "600000000.0".
QString real_as_database_text(double value);
