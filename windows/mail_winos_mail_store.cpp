// Tables all_attachments, mailconversation and messages: one row a record of MailAttachment, MailConversation and
// MailMessage in the databases that the mail application keeps in its package folder.
#include "core/result_session.h"
#include "windows/ese_file.h"
#include "windows/mail_store_rows.h"
#include "windows/mail_store_table.h"
#include "windows/mail_winos.h"
#include "windows/profile_files.h"

#include <QFileInfo>
#include <QScopeGuard>

namespace {

constexpr operation_log parse_log{"void mail_winos::edb_data_parse(int)"};
constexpr operation_log container_log{"void mail_winos::container_func(libesedb_table_t *, libesedb_error_t *, int)"};

constexpr const char *table_names[] = {"MailAttachment", "MailConversation", "MailMessage"};

bool is_mail_store_database(const QString &file)
{
    return file.contains(QLatin1String("DBStore")) &&
           plugin_static_function::mining_suffix(file) == QLatin1String("edb");
}

} // namespace

void mail_winos::edb_data_parse(int table_index)
{
    parse_log("[edb_data_parse]  ---starts---");
    if (local_state_folder_QStringList.isEmpty()) {
        return;
    }
    for (const QString &folder : qAsConst(local_state_folder_QStringList)) {
        current_local_state_folder_QString = folder;
        profile_files files(source, folder, cancel_extraction_bool);
        while (files.next()) {
            if (is_mail_store_database(files.path()) && !parse_mail_store_database(files.path(), table_index)) {
                return;
            }
        }
        if (cancel_extraction_bool) {
            return;
        }
    }
    parse_log("[edb_data_parse]  ---ends--- ");
}

bool mail_winos::parse_mail_store_database(const QString &file, int table_index)
{
    current_edb_file_QString = file;
    libesedb_error_t *error = nullptr;
    const auto opened = ese_file_handle.open(file, error);
    if (opened == ese_file::opening::no_handle) {
        parse_log("[edb_data_parse] Unable to initialize file.\n");
        return false;
    }
    if (opened == ese_file::opening::failed) {
        parse_log("[working_func] file open ---FAILED---", file);
        return false;
    }
    const QByteArray name(table_names[table_index]);
    libesedb_table_t *found = nullptr;
    const int result = settled(
        libesedb_file_get_table_by_utf8_name(ese_file_handle.handle(), reinterpret_cast<const uint8_t *>(name.data()),
                                             static_cast<std::size_t>(name.size()), &found, &error),
        error);
    ese_table_handle table(found);
    if (result == -1) {
        parse_log("[edb_data_parse]unable to retrieve table name: \n");
        table.reset();
        ese_file_handle.close();
        return false;
    }
    parse_log("[edb_data_parse] table found: ", QString::fromLatin1(name));
    container_func(table.get(), error, table_index);
    table.reset();
    parse_log("[edb_data_parse]-------END OF A TABLE------");
    ese_file_handle.close();
    return true;
}

void mail_winos::container_func(libesedb_table_t *table, libesedb_error_t *, int table_index)
{
    if (cancel_extraction_bool) {
        return;
    }
    mail_store_table records(ese_file_handle, table, QString::fromLatin1(table_names[table_index]), container_log,
                             cancel_extraction_bool);
    const row_source shared = row_source_of(current_edb_file_QString, current_edb_file_QString);
    mail_store_rows = std::make_unique<mail_store_row_writers>(*this, container_log, destination_db_path_QString);
    const auto close_database = qScopeGuard([this] { mail_store_rows.reset(); });
    for (int position = 0; position < records.record_count() && !cancel_extraction_bool; ++position) {
        current_record = mail_store_record(); // no value of another record may reach a row
        const mail_store_table::outcome outcome = records.read(position, current_record);
        if (outcome == mail_store_table::outcome::cancelled) {
            return;
        }
        if (outcome == mail_store_table::outcome::not_fetched) {
            continue;
        }
        if (!mail_store_rows->open()) {
            return;
        }
        write_mail_store_row(table_index, shared);
        mail_store_rows->keep();
    }
}

void mail_winos::write_mail_store_row(int table_index, const row_source &shared)
{
    switch (table_index) {
    case 0:
        mail_store_rows->attachments.insert(row_of_store_attachment(shared));
        break;
    case 1:
        if (!current_record.LatestSenderEmail_QString.isEmpty()) {
            mail_store_rows->conversations.insert(row_of_conversation(shared));
        }
        break;
    default:
        eml_file_path_QString = path_in_store(current_record.EmlFile_QString);
        if (mail_store_rows->messages.insert(row_of_store_message(shared))) {
            extract_eml_info(eml_file_path_QString, current_record.PreviewText_QString);
        }
    }
}

QString mail_winos::path_in_store(const QString &stored_path) const
{
    return current_local_state_folder_QString + QString(stored_path).replace(QLatin1Char('\\'), QLatin1Char('/'));
}

mail_winos::stored_file mail_winos::stored_file_at(const QString &path, const QString &complete_path) const
{
    stored_file file;
    if (source.contains(path)) {
        file.file_exist = QStringLiteral("YES");
        file.size = QString::number(QFileInfo(path).size());
        file.times = plugin_static_function::get_posix_timestamp(complete_path.mid(source_root_path_QString.size()),
                                                                 source_root_path_QString);
    }
    return file;
}

row_values mail_winos::row_of_store_attachment(const row_source &shared)
{
    const mail_store_record &record = current_record;
    attachment_file_path_QString = path_in_store(record.BodyFile_QString);
    const QString &name = record.FileName_QString;
    const QString suffix =
        name.contains(QLatin1Char('.')) ? name.mid(name.lastIndexOf(QLatin1Char('.')) + 1) : QStringLiteral("");
    const QString complete_path = plugin_static_function::get_complete_file_path(
        attachment_file_path_QString, shared.system_user, source_type_internal_QString);
    const stored_file file = stored_file_at(complete_path, complete_path);
    const QString shown_path = plugin_static_function::get_relative_file_path(
        behind_source_root(complete_path), shared.system_user, source_type_internal_QString);
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"bodyfile", record.BodyFile_QString},
        {"message_id", record.ContentId_QString},
        {"contentlocation", record.ContentLocation_QString},
        {"content_type", record.ContentType_QString},
        {"file_name", name},
        {"file_size", file.size},
        {"suffix", suffix},
        {"file_exist", file.file_exist},
        {"file_path", shown_path},
        {"preview_file_path", shown_path},
        {"export_file_paths", shown_path},
        {"content_creation_date", QString::number(file.times.creation_timestamp)},
        {"content_modification_date", QString::number(file.times.modification_timestamp)},
        {"last_used_date", QString::number(file.times.last_access_timestamp)},
    };
    append_source_columns(row, shared);
    return row;
}

row_values mail_winos::row_of_conversation(const row_source &shared) const
{
    const mail_store_record &record = current_record;
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"latestsender", record.LatestSender_QString},
        {"latestsenderemail", record.LatestSenderEmail_QString},
        {"latestsendername", record.LatestSenderName_QString},
        {"normalizedsubject", record.NormalizedSubject_QString},
        {"totalmessegecount", record.TotalMessageCount_QString},
        {"importance", record.Importance_QString},
    };
    append_source_columns(row, shared);
    return row;
}

row_values mail_winos::row_of_store_message(const row_source &shared) const
{
    const mail_store_record &record = current_record;
    const stored_file file = stored_file_at(
        eml_file_path_QString, plugin_static_function::get_complete_file_path(eml_file_path_QString, shared.system_user,
                                                                              source_type_internal_QString));
    const QString shown_path = plugin_static_function::get_relative_file_path(eml_file_path_QString, shared.system_user,
                                                                              source_type_internal_QString);
    row_values row{
        {"system_user", shared.system_user},
        {"domain_user", shared.domain_user},
        {"conversation_id", record.ConversationServerId_QString},
        {"emlx_file_name", QFileInfo(eml_file_path_QString).fileName()},
        {"file_exist", file.file_exist},
        {"emlx_file_size", file.size},
        {"emlx_file_path", shown_path},
        {"preview_file_path", shown_path},
        {"export_file_paths", shown_path},
        {"content_creation_date", QString::number(file.times.creation_timestamp)},
        {"content_modification_date", QString::number(file.times.modification_timestamp)},
        {"from_str", record.From_QString},
        {"fromemail", record.FromEmail_QString},
        {"fromname", record.FromName_QString},
        {"gmailmapuniquemessegeid", record.GmailImapUniqueMessageId_QString},
        {"imapuid", record.ImapUID_QString},
        {"lastmodifiedbodytype", record.LastModifiedBodyType_QString},
        {"mimemessegeid", record.MimeMessageId_QString},
        {"previewtext", record.PreviewText_QString},
        {"reply_to", record.ReplyTo_QString},
        {"subject", record.Subject_QString},
        {"to_str", record.To_QString},
        {"last_used_date", QString::number(file.times.last_access_timestamp)},
    };
    append_source_columns(row, shared);
    return row;
}
