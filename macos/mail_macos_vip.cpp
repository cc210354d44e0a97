// Table vip_contacts: one row a VIP of VIPs.plist in the folder MailData of a store. V3 to V6 keep the VIPs, with what
// the mail application knows of their mailboxes, under the key "Senders"; in V7 to V9 they are the whole list.
#include "core/result_session.h"
#include "core/row_writer.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"

namespace {

constexpr failure_text destination_failure{"destination_db open --------FAILED------", "Error :- "};
constexpr failure_text list_failure{"m_plist blank ------FAILED------"};

// --- V3 to V6 --------------------------------------------------------------------------------------------------------

constexpr const char *insert_vip =
    "INSERT into vip_contacts(bookmark,system_user,address,vip_name,unread_count, mailbox_uid,sort_order,"
    "sort_descending,source_file,artifacts_relation_source_file,source_count_name, os_scheme_display) "
    "values(?,?,?,?,?,?,?,  ?,?,?,?, ?)";
constexpr failure_text insert_vip_failure{"insert query --------FAILED------", "Error :- ", "Execute Query :- "};

row_values values_of_vip(const QString &key, const property_list_value &vip, const std::atomic<bool> &cancel_flag)
{
    const property_list_value mailbox = vip.object_for_key("UserInfo");
    const QString mailbox_uid = stored_text("MailboxID", mailbox);
    return {
        {"address", stored_list("Addresses", vip, cancel_flag)},
        {"vip_name", stored_text("Name", vip)},
        {"unread_count", plugin_static_function::get_nsnumber_values(QStringLiteral("MailboxUnreadCount"), vip)},
        {"mailbox_uid", mailbox_uid.isEmpty() ? key : mailbox_uid},
        {"sort_order", with_words_shown(stored_text("SortOrder", mailbox), sort_order_words)},
        {"sort_descending", stored_text("SortedDescending", mailbox)},
    };
}

// --- V7 to V9 --------------------------------------------------------------------------------------------------------

constexpr const char *insert_vip_15 =
    "INSERT into vip_contacts(bookmark,system_user,address,vip_name,source_file,artifacts_relation_source_file,"
    "source_count_name, os_scheme_display) values(?,?,?,?,?,  ?,?,?)";
constexpr failure_text insert_vip_15_failure{"insert query --------FAILED------", "Error :- ", ""};

QString addresses_of(const property_list_value &list, const std::atomic<bool> &cancel_flag)
{
    QString addresses = list.is_array() ? QStringLiteral("") : QString();
    for (const property_list_value &address : list.elements()) {
        if (cancel_flag) {
            break;
        }
        if (address.is_string()) {
            addresses += address.text() + QLatin1String(list_separator);
        }
    }
    return without_outer_separators(addresses);
}

row_values values_of_vip_15(const QString &, const property_list_value &vip, const std::atomic<bool> &cancel_flag)
{
    return {
        {"address", addresses_of(vip.object_for_key("EmailAddresses"), cancel_flag)},
        {"vip_name", vip.object_for_key("Name").text()},
    };
}

} // namespace

struct mail_macos::vip_layout
{
    operation_log log;
    const char *line_behind_failure;
    const char *key_of_vips; ///< none: the root holds them itself
    row_values (*values_of)(const QString &key, const property_list_value &vip, const std::atomic<bool> &cancel_flag);
    const char *insert;
    failure_text insert_failure;
};

void mail_macos::xcode_extract_vip_list(const QString &file, const QString &user, const QString &destination_db,
                                        const QString &)
{
    static constexpr vip_layout layout{
        operation_log{"void mail_macos::xcode_extract_vip_list(QString, QString, QString, QString)"},
        "End with failure",
        "Senders",
        values_of_vip,
        insert_vip,
        insert_vip_failure};
    extract_vips(layout, file, user, destination_db);
}

void mail_macos::xcode_extract_vip_list_15(const QString &file, const QString &user, const QString &destination_db,
                                           const QString &)
{
    static constexpr vip_layout layout{
        operation_log{"void mail_macos::xcode_extract_vip_list_15(QString, QString, QString, QString)"},
        "end with failure",
        nullptr,
        values_of_vip_15,
        insert_vip_15,
        insert_vip_15_failure};
    extract_vips(layout, file, user, destination_db);
}

void mail_macos::extract_vips(const vip_layout &layout, const QString &file, const QString &user,
                              const QString &destination_db)
{
    layout.log("starts");
    result_session destination{layout.log, destination_db};
    if (!destination.open(destination_failure)) {
        return;
    }
    const property_list list = property_list::from_file(file);
    if (!list.root().is_dictionary()) {
        layout.log.failure(list_failure, file);
        layout.log(layout.line_behind_failure);
        return;
    }
    const property_list_value vips = layout.key_of_vips ? list.root().object_for_key(layout.key_of_vips) : list.root();
    row_writer rows{*this, destination, layout.log, layout.insert, layout.insert_failure};
    const artifact_source_file shown_file = shown_source_of(file, user);
    for (const auto &[key, vip] : vips.entries()) {
        if (cancel_extraction_bool) {
            return;
        }
        if (!vip.is_dictionary()) {
            continue;
        }
        row_values row{{"bookmark", QStringLiteral("0")}, {"system_user", user}};
        const row_values values = layout.values_of(key, vip, cancel_extraction_bool);
        row.insert(row.end(), values.begin(), values.end());
        append_source_columns(row, shown_file);
        if (cancel_extraction_bool) { // the addresses may have been read in part only
            return;
        }
        rows.insert(row);
    }
    destination.finish();
    layout.log("ends");
}
