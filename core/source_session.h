/// Reading a source database through its working copy: a read-only connection, and the prepared statements on it.
#pragma once

#include "core/operation_log.h"
#include "core/result_session.h"
#include "core/single_value_reader.h"
#include "core/sqlite_database.h"

#include <QString>

#include <initializer_list>
#include <optional>
#include <utility>
#include <vector>

class source_session
{
public:
    /// In: the path of a working copy, and the flag that ends statements which run too long.
    source_session(const operation_log &log, const QString &copy_path, const std::atomic<bool> &cancel_flag);

    /// Out: false when the copy does not open, which is logged with the texts. A file that is no database shows only at
    /// the first statement.
    bool open(const failure_text &texts);

    sqlite_database &database() { return connection; }
    /// The path as it stands in log lines.
    const QString &database_name() const { return path; }

private:
    const operation_log &log;
    QString path;
    const std::atomic<bool> &is_cancelled;
    sqlite_database connection;
};

/// One statement that reads a source or the rows so far, prepared at its first use and kept; its session and its log
/// outlive it. A source whose columns differ by generation is read by several statements: the first that executes
/// counts. Failures are logged with the statement's own texts, each time that they occur; of several statements only
/// that of the last one.
class source_query
{
public:
    source_query(source_session &session, const operation_log &log, const char *statement, const failure_text &texts);
    source_query(source_session &session, const operation_log &log, const std::vector<const char *> &statements,
                 const failure_text &texts);
    source_query(result_session &session, const operation_log &log, const char *statement, const failure_text &texts);
    /// In: also what its failures name in place of the working copy; it outlives the query.
    source_query(source_session &session, const operation_log &log, const char *statement, const failure_text &texts,
                 const QString &subject);

    /// From now on a value that is larger than a source's may be reads as NULL, which is logged, where it would end the
    /// rows. For one statement of the form that single_value_reader reads; in: what names a row in it.
    void leave_out_large_values(const char *row_id) { row_id_name = row_id; }

    /// Runs the statement with these values in place of its "?". Out: false when it fails, which is logged, and when
    /// the extraction was cancelled while it ran.
    bool execute(std::initializer_list<QString> values = {});
    /// Steps to the next row. Out: false behind the last one and when the extraction is cancelled; also where the
    /// database broke off, which is logged.
    bool next();
    /// Whether a statement was ended by the cancelling, so that rows may be missing.
    bool was_cancelled() const { return is_cancelled; }

    /// The value of a column of the row in hand as text: a REAL as the database prints it; a NULL, or a column that the
    /// statement does not give, is a null text. The name is one literal, which is looked up once.
    QString text(const char *column);
    /// The same by the column's position in the statement, counted from 0.
    QString text_at(int position) const;
    /// The value as bytes; a NULL has none.
    QByteArray bytes_at(int position) const;

private:
    struct variant
    {
        const char *text;
        sqlite_statement statement;
        QString prepare_error; // kept, since a statement that failed once is not prepared again
        std::vector<std::pair<const char *, int>> resolved_columns;
    };

    enum class progress
    {
        ended,
        before_first_row,
        on_row
    };

    source_query(sqlite_database &database, const QString &database_name, const operation_log &log,
                 const std::vector<const char *> &statements, const failure_text &texts);

    bool prepare(variant &candidate);
    bool start(variant &candidate, std::initializer_list<QString> values);
    bool step(); // false for a failure
    sqlite_statement::outcome step_behind_large_value();
    int index_of(const char *column);
    void log_failure() const;

    sqlite_database &database;
    const QString &database_name;
    const operation_log &log;
    const failure_text &texts;
    std::vector<variant> variants;
    variant *running = nullptr; // the one tried last
    QString error_text;         // of its failure
    progress state = progress::ended;
    bool is_cancelled = false;

    const char *row_id_name = nullptr;
    std::vector<QString> given_values; // those of the execution, and its rows so far: where to go on
    qint64 row_count = 0;
    std::optional<single_value_reader> single_values;
    bool is_reading_singly = false;
};
