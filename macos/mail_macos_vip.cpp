// Table vip_contacts: one row a VIP of VIPs.plist in the folder MailData of a store. V3 to V6 keep the VIPs, with what
// the mail application knows of their mailboxes, under the key "Senders"; in V7 to V9 they are the whole list.
#include "macos/listed_rows.h"
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

std::optional<listed_entries> entries_of_senders(const property_list_value &root)
{
    return root.is_dictionary() ? entries_of_dictionary(root.object_for_key("Senders")).value_or(listed_entries())
                                : std::optional<listed_entries>();
}

std::optional<row_values> values_of_vip(const QString &key, const property_list_value &vip,
                                        const std::atomic<bool> &cancel_flag)
{
    if (!vip.is_dictionary()) {
        return std::nullopt;
    }
    const property_list_value mailbox = vip.object_for_key("UserInfo");
    const QString mailbox_uid = stored_text("MailboxID", mailbox);
    return row_values{
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

std::optional<row_values> values_of_vip_15(const property_list_value &vip, const std::atomic<bool> &cancel_flag)
{
    if (!vip.is_dictionary()) {
        return std::nullopt;
    }
    return row_values{
        {"address", addresses_of(vip.object_for_key("EmailAddresses"), cancel_flag)},
        {"vip_name", vip.object_for_key("Name").text()},
    };
}

} // namespace

void mail_macos::xcode_extract_vip_list(const QString &file, const QString &user, const QString &destination_db,
                                        const QString &)
{
    static constexpr listed_rows vips{
        operation_log{"void mail_macos::xcode_extract_vip_list(QString, QString, QString, QString)"},
        destination_failure,
        list_failure,
        "End with failure",
        entries_of_senders,
        insert_vip,
        insert_vip_failure,
    };
    extract_listed_rows(vips, file, user, destination_db, [&](const QString &key, const property_list_value &vip) {
        return values_of_vip(key, vip, cancel_extraction_bool);
    });
}

void mail_macos::xcode_extract_vip_list_15(const QString &file, const QString &user, const QString &destination_db,
                                           const QString &)
{
    static constexpr listed_rows vips{
        operation_log{"void mail_macos::xcode_extract_vip_list_15(QString, QString, QString, QString)"},
        destination_failure,
        list_failure,
        "end with failure",
        entries_of_dictionary,
        insert_vip_15,
        insert_vip_15_failure,
    };
    extract_listed_rows(vips, file, user, destination_db, [&](const QString &, const property_list_value &vip) {
        return values_of_vip_15(vip, cancel_extraction_bool);
    });
}
