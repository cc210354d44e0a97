/// The floor of the work "macos-config": the property lists of a user read with libplist, the account database copied,
/// each signature file read, and as many rows written as the plug-in writes, with the texts as they are stored.
#pragma once

#include "bench/stopwatch.h"
#include "bench/works.h"

namespace bench {

/// The store whose lists the evidence holds.
constexpr int macos_configuration_generation = 6;

constexpr const char *macos_vip_columns =
    "bookmark,system_user,vip_name,address,unread_count,mailbox_uid,source_file,source_count_name,os_scheme_display";

/// The columns that take the stored text unchanged.
constexpr std::array<compared_table, 4> macos_configuration_tables = {{
    {"rules", "bookmark,system_user,rule_id,mark_as_read,source_file,source_count_name,os_scheme_display", "INT"},
    {"smart_mailboxes", "bookmark,system_user,mailbox_id,mailbox_name,source_file,source_count_name,os_scheme_display",
     "INT"},
    {"signature", "bookmark,system_user,signature_uid,signature_name,related_account_id,source_count_name", "INT"},
    {"accounts", "bookmark,system_user,account_identifier,account_description,user_name,source_count_name",
     "account_identifier"},
}};

void run_macos_configuration_floor(const QString &root, const QString &database_path, stopwatch &watch);

} // namespace bench
