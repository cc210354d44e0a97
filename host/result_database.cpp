#include "host/result_database.h"

#include "host/command_line.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlError>
#include <QSqlRecord>
#include <QUrl>
#include <QVariant>

namespace {

const QString connection_name = QStringLiteral("mail-extract result database");

// A database in write-ahead mode makes SQLite create two files beside it even for reading, unless it is told that the
// file does not change. That holds when no write-ahead log stands there.
bool would_create_files(const QString &path)
{
    constexpr int read_version_offset = 19;
    constexpr char write_ahead = 2;
    QFile file(path);
    return file.open(QIODevice::ReadOnly) && file.seek(read_version_offset) &&
           file.read(1) == QByteArray(1, write_ahead) && !QFileInfo::exists(path + QStringLiteral("-wal"));
}

QString uri_of(const QString &path)
{
    const QString absolute = QFileInfo(path).absoluteFilePath();
    return QStringLiteral("file:") + QString::fromLatin1(QUrl::toPercentEncoding(absolute, "/")) +
           QStringLiteral("?mode=ro") + (would_create_files(path) ? QStringLiteral("&immutable=1") : QString());
}

} // namespace

QString result_database_path(const QString &result_directory)
{
    return (result_directory.endsWith(QLatin1Char('/')) ? result_directory : result_directory + QLatin1Char('/')) +
           QStringLiteral("Artifacts_Result/Mail/Mail.sqlite");
}

QString find_result_database(const QString &given)
{
    if (QFileInfo(given).isFile()) {
        return given;
    }
    const QDir folder(given);
    for (const QString &candidate : {result_database_path(given), folder.filePath(QStringLiteral("Mail/Mail.sqlite")),
                                     folder.filePath(QStringLiteral("Mail.sqlite"))}) {
        if (!given.isEmpty() && QFileInfo(candidate).isFile()) {
            return candidate;
        }
    }
    throw unusable_input{
        QStringLiteral("there is no result database in \"%1\": give the folder that was given to run as --result")
            .arg(given)};
}

bool is_sqlite_or_empty(const QString &path)
{
    const QByteArray magic("SQLite format 3", 16); // with its closing zero byte
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return !file.exists();
    }
    return file.size() == 0 || file.read(magic.size()) == magic;
}

QString quoted_name(const QString &name)
{
    QString inside = name;
    inside.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + inside + QLatin1Char('"');
}

result_database::result_database(const QString &path) : database_path(path)
{
    database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_name);
    database.setConnectOptions(QStringLiteral("QSQLITE_OPEN_URI;QSQLITE_OPEN_READONLY"));
    database.setDatabaseName(uri_of(path));
    try {
        if (!database.open()) {
            refuse(database.lastError().databaseText());
        }
        QSqlQuery query = select(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                                "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid"));
        while (query.next()) {
            table_names += query.value(0).toString();
        }
        check_ended_well(query);
    } catch (const unusable_input &) {
        database = QSqlDatabase();
        QSqlDatabase::removeDatabase(connection_name);
        throw;
    }
}

result_database::~result_database()
{
    database.close();
    database = QSqlDatabase(); // the connection may not be in use when it is removed
    QSqlDatabase::removeDatabase(connection_name);
}

void result_database::refuse(const QString &reason) const
{
    const bool is_unfinished = QFileInfo::exists(database_path + QStringLiteral("-journal"));
    throw unusable_input{
        QStringLiteral("the result database \"%1\" cannot be read: %2%3")
            .arg(database_path, reason,
                 is_unfinished
                     ? QStringLiteral(" (a run is at work there, or was killed: the next run puts it in order)")
                     : QString())};
}

QSqlQuery result_database::select(const QString &statement) const
{
    QSqlQuery query(database);
    query.setForwardOnly(true);
    if (!query.prepare(statement) || !query.exec()) {
        refuse(query.lastError().databaseText());
    }
    return query;
}

void result_database::check_ended_well(const QSqlQuery &query) const
{
    if (query.lastError().isValid()) {
        refuse(query.lastError().databaseText());
    }
}

QStringList result_database::columns(const QString &table) const
{
    const QSqlRecord record = select(QStringLiteral("SELECT * FROM %1 LIMIT 0").arg(quoted_name(table))).record();
    QStringList names;
    for (int i = 0; i < record.count(); ++i) {
        names += record.fieldName(i);
    }
    return names;
}

qint64 result_database::row_count(const QString &table) const
{
    QSqlQuery query = select(QStringLiteral("SELECT count(*) FROM %1").arg(quoted_name(table)));
    return query.next() ? query.value(0).toLongLong() : 0;
}

qint64 result_database::rows_of_source(const QString &table, int source_number) const
{
    if (!table_names.contains(table)) {
        return 0;
    }
    QSqlQuery query = select(QStringLiteral("SELECT count(*) FROM %1 WHERE source_count_name = 'Source%2'")
                                 .arg(quoted_name(table), QString::number(source_number)));
    return query.next() ? query.value(0).toLongLong() : 0;
}
