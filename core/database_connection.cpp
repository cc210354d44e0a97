#include "core/database_connection.h"

#include <QSqlError>

#include <utility>

database_connection::database_connection(QString name, const QString &database_path) : connection_name(std::move(name))
{
    QSqlDatabase::removeDatabase(connection_name);
    database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_name);
    database.setDatabaseName(database_path);
}

database_connection::~database_connection()
{
    database.close();
    database = QSqlDatabase(); // the registry gives a name free only when no handle is left
    QSqlDatabase::removeDatabase(connection_name);
}

QString database_connection::error_text() const
{
    return database.lastError().text();
}
