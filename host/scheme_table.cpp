#include "host/scheme_table.h"

namespace {

// clang-format off
constexpr scheme_entry schemes[] = {
    {"macOS",       "macOS",           "a macOS volume, or one home folder (--home)",  true},
    {"iOS_UID",     "iOS Backup",      "a backup of an iOS device",                    false},
    {"iOS_Uniform", "iOS File System", "the file system of an iOS device",             false},
    {"winOS",       "Windows",         "a Windows volume, or one profile (--home)",    true},
};

constexpr tab_report once = tab_report::once;
constexpr tab_report never = tab_report::never;
constexpr tab_report varies = tab_report::varies;

constexpr tab_entry tabs[] = {
    {"macOS",       "signature",                  "signatures with their text, and the accounts that use them", once},
    {"macOS",       "accounts",                   "mail accounts with their servers and mailboxes",          once},
    {"macOS",       "vip_contacts",               "senders marked as VIP",                                   once},
    {"macOS",       "rules",                      "mail rules: conditions and actions",                      once},
    {"macOS",       "smart_mailboxes",            "smart mailboxes and their conditions",                    once},
    {"macOS",       "preferences",                "Mail's settings as readable labels and values",           once},
    {"macOS",       "messages",                   "messages with their emlx files",                          once},
    {"macOS",       "all_attachments",            "attachments, with their files on disk",                   once},
    {"macOS",       "open_attachments",           "attachments that were opened from Mail",                  once},

    {"iOS_UID",     "contacts",                   "contacts of the address book",                            varies},
    {"iOS_UID",     "recents",                    "addresses lately written to or received from",            once},
    {"iOS_UID",     "accounts",                   "mail accounts",                                           once},
    {"iOS_UID",     "vip_contacts",               "senders marked as VIP",                                   once},
    {"iOS_UID",     "preferences",                "Mail's settings",                                         once},

    {"iOS_Uniform", "accounts",                   "the mail account of the device",                          once},
    {"iOS_Uniform", "messages",                   "messages of the mail index, with their emlx files",       once},

    {"winOS",       "appointments",               "calendar appointments",                                   once},
    {"winOS",       "all_attachments",            "attachments sent and received",                           never},
    {"winOS",       "messages",                   "messages",                                                once},
    {"winOS",       "contacts",                   "contacts",                                                once},
    {"winOS",       "call_history",               "calls",                                                   once},
    {"winOS",       "mail_data",                  "message body files beside the store",                     once},
    {"winOS",       "received_attachments_files", "files of received attachments",                           once},
    {"winOS",       "mailconversation",           "conversations",                                           once},
};
// clang-format on

} // namespace

std::vector<const scheme_entry *> all_schemes()
{
    std::vector<const scheme_entry *> found;
    for (const scheme_entry &scheme : schemes) {
        found.push_back(&scheme);
    }
    return found;
}

const scheme_entry *find_scheme(const QString &internal_name)
{
    for (const scheme_entry &scheme : schemes) {
        if (internal_name == QLatin1String(scheme.internal_name)) {
            return &scheme;
        }
    }
    return nullptr;
}

std::vector<const tab_entry *> tabs_of(const scheme_entry &scheme)
{
    std::vector<const tab_entry *> found;
    for (const tab_entry &tab : tabs) {
        if (QLatin1String(tab.scheme) == QLatin1String(scheme.internal_name)) {
            found.push_back(&tab);
        }
    }
    return found;
}

QStringList scheme_names()
{
    QStringList names;
    for (const scheme_entry &scheme : schemes) {
        names += QString::fromLatin1(scheme.internal_name);
    }
    return names;
}

QStringList tab_names(const scheme_entry &scheme)
{
    QStringList names;
    for (const tab_entry *tab : tabs_of(scheme)) {
        names += QString::fromLatin1(tab->name);
    }
    return names;
}
