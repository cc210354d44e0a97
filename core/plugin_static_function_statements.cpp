// The two runners of statements that give no rows.
#include "core/database_connection.h"
#include "core/operation_log.h"
#include "core/plugin_static_function.h"

#include <QSqlError>
#include <QSqlQuery>

bool plugin_static_function::execute_db_command_by_dbpath(const QString &command, const QString &db_path,
                                                          const QString &caller)
{
    static constexpr operation_log log{
        "static bool plugin_static_function::execute_db_command_by_dbpath(QString, QString, QString)"};

    database_connection connection(log.signature_text() + caller, db_path);
    if (!connection.open()) {
        log(" Destination Db opening --------FAILED------ ", db_path);
        log("CALLER FUNCTION -  ", caller);
        log(" error -  ", connection.error_text());
        return false;
    }
    QSqlQuery query(connection.handle());
    if (query.prepare(command) && query.exec()) {
        return true;
    }
    log(" query  --------FAILED------ db file - ", db_path);
    log("CALLER FUNCTION -  ", caller);
    log(" command -  ", command);
    log(" error -  ", query.lastError().text());
    return false;
}

bool plugin_static_function::execute_db_command_by_dbreference(const QString &command, QSqlDatabase &database,
                                                               const QString &caller)
{
    static constexpr operation_log log{
        "static bool plugin_static_function::execute_db_command_by_dbreference(QString, QSqlDatabase &, QString)"};

    QSqlQuery query(database);
    if (query.prepare(command) && query.exec()) {
        return true;
    }
    log(" query  --------FAILED------ db file - ", database.databaseName());
    log(" CALLER FUNCTION -  -  ", caller);
    log(" command -  ", command);
    log(" error -  ", query.lastError().text());
    return false;
}
