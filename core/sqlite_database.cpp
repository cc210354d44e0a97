#include "core/sqlite_database.h"

#include <QFile>

#include <sqlite3.h>

namespace {

constexpr int busy_timeout_ms = 5000;
constexpr int longest_source_value = 16 << 20; // bytes: a formula in the schema can make a text of any length
constexpr int steps_between_cancel_tests = 10000;

int is_raised(void *flag)
{
    return static_cast<const std::atomic<bool> *>(flag)->load() ? 1 : 0;
}

} // namespace

void sqlite_database::closer::operator()(sqlite3 *database) const
{
    sqlite3_close_v2(database); // waits for statements that go out of scope later
}

void sqlite_statement::finalizer::operator()(sqlite3_stmt *statement) const
{
    sqlite3_finalize(statement);
}

bool sqlite_database::open(const QString &path, int flags)
{
    sqlite3 *opened = nullptr;
    // A connection stays on the thread that opened it and needs no lock of its own.
    const int result =
        sqlite3_open_v2(QFile::encodeName(path).constData(), &opened, flags | SQLITE_OPEN_NOMUTEX, nullptr);
    handle.reset(opened); // kept when it fails too: it holds the error text
    return result == SQLITE_OK;
}

bool sqlite_database::open_for_writing(const QString &path)
{
    if (!open(path, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) {
        return false;
    }
    sqlite3_busy_timeout(handle.get(), busy_timeout_ms);
    return true;
}

bool sqlite_database::open_for_reading(const QString &path, const std::atomic<bool> &cancel_flag)
{
    if (!open(path, SQLITE_OPEN_READONLY)) {
        return false;
    }
    sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(handle.get(), SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr); // a view can have rows without end
    sqlite3_limit(handle.get(), SQLITE_LIMIT_LENGTH, longest_source_value);
    execute("PRAGMA temp_store = MEMORY"); // temporary tables hold evidence: none of it on the examiner's disk
    sqlite3_progress_handler(handle.get(), steps_between_cancel_tests, &is_raised,
                             const_cast<std::atomic<bool> *>(&cancel_flag));
    return true;
}

bool sqlite_database::execute(const char *statement)
{
    return sqlite3_exec(handle.get(), statement, nullptr, nullptr, nullptr) == SQLITE_OK;
}

qint64 sqlite_database::last_row_id() const
{
    return sqlite3_last_insert_rowid(handle.get());
}

QByteArray sqlite_database::collation_of(const char *table, const char *column) const
{
    const char *collation = nullptr;
    sqlite3_table_column_metadata(handle.get(), "main", table, column, nullptr, &collation, nullptr, nullptr, nullptr);
    return QByteArray(collation);
}

QString sqlite_database::error_text() const
{
    return QString::fromUtf8(sqlite3_errmsg(handle.get()));
}

bool sqlite_statement::prepare(sqlite_database &database, const char *text)
{
    sqlite3_stmt *prepared = nullptr;
    sqlite3_prepare_v3(database.handle.get(), text, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    handle.reset(prepared);
    bound_values.resize(static_cast<std::size_t>(sqlite3_bind_parameter_count(prepared)));
    return is_prepared();
}

void sqlite_statement::bind(int position, const QString &value)
{
    if (value.isNull()) {
        sqlite3_bind_null(handle.get(), position + 1);
        return;
    }
    QByteArray &bytes = bound_values.at(static_cast<std::size_t>(position));
    bytes = value.toUtf8();
    sqlite3_bind_text(handle.get(), position + 1, bytes.constData(), bytes.size(), SQLITE_STATIC);
}

sqlite_statement::outcome sqlite_statement::step()
{
    switch (sqlite3_step(handle.get())) {
    case SQLITE_ROW:
        return outcome::row;
    case SQLITE_DONE:
        return outcome::done;
    case SQLITE_INTERRUPT:
        return outcome::cancelled;
    case SQLITE_TOOBIG:
        return outcome::too_large;
    default:
        return outcome::failed;
    }
}

void sqlite_statement::reset()
{
    sqlite3_reset(handle.get());
}

QString sqlite_statement::text(int column) const
{
    const auto *bytes = reinterpret_cast<const char *>(sqlite3_column_text(handle.get(), column));
    return bytes ? QString::fromUtf8(bytes, sqlite3_column_bytes(handle.get(), column)) : QString();
}

QByteArray sqlite_statement::bytes(int column) const
{
    const auto *bytes = static_cast<const char *>(sqlite3_column_blob(handle.get(), column));
    return QByteArray(bytes, sqlite3_column_bytes(handle.get(), column));
}

int sqlite_statement::column_index(const char *name) const
{
    for (int i = 0; i < sqlite3_column_count(handle.get()); ++i) {
        if (sqlite3_stricmp(sqlite3_column_name(handle.get(), i), name) == 0) {
            return i;
        }
    }
    return -1;
}
