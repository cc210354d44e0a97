/// The floors of the works on a macOS volume: the rows that the plug-in makes of the store of one user.
#pragma once

#include "bench/stopwatch.h"

#include <QString>

namespace bench {

/// The user whose store the evidence of both works holds.
constexpr const char *macos_user = "anna";

/// The columns of "messages" that are filled alike. Not among them: bcc and reply_to, whose values are the plug-in's
/// own rewriting of the header lines; the floor stores the lines.
constexpr const char *macos_message_columns =
    "bookmark,system_user,message_id,from_str,comment,subject,message_date_sent,message_date_received,"
    "emlx_file_date_created,message_last_view_date,mailbox_detail,mailbox_name,mailbox_account_name,mailbox_url,"
    "view_status,to_str,cc,emlx_file_size,message_type,conversation_id,message,attachment_filename,attachment_type,"
    "emlx_file_name,emlx_file_path,preview_file_path,export_file_paths,source_file,artifacts_relation_source_file,"
    "file_exist,date_added,extended_attributes_key_value,extended_attributes_value_for_search,source_count_name,"
    "os_scheme_display";

/// The columns of "all_attachments" that are filled.
constexpr const char *macos_attachment_columns =
    "bookmark,system_user,message_id,message_date_sent,from_str,to_str,cc,snippet,subject,file_name,file_path,"
    "preview_file_path,export_file_paths,file_exist,file_size,suffix,date_added,source_file,"
    "artifacts_relation_source_file,extended_attributes_key_value,extended_attributes_value_for_search,"
    "source_count_name,os_scheme_display";

/// Copies the index, lists the mail files, makes the rows of "messages" by one INSERT ... SELECT over the attached copy
/// and touches each mail file once on the way.
void run_macos_messages_floor(const QString &root, const QString &database_path, stopwatch &watch);

/// The same, then the rows of "all_attachments" made of them, each folder of attachments listed once and each file
/// found asked once; "messages" is emptied at the end.
void run_macos_attachments_floor(const QString &root, const QString &database_path, stopwatch &watch);

} // namespace bench
