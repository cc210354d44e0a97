/// The floor of the work "ios-uniform": the rows that the plug-in makes of the two mail indexes of an iOS file system,
/// by one INSERT ... SELECT over their copies, with each mail's folder listed once.
#pragma once

#include "bench/stopwatch.h"

#include <QString>

namespace bench {

/// The columns of "messages" that are filled.
constexpr const char *ios_uniform_columns =
    "bookmark,message_id,subject,from_str,sender_name,message,to_str,message_date_sent,message_date_received,"
    "message_last_view_date,mailbox_name,mailbox_url,view_status,flagged,conversation_id,row_id,emlx_file_name,"
    "emlx_file_path,source_file,source_count_name,os_scheme_display";

void run_ios_uniform_floor(const QString &root, const QString &database_path, stopwatch &watch);

} // namespace bench
