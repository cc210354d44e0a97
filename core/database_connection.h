/// One named SQLite connection of Qt's driver, for statements that give no rows. It is closed
/// and unregistered when it goes out of scope; queries on it are declared behind it, so that they go first.
#pragma once

#include <QSqlDatabase>
#include <QString>

class database_connection
{
public:
    /// Takes the name over: a connection that bore it is removed. Opens nothing yet.
    database_connection(QString connection_name, const QString &database_path);
    ~database_connection();
    database_connection(const database_connection &) = delete;
    database_connection &operator=(const database_connection &) = delete;

    bool open() { return database.open(); }
    void close() { database.close(); }
    QSqlDatabase &handle() { return database; }

    /// The path as it stands in log lines.
    QString name() const { return database.databaseName(); }
    QString error_text() const;

private:
    QString connection_name;
    QSqlDatabase database;
};
