// Sources and driver of the iOS device backup. Fills no table itself.
#include "ios/mail_ios_uid.h"

#include "core/operation_log.h"
#include "core/result_session.h"
#include "ios/short_message_reader.h"
#include "services/property_list.h"
#include "services/source_files.h"

#include <QFileInfo>

mail_ios_uid::mail_ios_uid(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_ios_uid(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_ios_uid(count); })
{
}

mail_ios_uid::~mail_ios_uid() = default;

void mail_ios_uid::ios_uid_find_artifacts_source()
{
    find_source_file();
}

void mail_ios_uid::ios_uid_extract_artifacts()
{
    run_extraction([this] { extract_plugin_artifacts(); });
}

struct mail_ios_uid::source_file
{
    const char *domain_path;
    QString mail_ios_uid::*domain_member;
    QString mail_ios_uid::*file_member;
};

void mail_ios_uid::find_source_file()
{
    static constexpr operation_log log{"void mail_ios_uid::find_source_file()"};
    log("[find_source_file] starts");
    // clang-format off
    static constexpr source_file files[] = {
        {"HomeDomain/Library/Mail/Recents",
         &mail_ios_uid::recents_domain_QString,          &mail_ios_uid::recents_file_QString},
        {"HomeDomain/Library/AddressBook/AddressBook.sqlitedb",
         &mail_ios_uid::address_book_domain_QString,     &mail_ios_uid::address_book_file_QString},
        {"AppDomain-com.apple.mobilemail/Library/Preferences/com.apple.mobilemail.plist",
         &mail_ios_uid::mobilemail_plist_domain_QString, &mail_ios_uid::mobilemail_plist_file_QString},
        {"HomeDomain/Library/Accounts/Accounts3.sqlite",
         &mail_ios_uid::accounts_domain_QString,         &mail_ios_uid::accounts_file_QString},
        {"HomeDomain/Library/SMS/sms.db",
         &mail_ios_uid::sms_domain_QString,              &mail_ios_uid::sms_file_QString},
        {"HomeDomain/Library/Preferences/com.apple.searchd.plist",
         &mail_ios_uid::searchd_plist_domain_QString,    &mail_ios_uid::searchd_plist_file_QString},
    };
    // clang-format on
    for (const source_file &file : files) {
        const QString domain_path = QString::fromLatin1(file.domain_path);
        const QString path = ios_backup_parser ? ios_backup_parser->get_backup_file_path(domain_path) : QString();
        this->*file.domain_member = domain_path;
        this->*file.file_member = is_file_of_backup(path) ? path : QString();
    }
    log("[find_source_file] ends");
}

// The host may keep files of a backup elsewhere, such as those that it has deciphered; but what it says lies below the
// source root must not be a link that leads out of it.
bool mail_ios_uid::is_file_of_backup(const QString &path) const
{
    const bool is_below_root = !source_root_path_QString.isEmpty() && path.startsWith(source_root_path_QString);
    return is_below_root ? stands_below(source_root_path_QString, path) : QFileInfo::exists(path);
}

bool mail_ios_uid::open_list(property_list &list, const QString &file, result_session &destination,
                             const list_texts &texts) const
{
    if (file.trimmed().isEmpty() || !destination.open(texts.destination_failure)) {
        return false;
    }
    list = property_list::from_file(file);
    if (!list.root().is_dictionary()) {
        texts.log.failure(texts.list_failure, file);
        return false;
    }
    return true;
}

void mail_ios_uid::extract_plugin_artifacts()
{
    static constexpr operation_log log{"void mail_ios_uid::extract_plugin_artifacts()"};
    log("[extract_plugin_artifacts] starts");
    accounts_copy_QString.clear();
    if (has_engine()) {
        if (is_selected(QStringLiteral("contacts"))) {
            extract_contacts_tab();
        }
        if (is_selected(QStringLiteral("recents"))) {
            extract_mail_recents();
            report_records();
            finish_tab();
        }
        if (is_selected(QStringLiteral("accounts"))) {
            xcode_extract_mail_accounts();
            report_records();
            finish_tab();
        }
        if (is_selected(QStringLiteral("vip_contacts"))) {
            xcode_extract_mail_vip_senders();
            report_records();
            xcode_extract_mail_vip_contacts();
            report_records();
            finish_tab();
        }
        if (is_selected(QStringLiteral("preferences"))) {
            xcode_extract_mail_preferences();
            report_records();
            finish_tab();
        }
    }
    log("[extract_plugin_artifacts] ends");
}

// A backup that holds both databases gives the rows of both, and the tab counts once for each.
void mail_ios_uid::extract_contacts_tab()
{
    if (!recents_file_QString.trimmed().isEmpty()) {
        extract_mailContact();
        report_records();
        finish_tab();
    }
    if (!address_book_file_QString.trimmed().isEmpty()) {
        extract_mailContact_11();
        report_records();
        finish_tab();
    }
}

mail_ios_uid::row_paths mail_ios_uid::paths_of(const QString &file, const QString &domain_path) const
{
    return {behind_source_root(file.trimmed()), QLatin1Char('/') + domain_path};
}

mail_ios_uid::row_paths mail_ios_uid::paths_of_list_and_accounts() const
{
    const row_paths list = paths_of(mobilemail_plist_file_QString, mobilemail_plist_domain_QString);
    const row_paths accounts = paths_of(accounts_file_QString, accounts_domain_QString);
    const QString separator = list.source_file.isEmpty() ? QString() : QStringLiteral(";");
    return {list.source_file + separator + accounts.source_file,
            list.artifacts_relation_source_file + QLatin1Char(';') + accounts.artifacts_relation_source_file};
}
