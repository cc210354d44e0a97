// Table messages: one row a message of the mail index of V3 to V9, with the facts about its mail file.
#include "macos/mail_macos.h"
#include "macos/message_layout.h"

#include "services/plugin_helper_functions.h"

namespace {

constexpr failure_text destination_open_failure{"open destination DB-------FAILED------", "Error :- "};
constexpr failure_text source_open_failure{"to open source DB -------FAILED-------", "Error :- "};

// By generation; the first that executes is the index's own.
constexpr const char *select_messages =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_created,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,snippet,ROWID,flags,in_reply_to from messages";
constexpr const char *select_messages_without_in_reply_to =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_created,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,snippet,ROWID from messages";
constexpr const char *select_messages_without_date_created =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,snippet,ROWID from messages";
constexpr const char *select_messages_without_snippet =
    "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_last_viewed,mailbox,"
    "read,flagged,size,type,conversation_id,ROWID from messages";
constexpr failure_text select_messages_failure{"select from messages ---------FAILED-------", "Error :- ", ""};

constexpr const char *insert_message =
    "insert into messages(bookmark,system_user, message_id,reply_to,bcc,from_str,comment,subject,message_date_sent,"
    "message_date_received,emlx_file_date_created,message_last_view_date,mailbox_detail,mailbox_name,"
    "mailbox_account_name,mailbox_url,view_status, to_str,cc,emlx_file_size,message_type,conversation_id,message,"
    "attachment_filename,attachment_type,emlx_file_name,emlx_file_path,preview_file_path,export_file_paths,source_file,"
    "artifacts_relation_source_file,file_exist,date_added,content_creation_date,content_modification_date,content_type,"
    "fs_content_change_date, fs_creation_date,fs_name,fs_node_count,last_used_date,used_dates,wherefrom,latitude,"
    "longitude,altitude,torrent_file_list,extended_attributes_key_value,extended_attributes_value_for_search,"
    "source_count_name, os_scheme_display) values (?,?,?,?,?,?,?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  "
    "?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?,  ?,?,?,?,?)";
constexpr failure_text insert_message_failure{"insert in messages---------FAILED--------", "Error :- ", "Query :- "};

} // namespace

message_index mail_macos::message_index_of(const QString &index) const
{
    const QString user = extract_user_name_from_plist(index);
    return {user, plugin_static_function::get_final_artifact_source_file(behind_source_root(index), user,
                                                                         source_type_internal_QString)};
}

row_values mail_macos::row_of_message_11_12(source_query &message, later_index_reader &index_reader,
                                            emlx_catalog &mail_files, const message_index &index) const
{
    const QString row_id = message.text("ROWID");
    const message_sender sender = message_sender_of(index_reader.sub_extract_sender_address(message.text("sender")));
    const QString last_viewed = message.text("date_last_viewed");
    const struct_emlx emlx = sub_extract_emlx_file_for_messages_11_12(row_id, mail_files);
    const struct_address_bcc_replyto addresses = get_cc_and_replytofield(emlx.file_path);
    const struct_mailbox_detail mailbox = index_reader.sub_extract_mailbox_detail_11(message.text("mailbox"));
    const QString attachment_names = index_reader.sub_extract_attachmented_filenames(row_id);
    const QString subject = index_reader.sub_extract_subject_text(message.text("subject"));
    const struct_recipients recipients = index_reader.sub_extract_receiver_address(row_id);

    const QString emlx_complete =
        plugin_static_function::get_complete_file_path(emlx.file_path, index.user, source_type_internal_QString);
    const macos_file_facts facts = facts_of(emlx_complete);
    // Only a mail file that has told something is a source of the row.
    const bool has_told_something = !addresses.reply_to.isEmpty() || !addresses.bcc.isEmpty();
    const QString emlx_relative = has_told_something ? behind_source_root(emlx_complete) : QString();
    const QString emlx_path =
        plugin_static_function::get_relative_file_path(emlx_relative, index.user, source_type_internal_QString);
    const artifact_source_file source_files =
        joined_source_files(index.source_file, plugin_static_function::get_final_artifact_source_file(
                                                   emlx_relative, index.user, source_type_internal_QString));
    row_values row{
        {"bookmark", QStringLiteral("0")},
        {"system_user", index.user},
        {"message_id", message.text("message_id")},
        {"reply_to", addresses.reply_to},
        {"bcc", addresses.bcc},
        {"from_str", sender.address},
        {"comment", sender.comment},
        {"subject", subject},
        {"message_date_sent", whole_seconds(message.text("date_sent"))},
        {"message_date_received", whole_seconds(message.text("date_received"))},
        {"emlx_file_date_created", whole_seconds(message.text("date_created"))},
        {"message_last_view_date", last_viewed.isEmpty() ? last_viewed : whole_seconds(last_viewed)},
        {"mailbox_detail", mailbox.mailbox_detail},
        {"mailbox_name", mailbox.mailbox_name},
        {"mailbox_account_name", mailbox.mailbox_account_name},
        {"mailbox_url", mailbox.mailbox_url},
        {"view_status", message.text("read") == QLatin1String("1") ? tr("Read") : tr("Unread")},
        {"to_str", recipients.to_str},
        {"cc", recipients.cc},
        {"emlx_file_size", facts.file_size},
        {"message_type", message.text("type")},
        {"conversation_id", message.text("conversation_id")},
        {"message", message_text_of(message.text("snippet"))},
        {"attachment_filename", attachment_names},
        {"attachment_type", QLatin1String("")},
        {"emlx_file_name", emlx.file_name},
        {"emlx_file_path", emlx_path},
        {"preview_file_path", emlx_path},
        {"export_file_paths", emlx_path},
        {"source_file", source_files.source_file},
        {"artifacts_relation_source_file", source_files.artifacts_relation_source_file},
        {"file_exist", facts.file_exist()},
    };
    append_metadata_columns(row, facts, used_date_bounds::without);
    append_closing_columns(row, facts);
    return row;
}

void mail_macos::extract_messages_11_12()
{
    static const message_layout layout{
        operation_log{"void mail_macos::extract_messages_11_12()"},
        destination_open_failure,
        source_open_failure,
        {select_messages, select_messages_without_in_reply_to, select_messages_without_date_created,
         select_messages_without_snippet},
        select_messages_failure,
        insert_message,
        insert_message_failure,
        &mail_macos::row_maker_11_12,
    };
    extract_messages_of(layout, current_index_v3_to_v9_QStringList);
}

mail_macos::row_maker mail_macos::row_maker_11_12(const message_index &index, source_session &index_session,
                                                  result_session &destination, emlx_catalog &mail_files) const
{
    const auto reader = std::make_shared<later_index_reader>(index_session, destination, cancel_extraction_bool);
    return [this, reader, &index, &mail_files](source_query &message) {
        return row_of_message_11_12(message, *reader, mail_files, index);
    };
}

void mail_macos::extract_messages_of(const message_layout &layout, const QStringList &indexes)
{
    layout.log("starts");
    if (indexes.isEmpty()) {
        return;
    }
    result_session destination{layout.log, destination_db_path_QString};
    if (!destination.open(layout.destination_open_failure)) {
        return;
    }
    row_writer rows{*this, destination, layout.log, layout.insert, layout.insert_failure, counted_message_rows()};
    emlx_catalog mail_files{destination, plugin_static_function::get_source_count_name()};
    for (const QString &index_path : indexes) {
        if (cancel_extraction_bool) {
            return;
        }
        const message_index index = message_index_of(index_path);
        const QString working_copy = plugin_helper_obj->get_adhoc_path_for_database(index_path);
        source_session index_session{layout.log, working_copy, cancel_extraction_bool};
        if (working_copy.isEmpty() || !index_session.open(layout.source_open_failure)) {
            continue;
        }
        const row_maker row_of = (this->*layout.maker)(index, index_session, destination, mail_files);
        source_query messages{index_session, layout.log, layout.selects, layout.select_failure};
        messages.execute();
        row_range &rows_of_index = message_rows_of_index[index_path] = row_range();
        while (messages.next()) {
            if (cancel_extraction_bool) {
                return;
            }
            if (rows.insert(row_of(messages))) {
                rows_of_index.extend_to(rows.last_row_id());
            }
        }
    }
    if (cancel_extraction_bool) {
        return;
    }
    destination.finish();
    layout.log("end");
}
