// Sources: which files of the mail store stand in the homes of the source's users, in every generation of the store.
// Fills no table itself.
#include "core/operation_log.h"
#include "macos/mail_macos.h"

namespace {

constexpr const char *preferences_found = "[find_source_file_11]the found source file prefernces at path--->>>>";
constexpr const char *shared_preferences_found =
    "[find_source_file_11]the found source file composing prefernces at path--->>>>";
constexpr const char *accounts_found = "[find_source_file_11_12] Source file accounts found at path-->>";
constexpr const char *vips_found = "[find_source_file_11_12] Source file for vipsender found at path-->>";
constexpr const char *smart_mailboxes_found =
    "[find_source_file_11_12] Source file for smart mailbox found at path-->>";
constexpr const char *rules_found = "[find_source_file_11_12] Source file for Synced Rule found at path-->>";
constexpr const char *accounts_map_found = "[find_source_file_11_12] Source file for Signature1 found at path-->>";
constexpr const char *all_signatures_found = "[find_source_file_11_12] Source file for Signature2 found at path-->>";
constexpr const char *messages_found = "[find_source_file_11_12] Source file for Message found at path-->>";
constexpr const char *downloads_found = "[find_source_file_11_12] Source file for Open Attachment found at path-->>";
constexpr const char *unsaid = nullptr;

// The attributes that the extraction handles by itself or that have columns of their own.
constexpr const char *fixed_attribute_names[] = {
    "kMDItemDateAdded",
    "kMDItemKind",
    "kMDItemContentCreationDate",
    "kMDItemContentModificationDate",
    "kMDItemContentType",
    "kMDItemFSContentChangeDate",
    "kMDItemFSCreationDate",
    "kMDItemFSName",
    "kMDItemFSNodeCount",
    "kMDItemWhereFroms",
    "kMDItemLatitude",
    "kMDItemLongitude",
    "kMDItemAltitude",
    "org_bittorrent_torrent_filenames",
    "kMDItemUsedDates",
    "kMDItemLastUsedDate",
    "kMDItemOriginMessageID",
    "kMDItemOriginSenderDisplayName",
    "kMDItemOriginSenderHandle",
    "kMDItemOriginSubject",
};

} // namespace

void mail_macos::macos_find_artifacts_source()
{
    find_source_file();
}

void mail_macos::macos_set_extended_attributes_list(const QStringList &names)
{
    extended_attributes_QStringList = names;
    filter_extended_attribute_list();
}

void mail_macos::filter_extended_attribute_list()
{
    QStringList fixed;
    for (const char *name : fixed_attribute_names) {
        fixed.append(QString::fromLatin1(name));
    }
    extended_attributes_QStringList =
        plugin_static_function::get_unmatched_varible_list_of_parentlist(extended_attributes_QStringList, fixed);
}

struct mail_macos::source_candidate
{
    QStringList mail_macos::*list;
    const char *path; // below the home of a user
    const char *hit;  // what the log says in front of the path, if anything
};

// The order is that of the lists' entries and of the log lines: rules of V5 stand before those of V4.
// clang-format off
const std::vector<mail_macos::source_candidate> mail_macos::source_candidates{
    {&mail_macos::mail_preferences_plist_QStringList, "/Library/Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist", preferences_found},
    {&mail_macos::mail_shared_plist_QStringList,      "/Library/Preferences/com.apple.mail-shared.plist", shared_preferences_found},
    {&mail_macos::accounts3_db_QStringList,           "/Library/Accounts/Accounts3.sqlite", accounts_found},

    {&mail_macos::mail_folder_v3_QStringList,       "/Library/Mail/V3", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList, "/Library/Mail/V4", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList, "/Library/Mail/V5", unsaid},
    {&mail_macos::accounts4_db_QStringList,         "/Library/Accounts/Accounts4.sqlite", unsaid},

    {&mail_macos::vip_plist_v3_QStringList,             "/Library/Mail/V3/MailData/VIPs.plist", vips_found},
    {&mail_macos::smart_mailboxes_plist_v3_QStringList, "/Library/Mail/V3/MailData/SyncedSmartMailboxes.plist", smart_mailboxes_found},
    {&mail_macos::synced_rules_plist_v3_QStringList,    "/Library/Mail/V3/MailData/SyncedRules.plist", rules_found},
    {&mail_macos::accounts_map_plist_v3_QStringList,    "/Library/Mail/V3/MailData/Signatures/AccountsMap.plist", accounts_map_found},
    {&mail_macos::all_signatures_plist_v3_QStringList,  "/Library/Mail/V3/MailData/Signatures/AllSignatures.plist", all_signatures_found},
    {&mail_macos::envelope_index_v3_QStringList,        "/Library/Mail/V3/MailData/Envelope Index", messages_found},

    {&mail_macos::vip_plist_v4_to_v6_QStringList,             "/Library/Mail/V4/MailData/VIPs.plist", vips_found},
    {&mail_macos::vip_plist_v4_to_v6_QStringList,             "/Library/Mail/V5/MailData/VIPs.plist", vips_found},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V4/MailData/SyncedSmartMailboxes.plist", smart_mailboxes_found},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V5/MailData/SyncedSmartMailboxes.plist", smart_mailboxes_found},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V5/MailData/SyncedRules.plist", rules_found},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V4/MailData/SyncedRules.plist", rules_found},
    {&mail_macos::accounts_map_plist_v4_QStringList,          "/Library/Mail/V4/MailData/Signatures/AccountsMap.plist", accounts_map_found},
    {&mail_macos::accounts_map_plist_v5_to_v9_QStringList,    "/Library/Mail/V5/MailData/Signatures/AccountsMap.plist", accounts_map_found},
    {&mail_macos::all_signatures_plist_v4_QStringList,        "/Library/Mail/V4/MailData/Signatures/AllSignatures.plist", all_signatures_found},
    {&mail_macos::all_signatures_plist_v5_to_v9_QStringList,  "/Library/Mail/V5/MailData/Signatures/AllSignatures.plist", all_signatures_found},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V4/MailData/Envelope Index", messages_found},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V5/MailData/Envelope Index", messages_found},

    {&mail_macos::mail_downloads_folder_QStringList, "/Library/Containers/com.apple.mail/Data/Library/Mail Downloads", downloads_found},

    {&mail_macos::accounts_plist_v2_QStringList,           "/Library/Mail/V2/MailData/Accounts.plist", unsaid},
    {&mail_macos::opened_attachments_v2_plist_QStringList, "/Library/Mail/V2/MailData/OpenedAttachmentsV2.plist", unsaid},
    {&mail_macos::opened_attachments_plist_QStringList,    "/Library/Mail/V2/MailData/OpenedAttachments.plist", unsaid},
    {&mail_macos::envelope_index_v2_QStringList,           "/Library/Mail/V2/MailData/Envelope Index", unsaid},

    {&mail_macos::vip_plist_v4_to_v6_QStringList,             "/Library/Mail/V6/MailData/VIPs.plist", unsaid},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V6/MailData/SyncedSmartMailboxes.plist", unsaid},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V6/MailData/SyncedRules.plist", unsaid},
    {&mail_macos::accounts_map_plist_v5_to_v9_QStringList,    "/Library/Mail/V6/MailData/Signatures/AccountsMap.plist", unsaid},
    {&mail_macos::all_signatures_plist_v5_to_v9_QStringList,  "/Library/Mail/V6/MailData/Signatures/AllSignatures.plist", unsaid},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V6/MailData/Envelope Index", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList,           "/Library/Mail/V6", messages_found},

    {&mail_macos::vip_plist_v7_to_v9_QStringList,             "/Library/Mail/V7/MailData/VIPs.plist", unsaid},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V7/MailData/SyncedSmartMailboxes.plist", unsaid},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V7/MailData/SyncedRules.plist", unsaid},
    {&mail_macos::accounts_map_plist_v5_to_v9_QStringList,    "/Library/Mail/V7/MailData/Signatures/AccountsMap.plist", unsaid},
    {&mail_macos::all_signatures_plist_v5_to_v9_QStringList,  "/Library/Mail/V7/MailData/Signatures/AllSignatures.plist", unsaid},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V7/MailData/Envelope Index", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList,           "/Library/Mail/V7", messages_found},

    {&mail_macos::vip_plist_v7_to_v9_QStringList,             "/Library/Mail/V8/MailData/VIPs.plist", unsaid},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V8/MailData/SyncedSmartMailboxes.plist", unsaid},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V8/MailData/SyncedRules.plist", unsaid},
    {&mail_macos::accounts_map_plist_v5_to_v9_QStringList,    "/Library/Mail/V8/MailData/Signatures/AccountsMap.plist", unsaid},
    {&mail_macos::all_signatures_plist_v5_to_v9_QStringList,  "/Library/Mail/V8/MailData/Signatures/AllSignatures.plist", unsaid},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V8/MailData/Envelope Index", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList,           "/Library/Mail/V8", messages_found},

    {&mail_macos::vip_plist_v7_to_v9_QStringList,             "/Library/Mail/V9/MailData/VIPs.plist", unsaid},
    {&mail_macos::smart_mailboxes_plist_v4_to_v9_QStringList, "/Library/Mail/V9/MailData/SyncedSmartMailboxes.plist", unsaid},
    {&mail_macos::synced_rules_plist_v4_to_v9_QStringList,    "/Library/Mail/V9/MailData/SyncedRules.plist", unsaid},
    {&mail_macos::accounts_map_plist_v5_to_v9_QStringList,    "/Library/Mail/V9/MailData/Signatures/AccountsMap.plist", unsaid},
    {&mail_macos::all_signatures_plist_v5_to_v9_QStringList,  "/Library/Mail/V9/MailData/Signatures/AllSignatures.plist", unsaid},
    {&mail_macos::envelope_index_v4_to_v9_QStringList,        "/Library/Mail/V9/MailData/Envelope Index", unsaid},
    {&mail_macos::mail_folder_v4_to_v9_QStringList,           "/Library/Mail/V9", messages_found},
};
// clang-format on

void mail_macos::find_source_file()
{
    static constexpr operation_log log{"void mail_macos::find_source_file()"};
    log("[find_source_file] starts");

    for (const source_candidate &file : source_candidates) {
        (this->*file.list).clear();
    }
    current_index_v2_QStringList.clear();
    current_index_v3_to_v9_QStringList.clear();

    for (const QString &user : qAsConst(system_user_QStringList)) {
        const QString user_home = source_root_path_QString + QLatin1String("Users/") + user;
        for (const source_candidate &file : source_candidates) {
            const QString path = user_home + QLatin1String(file.path);
            if (!source.contains(path)) {
                continue;
            }
            (this->*file.list).append(path);
            if (file.hit != unsaid) {
                log(file.hit, path);
            }
        }
    }
    log("[find_source_file] ends");
}
