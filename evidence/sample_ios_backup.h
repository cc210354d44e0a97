/// A whole iOS device backup of any size, with the six files that mail data come from: recents that were mailed or sent
/// as short messages, the address book, accounts, VIPs of both lists, the settings of the mail application.
#pragma once

#include "evidence/ios_backup.h"

namespace evidence {

struct sample_ios_backup_options
{
    qint64 recent_count = 1000; ///< with them ten times as many short messages, two and a half times as many persons
    uint64_t seed = 1;          ///< the same seed and options give the same backup
    ios_backup_options backup;
};

struct sample_ios_backup_summary
{
    qint64 recents = 0;
    qint64 short_messages = 0;
    qint64 persons = 0; ///< of the address book; one in five has no mail address
    qint64 accounts = 0;
    qint64 vips = 0; ///< in each of the two lists
};

/// The domain paths of the files.
constexpr const char *ios_recents_path = "HomeDomain/Library/Mail/Recents";
constexpr const char *ios_address_book_path = "HomeDomain/Library/AddressBook/AddressBook.sqlitedb";
constexpr const char *ios_mail_settings_path =
    "AppDomain-com.apple.mobilemail/Library/Preferences/com.apple.mobilemail.plist";
constexpr const char *ios_accounts_path = "HomeDomain/Library/Accounts/Accounts3.sqlite";
constexpr const char *ios_sms_path = "HomeDomain/Library/SMS/sms.db";
constexpr const char *ios_search_settings_path = "HomeDomain/Library/Preferences/com.apple.searchd.plist";

/// Every recent has three contacts, of which the last person may have no name, and three metadata rows: a subject, the
/// time of the event and a reference, for one in four to a short message. Failures throw evidence_error.
sample_ios_backup_summary write_sample_ios_backup(const QString &root, const sample_ios_backup_options &options);

} // namespace evidence
