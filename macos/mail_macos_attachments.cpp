// Table all_attachments: one row an attachment name of the messages that the index in hand has given, with the file on
// the source.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "core/source_session.h"
#include "macos/mail_macos.h"

#include <QFileInfo>

namespace {

constexpr failure_text destination_open_failure{"open destination DB -------FAILED-------", "Error :- "};
constexpr failure_text select_failure{"select from messages --------FAILED------- ", "Error :- ", "Query :- "};
constexpr failure_text insert_failure{"insert in allattachments --------FAILED------", "Error :- ", "Query :- "};

// Followed by the name of the source in single quotes.
constexpr const char *select_messages_of_later_index =
    "select system_user, INT, message_id, from_str, to_str, subject, attachment_filename , emlx_file_name, "
    "emlx_file_path,cc,message,message_date_sent,source_file,artifacts_relation_source_file from messages where "
    "attachment_filename != \"\"AND source_count_name = ";

constexpr const char *select_messages_of_earlier_index =
    "select system_user, INT, message_id, from_str, to_str, subject, attachment_filename , emlx_file_name, "
    "emlx_file_path,cc,message from messages where attachment_filename != \"\" AND source_count_name = ?";

constexpr const char *insert_attachment_of_later_index =
    "insert into all_attachments(bookmark, system_user, message_id,message_date_sent,from_str, to_str,cc, snippet, "
    "subject,file_name,file_path,preview_file_path,export_file_paths,file_exist,file_size,suffix,date_added,"
    "content_creation_date, content_modification_date, content_type,fs_content_change_date,fs_creation_date,fs_name,"
    "fs_node_count,last_used_date,used_dates,wherefrom, latitude,longitude,altitude,torrent_file_list,source_file,"
    "artifacts_relation_source_file,extended_attributes_key_value,extended_attributes_value_for_search,"
    "source_count_name, os_scheme_display)values (?,?,?,?,?,?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  "
    "?,?,?,?,?,?,  ?,?,?,?,?,  ?)";

constexpr const char *insert_attachment_of_earlier_index =
    "insert into all_attachments(bookmark, system_user, relationtableint, message_id, from_str, to_str,cc, snippet, "
    "subject,file_name , file_path, preview_file_path,export_file_paths ,file_exist,file_size,suffix,date_added,"
    "content_creation_date,content_modification_date,content_type,fs_content_change_date, fs_creation_date,fs_name,"
    "fs_node_count,last_used_date,used_dates,first_date, last_date,wherefrom,latitude,longitude,altitude,"
    "torrent_file_list,source_file,artifacts_relation_source_file,extended_attributes_key_value,"
    "extended_attributes_value_for_search,source_count_name,os_scheme_display) values (?,?,?,?,?,?,?,?,?,?,?,?,  "
    "?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?)";

const QLatin1String separator(";++::++;");
const QLatin1String users_folder("/Users/");
const QLatin1String attachments_subfolder("Attachments/"); // of the folder that holds "Messages"

// A row of messages. The columns that only the later index fills are null for the earlier one.
struct message_row
{
    explicit message_row(source_query &row)
        : system_user(row.text("system_user")), row_id(row.text("INT")), message_id(row.text("message_id")),
          from(row.text("from_str")), to(row.text("to_str")), subject(row.text("subject")),
          attachment_names(row.text("attachment_filename")), emlx_file_name(row.text("emlx_file_name")),
          emlx_file_path(row.text("emlx_file_path")), cc(row.text("cc")), snippet(row.text("message")),
          date_sent(row.text("message_date_sent")), source_file(row.text("source_file")),
          artifacts_relation_source_file(row.text("artifacts_relation_source_file"))
    {
    }

    QString system_user;
    QString row_id;
    QString message_id;
    QString from;
    QString to;
    QString subject;
    QString attachment_names; // joined by "; "
    QString emlx_file_name;
    QString emlx_file_path; // relative to the source root
    QString cc;
    QString snippet;
    QString date_sent;
    QString source_file;
    QString artifacts_relation_source_file;

    // The folder that holds the mail file's folder "Messages". Empty without a mail file.
    QString store_folder() const { return QString(emlx_file_path).remove(QLatin1String("Messages/") + emlx_file_name); }
    // The number of the message, which its attachments' folder bears as well.
    QString number() const { return emlx_file_name.left(emlx_file_name.indexOf(QLatin1Char('.'))); }
};

// Two paths in one column. An empty one leaves no separator.
QString joined_paths(const QString &first, const QString &second)
{
    QString paths = first + separator + second;
    if (paths.startsWith(separator)) {
        paths.remove(0, separator.size());
    }
    if (paths.endsWith(separator)) {
        paths.chop(separator.size());
    }
    return paths;
}

// Hands on each attachment name of each message among the rows. Out: false when the extraction was cancelled.
template <typename operation>
bool for_each_attachment(source_query &messages, const row_range &rows, const std::atomic<bool> &cancel_flag,
                         operation take)
{
    while (messages.next()) {
        if (cancel_flag) {
            return false;
        }
        if (!rows.contains(messages.text("INT").toLongLong())) {
            continue;
        }
        const message_row message(messages);
        const QStringList names = message.attachment_names.split(QLatin1Char(';'));
        for (const QString &name : names) { // all but the first with a blank in front
            if (cancel_flag) {
                return false;
            }
            take(message, name);
        }
    }
    return true;
}

// A file that is not there has no bytes.
QString size_in_bytes(const QString &file, const macos_file_facts &facts)
{
    return QString::number(facts.is_there ? QFileInfo(file).size() : 0);
}

void append_message_columns(row_values &row, const message_row &message)
{
    row.insert(row.end(), {
                              {"from_str", message.from},
                              {"to_str", message.to},
                              {"cc", message.cc},
                              {"snippet", message.snippet},
                              {"subject", message.subject},
                          });
}

// In: the name as it stands in the message, the path of the file and the same as rows show it, both empty when it was
// not found.
void append_file_columns(row_values &row, const QString &name, const QString &file, const QString &shown_file,
                         const QString &file_exist, const QString &file_size)
{
    const QString suffix = plugin_static_function::mining_suffix(file);
    row.insert(row.end(),
               {
                   {"file_name", name},
                   {"file_path", shown_file},
                   {"preview_file_path", shown_file},
                   {"export_file_paths", shown_file},
                   {"file_exist", file_exist},
                   {"file_size", file_size},
                   {"suffix", suffix.trimmed().isEmpty() ? plugin_static_function::mining_suffix(name) : suffix},
               });
}

} // namespace

QString mail_macos::sub_extract_attachment_file_path(attachment_finder &files, const QString &name,
                                                     const QString &folder) const
{
    static constexpr operation_log log{"QString mail_macos::sub_extract_attachment_file_path(QString, QString)"};
    log("Starts");
    if (folder.isEmpty()) {
        return QString();
    }
    const QString file = files.find(name, folder);
    if (!cancel_extraction_bool) {
        log("End");
    }
    return file;
}

mail_macos::located_attachment mail_macos::locate_attachment(attachment_finder &files, const QString &name,
                                                             const QString &attachments_folder,
                                                             const QString &message_folder, const QString &user) const
{
    located_attachment found;
    found.file = plugin_static_function::get_complete_file_path(
        sub_extract_attachment_file_path(files, name.trimmed(), message_folder), user, source_type_internal_QString);
    found.shown_file = plugin_static_function::get_relative_file_path(behind_source_root(found.file.trimmed()), user,
                                                                      source_type_internal_QString);
    found.shown_folder = plugin_static_function::get_final_artifact_source_file(
        behind_source_root(attachments_folder.trimmed()), user, source_type_internal_QString);
    found.facts = files.facts_of(found.file, [&] { return facts_of(found.file); });
    return found;
}

void mail_macos::extract_allattachments_details_11_12()
{
    static constexpr operation_log log{"void mail_macos::extract_allattachments_details_11_12()"};
    log("starts");
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    const QByteArray statement = select_messages_of_later_index + QByteArray(1, '\'') +
                                 plugin_static_function::get_source_count_name().toUtf8() + '\'';
    source_query messages{destination, log, statement.constData(), select_failure};
    if (!messages.execute()) {
        return;
    }
    row_writer rows{*this, destination, log, insert_attachment_of_later_index, insert_failure};
    attachment_finder files{source, source_root_path_QString, cancel_extraction_bool};
    const row_range rows_in_hand = message_rows_of_index.value(current_index_v3_to_v9_QStringList.value(0));
    const auto insert = [&](const message_row &message, const QString &name) {
        const QString &user = message.system_user;
        const QString store_folder = message.store_folder();
        const QString folder = store_folder.isEmpty() ? QString() : store_folder + attachments_subfolder;
        const QString message_folder = folder.isEmpty() ? QString() : folder + message.number();
        const located_attachment found = locate_attachment(files, name, folder, message_folder, user);
        if (cancel_extraction_bool) { // the search may have been broken off
            return;
        }
        QString relation = found.shown_folder.artifacts_relation_source_file;
        if (!relation.isEmpty() && !relation.startsWith(users_folder)) {
            relation.prepend(users_folder + user);
        }
        row_values row{
            {"bookmark", QStringLiteral("0")},
            {"system_user", user},
            {"message_id", message.message_id},
            {"message_date_sent", message.date_sent},
        };
        append_message_columns(row, message);
        append_file_columns(row, name, found.file, found.shown_file, found.facts.file_exist(), found.facts.file_size);
        append_metadata_columns(row, found.facts, used_date_bounds::without);
        row.push_back(
            {"source_file", joined_paths(found.shown_folder.source_file, behind_source_root(message.source_file))});
        row.push_back({"artifacts_relation_source_file",
                       joined_paths(relation, behind_source_root(message.artifacts_relation_source_file))});
        append_closing_columns(row, found.facts);
        rows.insert(row);
    };
    if (!for_each_attachment(messages, rows_in_hand, cancel_extraction_bool, insert)) {
        return;
    }
    destination.finish();
    log("ends");
}

void mail_macos::extract_allattachments_details()
{
    static constexpr operation_log log{"void mail_macos::extract_allattachments_details()"};
    log("starts");
    result_session destination{log, destination_db_path_QString};
    if (!destination.open(destination_open_failure)) {
        return;
    }
    source_query messages{destination, log, select_messages_of_earlier_index, select_failure};
    if (!messages.execute({plugin_static_function::get_source_count_name()})) {
        return;
    }
    row_writer rows{*this, destination, log, insert_attachment_of_earlier_index, insert_failure};
    attachment_finder files{source, source_root_path_QString, cancel_extraction_bool};
    const row_range rows_in_hand = message_rows_of_index.value(current_index_v2_QStringList.value(0));
    const auto insert = [&](const message_row &message, const QString &name) {
        const QString &user = message.system_user;
        const QString folder = message.store_folder() + attachments_subfolder; // without a mail file too
        const located_attachment found =
            locate_attachment(files, name, folder, folder + message.number() + QLatin1Char('/'), user);
        if (cancel_extraction_bool) { // the search may have been broken off
            return;
        }
        QString relation = found.shown_folder.artifacts_relation_source_file;
        if (!relation.isEmpty()) {
            relation.prepend(users_folder + user);
        }
        row_values row{
            {"bookmark", QStringLiteral("0")},
            {"system_user", user},
            {"relationtableint", message.row_id},
            {"message_id", message.message_id},
        };
        append_message_columns(row, message);
        append_file_columns(row, name, found.file, found.shown_file, found.facts.file_exist(),
                            found.file.isEmpty() ? QString() : size_in_bytes(found.file, found.facts));
        append_metadata_columns(row, found.facts, used_date_bounds::with);
        row.push_back({"source_file", found.shown_folder.source_file});
        row.push_back({"artifacts_relation_source_file", relation});
        append_closing_columns(row, found.facts);
        rows.insert(row);
    };
    if (!for_each_attachment(messages, rows_in_hand, cancel_extraction_bool, insert)) {
        return;
    }
    destination.finish();
    log("ends");
}
