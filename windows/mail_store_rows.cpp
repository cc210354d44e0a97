#include "windows/mail_store_rows.h"

namespace {

// A commit waits for the disk; one a record would take most of the time of a run.
constexpr int records_per_commit = 1000;

constexpr failure_text open_failure{"[container_func] Destination Db opening FAILED ", nullptr, nullptr, false};
constexpr const char *line_behind_open_failure = "[container_func] destination_db.lastError().text()";

constexpr const char *insert_attachment =
    "insert into all_attachments(bookmark,system_user,domain_user,bodyfile,message_id,contentlocation,content_type,"
    "file_name,file_size,suffix,file_exist,file_path,preview_file_path,export_file_paths,content_creation_date,"
    "content_modification_date,last_used_date,source_file,source_count_name,os_scheme_display) "
    "values(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_attachment_failure{nullptr,
                                                 "[container_func]  Insert query ---FAILED---(all_attachments)", ""};

constexpr const char *insert_conversation =
    "insert into mailconversation (bookmark,system_user,domain_user,latestsender,latestsenderemail,latestsendername,"
    "normalizedsubject,totalmessegecount,importance,source_file,source_count_name,os_scheme_display) "
    "values(0,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_conversation_failure{
    nullptr, "[container_func] Insert query ---FAILED---()Mail Converstaion)", ""};

constexpr const char *insert_message =
    "insert into messages(bookmark,system_user,domain_user,conversation_id,emlx_file_name,file_exist,emlx_file_size,"
    "emlx_file_path,preview_file_path,export_file_paths,content_creation_date,content_modification_date,from_str,"
    "fromemail,fromname,gmailmapuniquemessegeid,imapuid,lastmodifiedbodytype,mimemessegeid,previewtext,reply_to,"
    "subject,to_str,last_used_date,source_file,source_count_name,os_scheme_display) "
    "values(0,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_message_failure{nullptr, "[container_func] Insert query ---FAILED--- messeges)", ""};

constexpr operation_log mail_file_log{"int mail_winos::extract_eml_info(QString, QString)"};
constexpr const char *insert_mail_file =
    "insert into mail_data(bookmark,system_user,domain_user,from_mail,to_mail,subject,importance,inside_text,date,"
    "file_name,source_file,source_count_name,os_scheme_display)values(0,?,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_mail_file_failure{
    nullptr, "[extract_eml_info]In sert query ---FAILED---()Mail inside_eml table)", ""};

} // namespace

mail_store_row_writers::mail_store_row_writers(extractor_frame &frame, const operation_log &operation,
                                               const QString &database_path)
    : log(operation), destination(operation, database_path),
      attachments(frame, destination, operation, insert_attachment, insert_attachment_failure, row_count::none),
      conversations(frame, destination, operation, insert_conversation, insert_conversation_failure, row_count::none),
      messages(frame, destination, operation, insert_message, insert_message_failure, row_count::none),
      mail_files(frame, destination, mail_file_log, insert_mail_file, insert_mail_file_failure, row_count::none)
{
}

bool mail_store_row_writers::open()
{
    if (!is_open) {
        is_open = destination.open(open_failure);
        if (!is_open) {
            log(line_behind_open_failure);
        }
    }
    return is_open;
}

void mail_store_row_writers::keep()
{
    if (++records_since_commit == records_per_commit) {
        destination.keep();
        records_since_commit = 0;
    }
}
