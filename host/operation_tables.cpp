#include "host/operation_tables.h"

#include <algorithm>
#include <iterator>

namespace {

struct operation_entry
{
    const char *operation; // without its class: the extractors name what they share alike
    const char *tables;
};

// clang-format off
constexpr operation_entry operations[] = {
    {"container_func",                           "all_attachments,mail_data,mailconversation,messages"},
    {"creat_html_file",                          "mail_data"},
    {"edb_data_parse",                           "all_attachments,mail_data,mailconversation,messages"},
    {"extract_accounts_for_11_12",               "accounts"},
    {"extract_allattachments_details",           "all_attachments"},
    {"extract_allattachments_details_11_12",     "all_attachments"},
    {"extract_appointments",                     "appointments"},
    {"extract_call_history",                     "call_history"},
    {"extract_contacts",                         "contacts"},
    {"extract_eml_info",                         "mail_data"},
    {"extract_emlx_file_location",               "all_attachments,emlx_list,messages"},
    {"extract_emlx_file_location_11",            "all_attachments,emlx_list,messages"},
    {"extract_mailContact",                      "contacts"},
    {"extract_mailContact_11",                   "contacts"},
    {"extract_mail_data",                        "mail_data"},
    {"extract_mail_messages",                    "messages"},
    {"extract_mail_recents",                     "recents"},
    {"extract_messages",                         "all_attachments,messages"},
    {"extract_messages_11_12",                   "all_attachments,messages"},
    {"extract_non_html_files",                   "mail_data"},
    {"extract_open_attachment_11_12",            "open_attachments"},
    {"extract_received_attachments",             "all_attachments"},
    {"extract_received_attachments_files",       "received_attachments_files"},
    {"extract_sent_attachments",                 "all_attachments"},
    {"extract_xcode_accounts",                   "accounts"},
    {"extract_xcode_open_attachments",           "open_attachments"},
    {"get_cc_and_replytofield",                  "all_attachments,messages"},
    {"get_data_of_file",                         "mail_data"},
    {"get_dates_from_nsarray",                   "smart_mailboxes"},
    {"get_prefs_favorite_values",                "preferences"},
    {"get_text_from_html",                       "mail_data"},
    {"html_to_ascii_converter",                  "mail_data"},
    {"insert_preferences_to_database",           "preferences"},
    {"mail_message_sms_text",                    "recents"},
    {"sub_compare_identifier_with_db",           "accounts"},
    {"sub_extract_attachment_file_path",         "all_attachments"},
    {"sub_extract_attachmented_filenames",       "messages"},
    {"sub_extract_attachmented_filenames_11",    "messages"},
    {"sub_extract_emlx_file_for_messages",       "all_attachments,messages"},
    {"sub_extract_emlx_file_for_messages_11_12", "all_attachments,messages"},
    {"sub_extract_mailbox_detail_11",            "messages"},
    {"sub_extract_mailbox_url",                  "messages"},
    {"sub_extract_receiver_address",             "messages"},
    {"sub_extract_receiver_address_11",          "messages"},
    {"sub_extract_sender_address",               "messages"},
    {"sub_extract_sender_address_11",            "messages"},
    {"sub_extract_subject_text",                 "messages"},
    {"sub_extract_subject_text_11",              "messages"},
    {"xcode_extract_allsignature",               "signature"},
    {"xcode_extract_composing_addressing_prefs", "preferences"},
    {"xcode_extract_mail_accounts",              "accounts"},
    {"xcode_extract_mail_preferences",           "preferences"},
    {"xcode_extract_mail_vip_contacts",          "vip_contacts"},
    {"xcode_extract_mail_vip_senders",           "vip_contacts"},
    {"xcode_extract_preferences",                "preferences,signature"},
    {"xcode_extract_smartbox",                   "smart_mailboxes"},
    {"xcode_extract_syncedrule",                 "rules"},
    {"xcode_extract_updatesignature",            "signature"},
    {"xcode_extract_vip_list",                   "vip_contacts"},
    {"xcode_extract_vip_list_15",                "vip_contacts"},
};
// clang-format on

} // namespace

QStringList tables_filled_by(const QString &operation)
{
    const QString name = operation.mid(operation.lastIndexOf(QLatin1Char(':')) + 1);
    const auto *found =
        std::find_if(std::begin(operations), std::end(operations),
                     [&name](const operation_entry &entry) { return name == QLatin1String(entry.operation); });
    return found == std::end(operations) ? QStringList() : QString::fromLatin1(found->tables).split(QLatin1Char(','));
}
