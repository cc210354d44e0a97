// Table messages: one row a message of the mail index of V2, with the facts about its mail file.
#include "macos/mail_macos.h"
#include "macos/message_layout.h"

namespace {

constexpr failure_text destination_open_failure{"open destination DB-------FAILED------", "Error :- ", nullptr, false,
                                                true};
constexpr failure_text source_open_failure{"Open source DB -------FAILED-------", "Error :- "};

constexpr const char *select_messages =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_created,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,snippet,ROWID,in_reply_to from messages";
constexpr const char *select_messages_without_in_reply_to =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_created,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,snippet,ROWID from messages";
constexpr failure_text select_messages_failure{"select from messages ---------FAILED-------", "Error :- ", ""};

// The positions of the columns in both statements.
enum column
{
    column_message_id,
    column_sender,
    column_subject_prefix,
    column_subject,
    column_date_sent,
    column_date_received,
    column_date_created,
    column_date_last_viewed,
    column_mailbox,
    column_read,
    column_flagged,
    column_size,
    column_type,
    column_conversation_id,
    column_snippet,
    column_row_id,
};

constexpr const char *insert_message =
    "insert into messages(bookmark,system_user,row_id, message_id,reply_to,from_str,comment,subject_prefix,subject,"
    "message_date_sent,message_date_received,emlx_file_date_created,message_last_view_date,mailbox_url,view_status,"
    "flagged,to_str,cc,emlx_file_size,message_type,conversation_id,message,attachment_filename,attachment_type,"
    "emlx_file_name,emlx_file_path,preview_file_path,export_file_paths,source_file,artifacts_relation_source_file,"
    "file_exist,date_added,content_creation_date,content_modification_date,content_type,fs_content_change_date, "
    "fs_creation_date,fs_name,fs_node_count,last_used_date,used_dates,first_date, last_date,wherefrom,latitude,"
    "longitude,altitude,torrent_file_list,extended_attributes_key_value,extended_attributes_value_for_search,"
    "source_count_name,os_scheme_display) values (?,?,?,?,?,?,?,?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  "
    "?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?)";
constexpr failure_text insert_message_failure{"insert in messages---------FAILED--------", "Error :- ",
                                              "Executed Query :- "};

} // namespace

row_values mail_macos::row_of_message(source_query &message, earlier_index_reader &index_reader,
                                      emlx_catalog &mail_files, const message_index &index) const
{
    const QString row_id = message.text_at(column_row_id);
    const message_sender sender =
        message_sender_of(index_reader.sub_extract_sender_address(message.text_at(column_sender)));
    const struct_emlx emlx = sub_extract_emlx_file_for_messages(row_id, mail_files);
    const QString emlx_complete =
        plugin_static_function::get_complete_file_path(emlx.file_path, index.user, source_type_internal_QString);
    // The list of mail files of V2 holds paths without the source root.
    const QString emlx_on_disk = emlx_complete.isEmpty() ? QString() : source_root_path_QString + emlx_complete.mid(1);
    const macos_file_facts facts = facts_of(emlx_on_disk);
    const QString emlx_path = plugin_static_function::get_relative_file_path(behind_source_root(emlx_complete),
                                                                             index.user, source_type_internal_QString);
    const artifact_source_file source_files = joined_source_files(
        index.source_file, plugin_static_function::get_final_artifact_source_file(
                               behind_source_root(emlx.source_file), index.user, source_type_internal_QString));
    const QString subject = index_reader.sub_extract_subject_text(message.text_at(column_subject));
    const QString mailbox_url = index_reader.sub_extract_mailbox_url(message.text_at(column_mailbox));
    const struct_recipients recipients = index_reader.sub_extract_receiver_address(row_id);
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", index.user},
        {"row_id", row_id},
        {"message_id", message.text_at(column_message_id)},
        {"reply_to", message.text("in_reply_to")},
        {"from_str", sender.address},
        {"comment", sender.comment},
        {"subject_prefix", message.text_at(column_subject_prefix)},
        {"subject", subject},
        {"message_date_sent", whole_seconds(message.text_at(column_date_sent))},
        {"message_date_received", whole_seconds(message.text_at(column_date_received))},
        {"emlx_file_date_created", whole_seconds(message.text_at(column_date_created))},
        {"message_last_view_date", whole_seconds(message.text_at(column_date_last_viewed))},
        {"mailbox_url", mailbox_url},
        {"view_status", message.text_at(column_read) == QLatin1String("1") ? tr("Read") : tr("Unread")},
        {"flagged", message.text_at(column_flagged)},
        {"to_str", recipients.to_str},
        {"cc", recipients.cc},
        {"emlx_file_size", facts.file_size},
        {"message_type", message.text_at(column_type)},
        {"conversation_id", message.text_at(column_conversation_id)},
        {"message", message_text_of(message.text_at(column_snippet))},
        {"attachment_filename", index_reader.sub_extract_attachmented_filenames(row_id)},
        {"attachment_type", QLatin1String("")},
        {"emlx_file_name", emlx.file_name},
        {"emlx_file_path", emlx_path},
        {"preview_file_path", emlx_path},
        {"export_file_paths", emlx_path},
        {"source_file", source_files.source_file},
        {"artifacts_relation_source_file", source_files.artifacts_relation_source_file},
        {"file_exist", facts.file_exist()},
    };
    append_metadata_columns(row, facts, used_date_bounds::with);
    append_closing_columns(row, facts);
    return row;
}

void mail_macos::extract_messages()
{
    static const message_layout layout{
        operation_log{"void mail_macos::extract_messages()"},
        destination_open_failure,
        source_open_failure,
        {select_messages, select_messages_without_in_reply_to},
        select_messages_failure,
        insert_message,
        insert_message_failure,
        &mail_macos::row_maker_of_v2,
    };
    extract_messages_of(layout, current_index_v2_QStringList);
}

mail_macos::row_maker mail_macos::row_maker_of_v2(const message_index &index, source_session &index_session,
                                                  result_session &, emlx_catalog &mail_files) const
{
    const auto reader = std::make_shared<earlier_index_reader>(index_session, cancel_extraction_bool);
    return [this, reader, &index, &mail_files](source_query &message) {
        return row_of_message(message, *reader, mail_files, index);
    };
}
