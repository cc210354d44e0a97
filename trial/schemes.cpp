#include "trial/schemes.h"

#include "evidence/sample_ios_backup.h"
#include "evidence/sample_ios_file_tree.h"
#include "evidence/sample_macos_mail_tree.h"
#include "evidence/sample_windows_profile.h"

namespace trial {

namespace {

template <typename options_type>
options_type options_of(qint64 size)
{
    options_type options;
    options.message_count = size;
    return options;
}

void write_ios_file_tree(const QString &root, qint64 size)
{
    evidence::write_sample_ios_file_tree(root, options_of<evidence::sample_ios_file_tree_options>(size));
}

void write_ios_backup(const QString &root, qint64 size)
{
    evidence::sample_ios_backup_options options;
    options.recent_count = size;
    evidence::write_sample_ios_backup(root, options);
}

void write_macos_volume(const QString &root, qint64 size)
{
    auto options = options_of<evidence::sample_macos_mail_tree_options>(size);
    options.storage = evidence::sqlite_storage::wal_only;
    evidence::write_sample_macos_mail_tree(root, options);
}

void write_windows_profile(const QString &root, qint64 size)
{
    evidence::write_sample_windows_profile(root, options_of<evidence::sample_windows_profile_options>(size));
}

} // namespace

const std::vector<scheme> &schemes()
{
    // clang-format off
    static const std::vector<scheme> all = {
        {"ios-file-tree",   "iOS_Uniform", "accounts,messages", "", 20, 1000, write_ios_file_tree},
        {"ios-backup",      "iOS_UID",     "contacts,recents,accounts,vip_contacts,preferences", "", 20, 200,
         write_ios_backup},
        {"macos-volume",    "macOS",
         "signature,accounts,vip_contacts,rules,smart_mailboxes,preferences,messages,all_attachments,open_attachments",
         "anna,jörg", 30, 100, write_macos_volume},
        {"windows-profile", "winOS",
         "appointments,all_attachments,messages,contacts,call_history,mail_data,received_attachments_files,"
         "mailconversation", "anna,jörg", 40, 200, write_windows_profile},
    };
    // clang-format on
    return all;
}

const scheme *scheme_named(const QString &name)
{
    for (const scheme &each : schemes()) {
        if (name == QLatin1String(each.name)) {
            return &each;
        }
    }
    return nullptr;
}

QStringList users_of(const scheme &source_scheme)
{
    return QString::fromUtf8(source_scheme.users).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

QStringList tabs_of(const scheme &source_scheme)
{
    return QString::fromUtf8(source_scheme.tabs).split(QLatin1Char(','));
}

} // namespace trial
