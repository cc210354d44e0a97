// Table received_attachments_files: one row a file that the UniStore keeps for received attachments.
#include "core/result_session.h"
#include "services/source_mime_type.h"
#include "windows/mail_winos.h"
#include "windows/profile_files.h"

#include <QFileInfo>

namespace {

constexpr failure_text open_failure{"[extract_received_attachments_files]Destination Db opening ------FAILED----- ",
                                    ""};
constexpr failure_text insert_failure{"[extract_received_attachments_files]---Insert Query ---FAILED---- ", "", "",
                                      false};
constexpr const char *insert_received_file =
    "INSERT INTO received_attachments_files(bookmark,system_user,domain_user,file_name,file_size,file_path,"
    "preview_file_path,export_file_paths,windows_path,mime_type,creation_timestamp,modification_timestamp,"
    "last_access_timestamp,source_file ,source_count_name, os_scheme_display)"
    "VALUES(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";

} // namespace

void mail_winos::extract_received_attachments_files()
{
    static constexpr operation_log log{"void mail_winos::extract_received_attachments_files()"};
    log("[extract_received_attachments_files]---STARTS---");
    if (unistore_data_7_folder_QStringList.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(open_failure)) {
        return;
    }
    row_writer rows{*this, destination, log, insert_received_file, insert_failure};
    for (const QString &folder : qAsConst(unistore_data_7_folder_QStringList)) {
        profile_files files(source, folder, cancel_extraction_bool);
        while (files.next()) {
            rows.insert(row_of_received_file(files.path(), folder));
        }
        if (cancel_extraction_bool) {
            return;
        }
    }
    destination.finish();
    log("[extract_received_attachments_files]---ENDS---");
}

row_values mail_winos::row_of_received_file(const QString &file, const QString &folder) const
{
    const row_source shared = row_source_of(folder, file);
    // The times come first: where the source is not ours, looking into the file for its type moves one of them.
    const posix_timestamp_record times = plugin_static_function::get_posix_timestamp(
        file.mid(source_root_path_QString.size()), source_root_path_QString);
    const QString windows_path =
        plugin_static_function::get_complete_file_path(QString(file)
                                                           .replace(source_root_path_QString, QLatin1String("C:/"))
                                                           .replace(QLatin1Char('/'), QLatin1Char('\\')),
                                                       shared.system_user, source_type_internal_QString);
    const QString shown_file = plugin_static_function::get_relative_file_path(
        behind_source_root(file), shared.system_user, source_type_internal_QString);
    const QFileInfo info(file);
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"file_name", info.fileName()},
        {"file_size", QString::number(info.size())},
        {"file_path", shown_file},
        {"preview_file_path", shown_file},
        {"export_file_paths", shown_file},
        {"windows_path", windows_path},
        {"mime_type", mime_type_of_source_file(file)},
        {"creation_timestamp", QString::number(times.creation_timestamp)},
        {"modification_timestamp", QString::number(times.modification_timestamp)},
        {"last_access_timestamp", QString::number(times.last_access_timestamp)},
    };
    append_source_columns(row, shared);
    return row;
}
