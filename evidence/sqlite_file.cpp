#include "evidence/sqlite_file.h"

#include "evidence/files.h"

#include <QFileInfo>

namespace evidence {

namespace {

constexpr qint64 first_page_bytes = 4096;

[[noreturn]] void fail(sqlite3 *connection, const QString &what)
{
    throw evidence_error(QStringLiteral("%1 failed: %2.").arg(what, QString::fromUtf8(sqlite3_errmsg(connection))));
}

bool rows_stay_in_wal(sqlite_storage storage)
{
    return storage == sqlite_storage::wal_only || storage == sqlite_storage::wal_without_shm;
}

} // namespace

row_inserter::row_inserter(sqlite3 *connection, const char *text) : connection(connection)
{
    sqlite3_stmt *prepared = nullptr;
    const int result = sqlite3_prepare_v3(connection, text, -1, SQLITE_PREPARE_PERSISTENT, &prepared, nullptr);
    statement.reset(prepared);
    if (result != SQLITE_OK) {
        fail(connection, QString::fromUtf8(text));
    }
}

void row_inserter::bind(int position, int value)
{
    sqlite3_bind_int(statement.get(), position, value);
}

void row_inserter::bind(int position, qint64 value)
{
    sqlite3_bind_int64(statement.get(), position, value);
}

void row_inserter::bind(int position, double value)
{
    sqlite3_bind_double(statement.get(), position, value);
}

void row_inserter::bind(int position, const QString &value)
{
    if (value.isNull()) {
        sqlite3_bind_null(statement.get(), position);
        return;
    }
    const QByteArray bytes = value.toUtf8();
    sqlite3_bind_text(statement.get(), position, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
}

void row_inserter::bind(int position, const QByteArray &value)
{
    sqlite3_bind_blob(statement.get(), position, value.constData(), value.size(), SQLITE_TRANSIENT);
}

void row_inserter::bind(int position, const QVariant &value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::UnknownType:
        sqlite3_bind_null(statement.get(), position);
        break;
    case QMetaType::Double:
        bind(position, value.toDouble());
        break;
    case QMetaType::QString:
        bind(position, value.toString());
        break;
    case QMetaType::QByteArray:
        bind(position, value.toByteArray());
        break;
    default:
        bind(position, value.toLongLong());
        break;
    }
}

qint64 row_inserter::insert()
{
    const int result = sqlite3_step(statement.get());
    if (result != SQLITE_DONE) {
        fail(connection, QString::fromUtf8(sqlite3_sql(statement.get())));
    }
    sqlite3_reset(statement.get());
    return sqlite3_last_insert_rowid(connection);
}

sqlite_file::sqlite_file(const QString &path, sqlite_storage storage) : path(path), storage(storage)
{
    if (QFileInfo::exists(path)) {
        throw evidence_error(QStringLiteral("The database %1 stands there already.").arg(path));
    }
    make_folder(folder_of(path));
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open(path.toUtf8().constData(), &opened);
    connection.reset(opened);
    if (result != SQLITE_OK) {
        fail(opened, QStringLiteral("Making the database %1").arg(path));
    }
    // A tree that was cut off by a power failure is written again, so nothing here waits for the disk.
    run_utf8("PRAGMA synchronous = OFF; PRAGMA cache_size = -200000;");
    run_utf8(storage == sqlite_storage::plain ? "PRAGMA journal_mode = OFF" : "PRAGMA journal_mode = WAL");
    if (rows_stay_in_wal(storage)) {
        run_utf8("PRAGMA wal_autocheckpoint = 0");
        sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    run_utf8("BEGIN");
}

sqlite_file::~sqlite_file()
{
    try {
        finish();
    } catch (const evidence_error &) { // the caller who wants to know calls finish()
    }
}

void sqlite_file::run(const QString &script)
{
    run_utf8(script.toUtf8().constData());
}

row_inserter sqlite_file::prepare_insert(const char *statement)
{
    return {connection.get(), statement};
}

void sqlite_file::finish()
{
    if (!connection) {
        return;
    }
    run_utf8("COMMIT");
    connection.reset();
    if (rows_stay_in_wal(storage)) {
        check_rows_stand_in_wal_alone();
    }
    if (storage == sqlite_storage::wal_without_shm &&
        ::remove((path + QLatin1String("-shm")).toUtf8().constData()) != 0) {
        throw evidence_error(QStringLiteral("The file %1-shm cannot be removed.").arg(path));
    }
}

void sqlite_file::run_utf8(const char *script)
{
    if (sqlite3_exec(connection.get(), script, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(connection.get(), QString::fromUtf8(script));
    }
}

/// Turning the log on writes the first page with an empty schema; any page behind it would be a checkpoint's.
void sqlite_file::check_rows_stand_in_wal_alone() const
{
    const QFileInfo log(path + QLatin1String("-wal"));
    if (QFileInfo(path).size() > first_page_bytes || log.size() == 0) {
        throw evidence_error(QStringLiteral("The rows of %1 did not stay in its write-ahead log.").arg(path));
    }
}

} // namespace evidence
