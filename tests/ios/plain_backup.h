/// A device backup as a plain folder, with the parser for it: each file lies under its domain path.
#pragma once

#include "core/ios_uid_backup_parser.h"
#include "evidence/property_list_file.h"
#include "tests/services/service_test.h"
#include "tests/support/host_run.h"

inline const QString recents_path = "HomeDomain/Library/Mail/Recents"_s;
inline const QString address_book_path = "HomeDomain/Library/AddressBook/AddressBook.sqlitedb"_s;
inline const QString mail_list_path = "AppDomain-com.apple.mobilemail/Library/Preferences/com.apple.mobilemail.plist"_s;
inline const QString accounts_path = "HomeDomain/Library/Accounts/Accounts3.sqlite"_s;
inline const QString sms_path = "HomeDomain/Library/SMS/sms.db"_s;
inline const QString search_list_path = "HomeDomain/Library/Preferences/com.apple.searchd.plist"_s;

class plain_backup : public ios_uid_backup_parser
{
public:
    QString get_backup_file_path(QString domain_path) override
    {
        asked.append(domain_path);
        return path_of(domain_path);
    }

    QString root() const { return folder.filePath("source/"_s); }
    QString path_of(const QString &domain_path) const { return root() + domain_path; }
    void add_file(const QString &domain_path, const QByteArray &content) const
    {
        evidence::make_folder(evidence::folder_of(path_of(domain_path)));
        evidence::write_file(path_of(domain_path), content);
    }
    void add_list(const QString &domain_path, const QVariant &root) const
    {
        add_file(domain_path, evidence::property_list_bytes(root, evidence::property_list_form::binary));
    }

    QStringList asked; ///< the domain paths, in the order in which they were asked for

private:
    QTemporaryDir folder;
};

/// A run over the backup with these tabs.
class backup_run : public host_run
{
public:
    backup_run(plain_backup &backup, const QStringList &tabs) : host_run("iOS_UID"_s, backup.root(), tabs)
    {
        backup_parser = &backup;
    }

    /// The log of one of the scheme's operations.
    QStringList log_of_operation(const char *name) const
    {
        return log_of("mail_ios_uid::"_s + QString::fromLatin1(name));
    }
};
