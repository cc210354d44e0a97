/// The floor of the work "ios-uid": the databases of a backup copied, one statement a table over the attached copies,
/// and on the way the two files of each metadata value, the property list and its XML.
#pragma once

#include "bench/stopwatch.h"
#include "bench/works.h"

namespace bench {

constexpr const char *ios_recents_columns =
    "bookmark,last_receiver_display_name,bundle_id,sender_address,original_source,mailed_timestamp,"
    "last_mailed_timestamp,record_hash,receiver_count,receiver_details,subject,text,event_timestamp,source_file,"
    "artifacts_relation_source_file,source_count_name,os_scheme_display";

constexpr const char *ios_contacts_columns =
    "bookmark,recent_id,display_name,kind,address,first_name,last_name,middle_name,nickname,organization,image_URI,"
    "jobtitle,creation_date,modification_date,prefix,suffix,note,birthday,alternate_birthday,first_phonetic,"
    "middle_phonetic,last_phonetic,phone_no,email,source_file,artifacts_relation_source_file,source_count_name,"
    "os_scheme_display";

constexpr std::array<compared_table, 4> ios_uid_tables = {{{"contacts", ios_contacts_columns, "INT"}}};

void run_ios_uid_floor(const QString &root, const QString &database_path, stopwatch &watch);

} // namespace bench
