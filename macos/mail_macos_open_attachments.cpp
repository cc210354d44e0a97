// Table open_attachments: one row an attachment that the user has opened, from the folder of downloaded attachments
// and, of older stores, from the lists of opened ones.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"

#include <QFile>
#include <QFileInfo>

namespace {

// --- Downloaded attachments ------------------------------------------------------------------------------------------

constexpr failure_text folder_destination_failure{"destination db open ----------FAILED------", "Error :- "};
constexpr failure_text folder_insert_failure{"insert in open_attachments ----------FAILED------", "Error :- ",
                                             "Query :- "};
constexpr const char *insert_downloaded_attachment =
    "insert into open_attachments(bookmark,system_user, message_id, file_name,file_size,file_exist,source_file, "
    "artifacts_relation_source_file, file_path,preview_file_path,export_file_paths,suffix,sender_display_name,"
    "sender_handle_id,mail_subject,date_added,content_creation_date,content_modification_date,content_type,"
    "fs_content_change_date, fs_creation_date,fs_name,fs_node_count,last_used_date,used_dates,wherefrom,latitude,"
    "longitude,altitude,torrent_file_list,extended_attributes_key_value,extended_attributes_value_for_search,"
    "source_count_name, os_scheme_display) values (?,?,?,?,?,?,?,?,  ?,?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  "
    "?,?,?,?,?)";

// --- Lists of opened attachments -------------------------------------------------------------------------------------

constexpr failure_text list_destination_failure{
    "[extract_xcode_open_attachments] destination db open ----------FAILED------", "", nullptr, false};
constexpr failure_text list_insert_failure{
    "[extract_xcode_open_attachments] insert in open_attachments ----------FAILED------", "Error:- ", "Query :- ",
    false};
constexpr const char *insert_listed_attachment =
    "insert into open_attachments(bookmark,system_user, message_id, file_modification_date, date_opened, part_no, "
    "file_name,file_size,file_exist,source_file,artifacts_relation_source_file, file_path,preview_file_path,"
    "export_file_paths,suffix,date_added,content_creation_date,content_modification_date,content_type,"
    "fs_content_change_date, fs_creation_date,fs_name,fs_node_count,last_used_date,used_dates,first_date, last_date,"
    "wherefrom,latitude,longitude,altitude,torrent_file_list,extended_attributes_key_value,"
    "extended_attributes_value_for_search,source_count_name,os_scheme_display) values (?,?,?,?,?,?,?,?,?,?,  "
    "?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,?,  ?,?,?,?,?)";

QString message_id_of(const property_list_value &attachment)
{
    return attachment.object_for_key(QStringLiteral("MessageID"))
        .text()
        .remove(QLatin1Char('<'))
        .remove(QLatin1Char('>'))
        .trimmed();
}

QString seconds_of(const property_list_value &date)
{
    return text_of_instant(date.time_interval_since_1970());
}

void append_shown_file(row_values &row, const QString &shown_file, const QString &suffix)
{
    row.insert(row.end(), {
                              {"file_path", shown_file},
                              {"preview_file_path", shown_file},
                              {"export_file_paths", shown_file},
                              {"suffix", suffix},
                          });
}

} // namespace

QStringList mail_macos::sub_get_attachment_files_from_folder(const QString &folder) const
{
    QStringList files;
    if (!source.contains_without_links(folder)) {
        return files;
    }
    folder_walk entries(folder, links::refuse, companion_files::meet);
    while (!cancel_extraction_bool && entries.next()) {
        const QString path = folder + QLatin1Char('/') + QFile::decodeName(entries.relative_path());
        const bool is_file =
            entries.kind() == folder_walk::entry_kind::file ||
            (entries.kind() == folder_walk::entry_kind::link && QFileInfo(path).isFile() && source.contains(path));
        if (is_file) {
            files.append(path);
        }
    }
    return files;
}

void mail_macos::extract_open_attachment_11_12(const QString &folder, const QString &user)
{
    static constexpr operation_log log{"void mail_macos::extract_open_attachment_11_12(QString, QString)"};
    log("START");
    if (folder.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(folder_destination_failure)) {
        return;
    }
    row_writer rows{*this, destination, log, insert_downloaded_attachment, folder_insert_failure};
    const artifact_source_file shown_folder = plugin_static_function::get_final_artifact_source_file(
        behind_source_root(folder), user, source_type_internal_QString);
    const QStringList files = sub_get_attachment_files_from_folder(folder);
    for (const QString &file : files) {
        const row_values row = row_of_downloaded_attachment(file, user, shown_folder);
        if (cancel_extraction_bool) { // it may have been filled in part only
            return;
        }
        rows.insert(row);
    }
    destination.finish();
    log("END");
}

row_values mail_macos::row_of_downloaded_attachment(const QString &file, const QString &user,
                                                    const artifact_source_file &shown_folder) const
{
    const QString complete = plugin_static_function::get_complete_file_path(file, user, source_type_internal_QString);
    macos_file_facts facts = facts_of(complete);
    const struct_GLOBAL_ARTIFACT_cfstring_attributes mail_attributes = extract_cfstring_attributes_mail(complete);
    const QString size = facts.file_size;
    if (complete != file) { // the creation time is that of the file that was met
        facts.created = facts_of(file).created;
    }
    facts.is_there = true; // it was met, even if its name is not UTF-8 and it cannot be asked for again
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", user},
        {"message_id", mail_attributes.attr_origin_message_id_QString},
        {"file_name", file.mid(file.lastIndexOf(QLatin1Char('/')) + 1)},
        {"file_size", size},
        {"file_exist", facts.file_exist()},
        {"source_file", shown_folder.source_file},
        {"artifacts_relation_source_file", shown_folder.artifacts_relation_source_file},
    };
    append_shown_file(row,
                      plugin_static_function::get_relative_file_path(behind_source_root(complete), user,
                                                                     source_type_internal_QString),
                      plugin_static_function::mining_suffix(complete));
    row.insert(row.end(), {
                              {"sender_display_name", mail_attributes.attr_origin_sender_display_name_QString},
                              {"sender_handle_id", mail_attributes.attr_origin_sender_handle_QString},
                              {"mail_subject", mail_attributes.attr_origin_subject_QString},
                          });
    append_metadata_columns(row, facts, used_date_bounds::without);
    append_closing_columns(row, facts);
    return row;
}

void mail_macos::extract_xcode_open_attachments(const QString &file, const QString &user, const QString &destination_db,
                                                const QString &source_root)
{
    static constexpr operation_log log{
        "void mail_macos::extract_xcode_open_attachments(QString, QString, QString, QString)"};
    log("Start ");
    if (file.isEmpty()) {
        return;
    }
    result_session destination{log, destination_db};
    if (!destination.open(list_destination_failure)) {
        log("", destination_db);
        log("[extract_xcode_open_attachments] end with failure ");
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_array()) {
        log("[extract_xcode_open_attachments] attachment_array nil ----------FAILED------");
        return;
    }
    row_writer rows{*this, destination, log, insert_listed_attachment, list_insert_failure};
    const artifact_source_file shown_list = plugin_static_function::get_final_artifact_source_file(
        behind_source_root(file.trimmed()), user, source_type_internal_QString);
    for (const property_list_value &attachment : list.root().elements()) {
        if (!attachment.is_dictionary()) {
            continue;
        }
        const row_values row = row_of_listed_attachment(attachment, user, source_root, shown_list);
        if (cancel_extraction_bool) { // it may have been filled in part only
            return;
        }
        rows.insert(row);
    }
    log("[extract_xcode_open_attachments] end");
}

row_values mail_macos::row_of_listed_attachment(const property_list_value &attachment, const QString &user,
                                                const QString &source_root,
                                                const artifact_source_file &shown_list) const
{
    const property_list_value path = attachment.object_for_key(QStringLiteral("Path"));
    const QString stored_path =
        plugin_static_function::get_complete_file_path(path.text().trimmed(), user, source_type_internal_QString);
    const QString target = path.is_string() ? source_root + stored_path.mid(1) : QString();
    const macos_file_facts facts = facts_of(target);
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", user},
        {"message_id", message_id_of(attachment)},
        {"file_modification_date", seconds_of(attachment.object_for_key(QStringLiteral("ModDate")))},
        {"date_opened", seconds_of(attachment.object_for_key(QStringLiteral("OpenedDate")))},
        {"part_no", attachment.object_for_key(QStringLiteral("PartNumber")).text().trimmed()},
        {"file_name", stored_path.mid(stored_path.lastIndexOf(QLatin1Char('/')) + 1).trimmed()},
        {"file_size", QString::number(facts.is_there ? QFileInfo(target).size() : 0)},
        {"file_exist", facts.file_exist()},
        {"source_file", shown_list.source_file},
        {"artifacts_relation_source_file", shown_list.artifacts_relation_source_file},
    };
    append_shown_file(
        row,
        plugin_static_function::get_relative_file_path(behind_source_root(target), user, source_type_internal_QString),
        plugin_static_function::mining_suffix(target));
    append_metadata_columns(row, facts, used_date_bounds::with);
    append_closing_columns(row, facts);
    return row;
}
