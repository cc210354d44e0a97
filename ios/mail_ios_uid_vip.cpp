// Table vip_contacts: one row a VIP of the mail application's preferences, and one row a VIP that the search daemon
// keeps among its own.
#include "core/joined_text.h"
#include "core/result_session.h"
#include "core/row_writer.h"
#include "ios/mail_ios_uid.h"
#include "services/property_list.h"

namespace {

// --- VIPs of the mail application ------------------------------------------------------------------------------------

constexpr failure_text senders_destination_failure{
    "[xcode_extract_mail_vip_senders] Destination Db opening ---FAILED--- ", "", nullptr, false};
constexpr failure_text senders_list_failure{"[xcode_extract_mail_vip_senders] m_plist open  ---FAILED--- ", nullptr,
                                            nullptr, false};
constexpr const char *insert_sender =
    "insert into vip_contacts(bookmark,vip_name,unique_id,account,source_file,artifacts_relation_source_file "
    ",source_count_name, os_scheme_display)values(0,?,?,?,?,?,?,?)";
constexpr failure_text insert_sender_failure{"[xcode_extract_mail_vip_senders] Insertion Query ------FAILED-----", "",
                                             "", false};

// --- VIPs of the search daemon ---------------------------------------------------------------------------------------

constexpr failure_text vips_destination_failure{" Destination Db opening ---FAILED--- ", "Error :- "};
constexpr failure_text vips_list_failure{" m_plist open  ---FAILED--- "};
constexpr const char *insert_vip =
    "insert into vip_contacts(bookmark,vip_name,unique_id,address,message_count,recent_interaction_date,source_file,"
    "artifacts_relation_source_file ,source_count_name, os_scheme_display)values(0,?,?,? ,?,?,?,? ,?,?)";
constexpr failure_text insert_vip_failure{"Insertion Query ------FAILED----- ", "Error :- ", "Query :- "};

constexpr const char *address_separator = ";++::++;";

QString addresses_of(const property_list_value &list, const operation_log &log)
{
    joined_text addresses{log};
    for (const property_list_value &address : list.elements()) {
        addresses.append(address.text(), QLatin1String(address_separator));
    }
    QString joined = QLatin1String("") + addresses.text();
    joined.chop(QLatin1String(address_separator).size());
    return joined;
}

QString count_of(const property_list_value &number)
{
    return number.is_number() ? QString::number(number.integer_value()) : QString();
}

QString seconds_of(const property_list_value &date)
{
    return date.is_date() ? QString::number(plugin_static_function::convert_nsdate_to_epoch(date, date)) : QString();
}

} // namespace

void mail_ios_uid::xcode_extract_mail_vip_senders()
{
    static constexpr operation_log log{"void mail_ios_uid::xcode_extract_mail_vip_senders()"};
    log("[xcode_extract_mail_vip_senders] Starts");
    result_session destination{log, destination_db_path_QString};
    property_list list;
    if (!open_list(list, mobilemail_plist_file_QString, destination,
                   {log, senders_destination_failure, senders_list_failure})) {
        return;
    }
    const property_list_value senders = list.root().object_for_key("VIP-senders");
    if (!senders.is_dictionary()) {
        log("[xcode_extract_mail_vip_senders] VIP-senders nil  ---FAILED--- ");
        return;
    }
    row_writer rows{*this, destination, log, insert_sender, insert_sender_failure};
    for (const auto &[key, sender] : senders.entries()) {
        if (cancel_extraction_bool) {
            return;
        }
        if (!sender.is_dictionary()) {
            log("[xcode_extract_mail_vip_senders] senders_Field nil  ---FAILED--- ");
            return;
        }
        const property_list_value addresses = sender.object_for_key("a");
        if (!addresses.is_array()) {
            continue;
        }
        property_list_value account; // of several addresses the last one stands for it
        for (const property_list_value &address : addresses.elements()) {
            if (cancel_extraction_bool) {
                return;
            }
            account = address;
        }
        rows.insert(row_of_sender(key, sender, addresses.count() > 0 ? account.text() : QStringLiteral("")));
    }
    destination.finish();
    log("[xcode_extract_mail_vip_senders] Ends");
}

row_values mail_ios_uid::row_of_sender(const QString &key, const property_list_value &sender,
                                       const QString &account) const
{
    const row_paths paths = paths_of(mobilemail_plist_file_QString, mobilemail_plist_domain_QString);
    return {
        {"vip_name", sender.object_for_key("n").text()},
        {"unique_id", QString::fromLatin1(key.toUtf8())},
        {"account", account},
        {"source_file", paths.source_file},
        {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
        {"source_count_name", plugin_static_function::get_source_count_name()},
        {"os_scheme_display", os_scheme_display_QString},
    };
}

void mail_ios_uid::xcode_extract_mail_vip_contacts()
{
    static constexpr operation_log log{"void mail_ios_uid::xcode_extract_mail_vip_contacts()"};
    log("Starts");
    result_session destination{log, destination_db_path_QString};
    property_list list;
    if (!open_list(list, searchd_plist_file_QString, destination, {log, vips_destination_failure, vips_list_failure})) {
        return;
    }
    const property_list_value vips = list.root().object_for_key("mailVips");
    if (!vips.is_array()) {
        log(" m_plist mailVips not found  ---FAILED--- ");
        return;
    }
    row_writer rows{*this, destination, log, insert_vip, insert_vip_failure};
    const row_paths paths = paths_of(searchd_plist_file_QString, searchd_plist_domain_QString);
    for (const property_list_value &vip : vips.elements()) {
        const property_list_value addresses = vip.object_for_key("emailAddresses");
        if (!addresses.is_array()) {
            continue;
        }
        rows.insert({
            {"vip_name", vip.object_for_key("displayName").text()},
            {"unique_id", vip.object_for_key("uniqueIdentifier").text()},
            {"address", addresses_of(addresses, log)},
            {"message_count", count_of(vip.object_for_key("priv_totalMessageCount"))},
            {"recent_interaction_date", seconds_of(vip.object_for_key("priv_recentInteractionDate"))},
            {"source_file", paths.source_file},
            {"artifacts_relation_source_file", paths.artifacts_relation_source_file},
            {"source_count_name", plugin_static_function::get_source_count_name()},
            {"os_scheme_display", os_scheme_display_QString},
        });
    }
    destination.finish();
    log("Ends");
}
