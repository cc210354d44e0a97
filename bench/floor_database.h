/// What a floor needs of SQLite and of the file system, without a detour.
#pragma once

#include "evidence/sqlite_handles.h"

#include <QString>

#include <initializer_list>

namespace bench {

/// Copies a source database with its "-wal" and "-shm" into the folder. Out: the path of the copy.
QString copy_database(const QString &source, const QString &folder);

/// Removes the copy with what lies beside it.
void remove_database(const QString &copy);

/// Opens the database; one that does not stand is made. Failures here and below throw evidence::evidence_error.
evidence::sqlite_connection open_database(const QString &path);

/// Runs one statement with these texts for its "?", or a script without any.
void run(sqlite3 *connection, const char *statement);
void run(sqlite3 *connection, const char *statement, std::initializer_list<QString> values);

/// Out: the first value of the first row.
qint64 number(sqlite3 *connection, const QString &query);

/// Prepares a query; its rows are stepped through by the caller.
evidence::sqlite_statement prepare(sqlite3 *connection, const QByteArray &statement);

} // namespace bench
