// Table preferences: fourteen rows of the mail application's preferences and of the account that it sends from.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "ios/account_look_up.h"
#include "ios/mail_ios_uid.h"
#include "services/property_list.h"

namespace {

constexpr failure_text destination_failure{"[xcode_extract_mail_preferences] Destination Db opening ---FAILED--- ", ""};
constexpr failure_text list_failure{"[xcode_extract_mail_preferences] m_plist open  ---FAILED--- ", nullptr, nullptr,
                                    false};
constexpr account_look_up_failures look_up_failures{
    {"[xcode_extract_mail_preferences] accounts open ---FAILED--- ", "", nullptr, false, true},
    {"[xcode_extract_mail_preferences]query_select ---FAILED--- ", "", ""},
    {"[xcode_extract_mail_preferences]query_select account ---FAILED--- ", "", "", false}};

constexpr operation_log insert_log{"void mail_ios_uid::insert_preferences_to_database(QString, QString, QSqlDatabase)"};
constexpr const char *insert_preference =
    "insert into preferences(bookmark,key,value,source_file, artifacts_relation_source_file,source_count_name, "
    "os_scheme_display) values(0,?,?,?,?,?,?)";
constexpr failure_text insert_failure{nullptr, "[insert_preferences_to_database]Insertion Query -----FAILED-----", ""};

// The number under a key, cut towards zero, in decimal; a key without a number counts as 0.
QString number_of(const property_list_value &list, const char *key)
{
    const QString number = plugin_static_function::get_nsnumber_values(QString::fromLatin1(key), list);
    return number.isEmpty() ? QStringLiteral("0") : number;
}

QString flag_of(const property_list_value &list, const char *key)
{
    const QString number = number_of(list, key);
    if (number == QLatin1String("0")) {
        return QStringLiteral("NO");
    }
    return number == QLatin1String("1") ? QStringLiteral("YES") : QStringLiteral("");
}

QString instant_of(const property_list_value &list, const char *key)
{
    return plugin_static_function::convert_timestamp_to_human_readable_in_UTC(
        plugin_static_function::convert_apple_time_to_epoch(number_of(list, key)));
}

QString sending_account_of(const property_list_value &list, const char *key)
{
    return list.object_for_key(key).text();
}

// The rows in their order: the value is read from the list by its key, or is one of the account's.
struct preference
{
    const char *label;
    const char *key;
    QString (*value_of)(const property_list_value &list, const char *key);
    QString account_record::*account_value;
};
// clang-format off
constexpr preference preferences[] = {
    {"DefaultSendingAccount",                             "DefaultSendingAccount",                     sending_account_of, nullptr},
    {"AppTimeInterval (UTC)",                             "AppTimeInterval",                           instant_of,         nullptr},
    {"Timestamp (UTC)",                                   nullptr,                                     nullptr,            &account_record::date_added},
    {"Account Description",                               nullptr,                                     nullptr,            &account_record::description},
    {"Owner Bundle ID",                                   nullptr,                                     nullptr,            &account_record::owner_bundle_id},
    {"Username",                                          nullptr,                                     nullptr,            &account_record::user_name},
    {"Show Message Delete Confirmation",                  "ShowMessageDeleteConfirmation",             flag_of,            nullptr},
    {"MobileMailVersion",                                 "MobileMailVersion",                         number_of,          nullptr},
    {"Show ToCC Indicators",                              "ShowToCCIndicators",                        flag_of,            nullptr},
    {"Unread Mailbox Controller Badge Count",             "UnreadMailboxControllerBadgeCount",         number_of,          nullptr},
    {"Has Attachments Mail box Controller Badge Count",   "HasAttachmentsMailboxControllerBadgeCount", number_of,          nullptr},
    {"Includes Me Mail box Controller Badge Count",       "IncludesMeMailboxControllerBadgeCount",     number_of,          nullptr},
    {"Flagged Mail box Controller Badge Count",           "FlaggedMailboxControllerBadgeCount",        number_of,          nullptr},
    {"VIP Mail box Controller Badge Count",               "VIPMailboxControllerBadgeCount",            number_of,          nullptr},
};
// clang-format on

} // namespace

void mail_ios_uid::xcode_extract_mail_preferences()
{
    static constexpr operation_log log{"void mail_ios_uid::xcode_extract_mail_preferences()"};
    log("[xcode_extract_mail_preferences] Starts");
    result_session destination{log, destination_db_path_QString};
    property_list list;
    if (!open_list(list, mobilemail_plist_file_QString, destination, {log, destination_failure, list_failure})) {
        return;
    }
    const QString copy = accounts_working_copy();
    if (copy.isEmpty()) {
        return;
    }
    account_look_up accounts{log, copy, accounts_file_QString, look_up_failures, cancel_extraction_bool};
    if (!accounts.open()) {
        return;
    }
    std::optional<account_record> account =
        accounts.account_of(list.root().object_for_key("DefaultSendingAccount").text());
    if (!account) {
        return;
    }
    account->date_added = plugin_static_function::convert_timestamp_to_human_readable_in_UTC(account->date_added);

    row_writer rows{*this, destination, insert_log, insert_preference, insert_failure};
    for (const preference &row : preferences) {
        insert_preferences_to_database(
            QString::fromLatin1(row.label),
            row.account_value ? *account.*row.account_value : row.value_of(list.root(), row.key), rows);
    }
    destination.finish();
    log("[xcode_extract_mail_preferences] Ends");
}

void mail_ios_uid::insert_preferences_to_database(const QString &key, const QString &value, row_writer &rows)
{
    const row_paths paths = paths_of_list_and_accounts();
    rows.insert({
        {"key", key},
        {"value", value},
        {"source_file", paths.source_file},
        {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
        {"source_count_name", plugin_static_function::get_source_count_name()},
        {"os_scheme_display", os_scheme_display_QString},
    });
}
