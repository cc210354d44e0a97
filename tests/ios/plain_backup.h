/// A device backup as a plain folder, with the parser for it: each file lies under its domain path.
#pragma once

#include "core/ios_uid_backup_parser.h"
#include "evidence/files.h"
#include "tests/support/host_run.h"

#include <QStringList>
#include <QTemporaryDir>

inline const QString recents_path = QStringLiteral("HomeDomain/Library/Mail/Recents");
inline const QString address_book_path = QStringLiteral("HomeDomain/Library/AddressBook/AddressBook.sqlitedb");
inline const QString mail_list_path =
    QStringLiteral("AppDomain-com.apple.mobilemail/Library/Preferences/com.apple.mobilemail.plist");
inline const QString accounts_path = QStringLiteral("HomeDomain/Library/Accounts/Accounts3.sqlite");
inline const QString sms_path = QStringLiteral("HomeDomain/Library/SMS/sms.db");
inline const QString search_list_path = QStringLiteral("HomeDomain/Library/Preferences/com.apple.searchd.plist");

class plain_backup : public ios_uid_backup_parser
{
public:
    QString get_backup_file_path(QString domain_path) override
    {
        asked.append(domain_path);
        return path_of(domain_path);
    }

    QString root() const { return folder.filePath(QStringLiteral("source/")); }
    QString path_of(const QString &domain_path) const { return root() + domain_path; }
    void add_file(const QString &domain_path, const QByteArray &content) const
    {
        evidence::make_folder(evidence::folder_of(path_of(domain_path)));
        evidence::write_file(path_of(domain_path), content);
    }

    QStringList asked; ///< the domain paths, in the order in which they were asked for

private:
    QTemporaryDir folder;
};

/// A run over the backup with these tabs.
class backup_run : public host_run
{
public:
    backup_run(plain_backup &backup, const QStringList &tabs) : host_run(QStringLiteral("iOS_UID"), backup.root(), tabs)
    {
        backup_parser = &backup;
    }
};
