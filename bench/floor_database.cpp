#include "bench/floor_database.h"

#include "evidence/files.h"

#include <QFileInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace bench {

namespace {

[[noreturn]] void fail(sqlite3 *connection, const QString &what)
{
    throw evidence::evidence_error(
        QStringLiteral("%1 failed: %2.").arg(what, QString::fromUtf8(sqlite3_errmsg(connection))));
}

/// Lets the kernel copy. Out: false, with errno set, when source or copy does not open or the copy breaks off.
bool copy_file(const QByteArray &source, const QByteArray &copy)
{
    const int from = ::open(source.constData(), O_RDONLY | O_CLOEXEC);
    if (from < 0) {
        return false;
    }
    const int to = ::open(copy.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    struct stat status = {};
    bool is_copied = to >= 0 && ::fstat(from, &status) == 0;
    off_t left = status.st_size;
    while (is_copied && left > 0) {
        const ssize_t copied = ::copy_file_range(from, nullptr, to, nullptr, static_cast<size_t>(left), 0);
        is_copied = copied > 0;
        left -= copied;
    }
    const int error_number = errno;
    ::close(from);
    if (to >= 0) {
        ::close(to);
    }
    errno = error_number;
    return is_copied;
}

} // namespace

QString copy_database(const QString &source, const QString &folder)
{
    QString copy = folder + QFileInfo(source).fileName();
    if (!copy_file(source.toUtf8(), copy.toUtf8())) {
        throw evidence::evidence_error(QStringLiteral("The database %1 cannot be copied.").arg(source));
    }
    for (const char *suffix : {"-shm", "-wal"}) {
        if (!copy_file(source.toUtf8() + suffix, copy.toUtf8() + suffix) && errno != ENOENT) {
            throw evidence::evidence_error(
                QStringLiteral("The file %1%2 cannot be copied.").arg(source, QLatin1String(suffix)));
        }
    }
    return copy;
}

void remove_database(const QString &copy)
{
    for (const char *suffix : {"", "-shm", "-wal"}) {
        ::unlink((copy.toUtf8() + suffix).constData());
    }
}

evidence::sqlite_connection open_database(const QString &path)
{
    sqlite3 *opened = nullptr;
    const int result = sqlite3_open(path.toUtf8().constData(), &opened);
    evidence::sqlite_connection connection(opened);
    if (result != SQLITE_OK) {
        fail(opened, QStringLiteral("Opening %1").arg(path));
    }
    return connection;
}

void run(sqlite3 *connection, const char *statement)
{
    if (sqlite3_exec(connection, statement, nullptr, nullptr, nullptr) != SQLITE_OK) {
        fail(connection, QString::fromUtf8(statement));
    }
}

void run(sqlite3 *connection, const char *statement, std::initializer_list<QString> values)
{
    const evidence::sqlite_statement prepared = prepare(connection, statement);
    int position = 0;
    for (const QString &value : values) {
        const QByteArray bytes = value.toUtf8();
        sqlite3_bind_text(prepared.get(), ++position, bytes.constData(), bytes.size(), SQLITE_TRANSIENT);
    }
    if (sqlite3_step(prepared.get()) != SQLITE_DONE) {
        fail(connection, QString::fromUtf8(statement));
    }
}

qint64 number(sqlite3 *connection, const QString &query)
{
    const evidence::sqlite_statement prepared = prepare(connection, query.toUtf8());
    if (sqlite3_step(prepared.get()) != SQLITE_ROW) {
        fail(connection, query);
    }
    return sqlite3_column_int64(prepared.get(), 0);
}

evidence::sqlite_statement prepare(sqlite3 *connection, const QByteArray &statement)
{
    sqlite3_stmt *prepared = nullptr;
    if (sqlite3_prepare_v2(connection, statement.constData(), statement.size(), &prepared, nullptr) != SQLITE_OK) {
        fail(connection, QString::fromUtf8(statement));
    }
    return evidence::sqlite_statement(prepared);
}

} // namespace bench
