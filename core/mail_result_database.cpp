// The result database: its place below the host's result directory, its tables, and their clearing.
#include "core/mail.h"

#include "core/database_connection.h"
#include "core/operation_log.h"
#include "core/result_schema.h"
#include "ios/mail_ios_uid.h"
#include "ios/mail_ios_uniform.h"
#include "macos/mail_macos.h"
#include "services/plugin_helper_functions.h"
#include "windows/mail_winos.h"

#include <QDir>
#include <QFileInfo>

namespace {

constexpr failure_text destination_open_failure{"Destination Db opening  for table creation------FAILED-------- ",
                                                "Error :- "};
constexpr failure_text table_creation_failure{" table creation -----FAILED---- "};

} // namespace

void mail::set_destination_location(const QString &directory)
{
    static constexpr operation_log log{"void mail::set_destination_location(QString)"};
    log("Starts");

    const QString name = artifact_name().replace(QLatin1Char(' '), QLatin1Char('_'));
    result_directory_QString = directory;
    if (!result_directory_QString.endsWith(QLatin1Char('/'))) {
        result_directory_QString += QLatin1Char('/');
    }
    result_directory_QString += QLatin1String("Artifacts_Result/") + name + QLatin1Char('/');
    tmp_directory_QString = result_directory_QString + QLatin1String("tmp/");
    destination_db_path_QString = result_directory_QString + name + QLatin1String(".sqlite");
    QDir().mkpath(result_directory_QString);
    QDir().mkpath(tmp_directory_QString);
    plugin_helper_obj->set_adhoc_parent_path(tmp_directory_QString);

    mail_macos_obj->macos_set_destination_location(result_directory_QString, tmp_directory_QString,
                                                   destination_db_path_QString, QString(), QString(), QString());
    mail_ios_uid_obj->ios_uid_set_destination_location(result_directory_QString, tmp_directory_QString,
                                                       destination_db_path_QString);
    mail_ios_uniform_obj->ios_uniform_set_destination_location(result_directory_QString, tmp_directory_QString,
                                                               destination_db_path_QString);
    mail_winos_obj->winos_set_destination_location(result_directory_QString, tmp_directory_QString,
                                                   destination_db_path_QString);
    log("Ends");
}

void mail::create_destination_database()
{
    static constexpr operation_log log{"void mail::create_destination_database()"};
    log("Starts");
    create_db_tables();
    log("Ends");
}

void mail::create_db_tables()
{
    static constexpr operation_log log{"void mail::create_db_tables()"};
    log("Starts");
    const QString caller = log.signature_text();
    database_connection destination(caller, destination_db_path_QString);
    if (!destination.open()) {
        log.failure(destination_open_failure, destination.name(), destination.error_text());
        return;
    }
    destination.handle().transaction();
    for (const result_table &table : result_tables) {
        if (!plugin_static_function::execute_db_command_by_dbreference(QString::fromUtf8(table.create_statement),
                                                                       destination.handle(), caller)) {
            log.failure(table_creation_failure, QString::fromUtf8(table.name));
        }
    }
    destination.handle().commit();
    destination.close();
    log("Ends");
}

void mail::clear_db_tables()
{
    static constexpr operation_log log{"void mail::clear_db_tables()"};
    if (!QFileInfo::exists(destination_db_path_QString)) {
        log("DB not exists and so returning...");
        return;
    }
    if (engine_type_int < 0 || engine_type_int > 2) {
        return;
    }
    const QString caller = log.signature_text();
    for (const QString &tab : qAsConst(selected_tabs_QStringList)) {
        plugin_static_function::execute_db_command_by_dbpath(QLatin1String("delete from '") + tab + QLatin1Char('\''),
                                                             destination_db_path_QString, caller);
    }
}
