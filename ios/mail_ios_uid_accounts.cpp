// Table accounts: one row an account that the mail application lists among its preferences, with what the account
// database tells of it.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "ios/account_look_up.h"
#include "ios/mail_ios_uid.h"
#include "services/plugin_helper_functions.h"
#include "services/property_list.h"

namespace {

constexpr failure_text destination_failure{"[xcode_extract_mail_accounts] Destination Db opening ---FAILED--- ", "",
                                           nullptr, false};
constexpr failure_text list_failure{"[xcode_extract_mail_accounts] m_plist open  ---FAILED--- ", nullptr, nullptr,
                                    false};
constexpr account_look_up_failures look_up_failures{
    {"[xcode_extract_mail_accounts] accounts open ---FAILED--- ", "", nullptr, false, true},
    {"[extract_notes]query_select ---FAILED--- ", "", ""},
    {"[xcode_extract_mail_accounts]query_select account ---FAILED--- ", "", "", false}};

constexpr const char *insert_account =
    "insert into accounts(bookmark,display_name,unique_id,syncs_read_state,date_added,account_description,"
    "owner_bundle_id,user_name,source_file,artifacts_relation_source_file,source_count_name, os_scheme_display) "
    "values(0,?,?,?,?,?,?,?,?,?,?,?)";
constexpr failure_text insert_failure{"[xcode_extract_mail_accounts] Insertion Query ------FAILED-----", "", "", false};

} // namespace

QString mail_ios_uid::accounts_working_copy()
{
    if (accounts_copy_QString.isEmpty()) {
        accounts_copy_QString = plugin_helper_obj->get_adhoc_path_for_database(accounts_file_QString);
    }
    return accounts_copy_QString;
}

void mail_ios_uid::xcode_extract_mail_accounts()
{
    static constexpr operation_log log{"void mail_ios_uid::xcode_extract_mail_accounts()"};
    log("[xcode_extract_mail_accounts] Starts");
    result_session destination{log, destination_db_path_QString};
    property_list list;
    if (!open_list(list, mobilemail_plist_file_QString, destination, {log, destination_failure, list_failure})) {
        return;
    }
    const property_list_value entries = list.root().object_for_key("LastDataProviderSubsections");
    if (!entries.is_array()) {
        log("[xcode_extract_mail_accounts] LastDataProviderSubsections nil  ---FAILED--- ");
        return;
    }
    row_writer rows{*this, destination, log, insert_account, insert_failure};
    std::optional<account_look_up> accounts; // opened by the first entry that asks for it
    for (const property_list_value &entry : entries.elements()) {
        if (cancel_extraction_bool) {
            return;
        }
        if (!entry.is_dictionary()) {
            continue;
        }
        const QString syncs_read_state =
            plugin_static_function::get_nsnumber_values(QStringLiteral("syncsReadState"), entry);
        if (syncs_read_state.isEmpty()) {
            log("[xcode_extract_mail_accounts] stateRestore_var == nil, Continue");
            continue;
        }
        if (!accounts && !open_accounts(accounts, log)) {
            return;
        }
        const std::optional<account_record> account = accounts->account_of(entry.object_for_key("uniqueID").text());
        if (!account) {
            return;
        }
        rows.insert(row_of_account(entry, syncs_read_state == QLatin1String("1"), *account));
    }
    destination.finish();
    log("[xcode_extract_mail_accounts] Ends");
}

bool mail_ios_uid::open_accounts(std::optional<account_look_up> &accounts, const operation_log &log)
{
    const QString copy = accounts_working_copy();
    if (copy.isEmpty()) {
        return false;
    }
    accounts.emplace(log, copy, accounts_file_QString, look_up_failures, cancel_extraction_bool);
    return accounts->open();
}

row_values mail_ios_uid::row_of_account(const property_list_value &entry, bool syncs_read_state,
                                        const account_record &account) const
{
    const row_paths paths = paths_of_list_and_accounts();
    return {
        {"display_name", entry.object_for_key("name").text()},
        {"unique_id", entry.object_for_key("uniqueID").text()},
        {"syncs_read_state", syncs_read_state ? QStringLiteral("YES") : QStringLiteral("NO")},
        {"date_added", account.date_added},
        {"account_description", account.description},
        {"owner_bundle_id", account.owner_bundle_id},
        {"user_name", account.user_name},
        {"source_file", paths.source_file},
        {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
        {"source_count_name", plugin_static_function::get_source_count_name()},
        {"os_scheme_display", os_scheme_display_QString},
    };
}
