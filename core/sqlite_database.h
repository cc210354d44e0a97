/// SQLite's C interface, an object a handle. The extraction reads and writes its rows through it: Qt's queries describe
/// their columns anew and carry each value through a variant at every execution, which costs more than the look-up
/// does.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

class sqlite_database
{
public:
    /// Opens or creates a database to write to; waits five seconds for another's lock. Out: whether it opened.
    bool open_for_writing(const QString &path);
    /// Opens a database of unknown origin for reading only, distrusting what its schema brings along. A raised flag
    /// ends a statement that is running. Out: whether it opened; that the file is no database shows only at the first
    /// statement.
    bool open_for_reading(const QString &path, const std::atomic<bool> &cancel_flag);
    void close() { handle.reset(); }
    bool is_open() const { return handle != nullptr; }

    /// Runs a statement that gives no rows. Out: whether it succeeded.
    bool execute(const char *statement);
    /// The row id that the last INSERT gave.
    qint64 last_row_id() const;
    /// The collation that a column of a table of the main database compares by, such as "BINARY"; empty when there is
    /// no such column.
    QByteArray collation_of(const char *table, const char *column) const;
    /// What SQLite says of the last failure.
    QString error_text() const;

private:
    friend class sqlite_statement;

    bool open(const QString &path, int flags);

    struct closer
    {
        void operator()(sqlite3 *database) const;
    };

    std::unique_ptr<sqlite3, closer> handle;
};

class sqlite_statement
{
public:
    enum class outcome
    {
        row,
        done,
        cancelled,
        too_large, ///< a value is larger than a source's may be; the statement ends there
        failed
    };

    bool prepare(sqlite_database &database, const char *text);
    bool is_prepared() const { return handle != nullptr; }

    /// Sets the value of the "?" at a position counted from 0, for the executions from now on. A null text is NULL.
    void bind(int position, const QString &value);
    /// Steps to the next row. The statement starts over behind reset.
    outcome step();
    void reset();

    /// The value of a column of the row in hand as the database prints it, a REAL as "600000000.0"; NULL is a null
    /// text.
    QString text(int column) const;
    /// The bytes of a value; a number as its text. NULL has none.
    QByteArray bytes(int column) const;
    /// Out: the index of a column, its name taken in any case; -1 when the statement gives no such column.
    int column_index(const char *name) const;

private:
    struct finalizer
    {
        void operator()(sqlite3_stmt *statement) const;
    };

    std::unique_ptr<sqlite3_stmt, finalizer> handle;
    std::vector<QByteArray> bound_values; // SQLite reads them in place
};
