/// Owning handles of SQLite's C interface.
#pragma once

#include <memory>
#include <sqlite3.h>

namespace evidence {

struct sqlite_connection_closer
{
    void operator()(sqlite3 *connection) const { sqlite3_close(connection); }
};
using sqlite_connection = std::unique_ptr<sqlite3, sqlite_connection_closer>;

struct sqlite_statement_finalizer
{
    void operator()(sqlite3_stmt *statement) const { sqlite3_finalize(statement); }
};
using sqlite_statement = std::unique_ptr<sqlite3_stmt, sqlite_statement_finalizer>;

} // namespace evidence
