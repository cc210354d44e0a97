/// Writes a SQLite database as it is found on a device: closed cleanly, or with its rows still in the write-ahead log.
#pragma once

#include "evidence/sqlite_handles.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

namespace evidence {

/// The form in which a finished database lies on the disk.
enum class sqlite_storage
{
    plain,            ///< one file with a rollback journal's header
    wal_checkpointed, ///< one file whose header names the write-ahead log, which is not there: cleanly shut down
    wal_only,         ///< a main file without rows, everything in "-wal", "-shm" beside: taken from a running device
    wal_without_shm,  ///< the same without "-shm", as many acquisition tools leave it
};

/// A prepared INSERT of one sqlite_file, which must outlive it.
class row_inserter
{
public:
    /// Binds the values to the question marks in their order and inserts the row. A QVariant binds as what it holds, an
    /// invalid one and a null QString as SQL NULL. Out: the row id.
    template <typename... value_types>
    qint64 operator()(const value_types &...values)
    {
        int position = 0;
        (bind(++position, values), ...);
        return insert();
    }

private:
    friend class sqlite_file;
    row_inserter(sqlite3 *connection, const char *statement);

    void bind(int position, int value);
    void bind(int position, qint64 value);
    void bind(int position, double value);
    void bind(int position, const QString &value);
    void bind(int position, const QByteArray &value);
    void bind(int position, const QVariant &value);
    qint64 insert();

    sqlite3 *connection;
    sqlite_statement statement;
};

/// A new database, written in one transaction. Failures throw evidence_error.
class sqlite_file
{
public:
    /// Makes the folder with its parents and the database in it; a file that stands there already is a failure.
    explicit sqlite_file(const QString &path, sqlite_storage storage = sqlite_storage::plain);
    /// Finishes what was not finished, without a word when that fails.
    ~sqlite_file();
    sqlite_file(const sqlite_file &) = delete;
    sqlite_file &operator=(const sqlite_file &) = delete;

    /// Runs the statements of a script inside the transaction.
    void run(const QString &script);
    row_inserter prepare_insert(const char *statement);

    /// Commits and closes; only now the database holds anything. All row_inserters must be gone.
    void finish();

private:
    void run_utf8(const char *script);
    void check_rows_stand_in_wal_alone() const;

    QString path;
    sqlite_storage storage;
    sqlite_connection connection;
};

} // namespace evidence
