// Sources and driver of the iOS file tree. Fills no table itself.
#include "ios/mail_ios_uniform.h"

#include "core/operation_log.h"
#include "services/source_files.h"

mail_ios_uniform::mail_ios_uniform(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_ios_uniform(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_ios_uniform(count); })
{
}

void mail_ios_uniform::ios_uniform_find_artifacts_source()
{
    find_source_file();
}

void mail_ios_uniform::ios_uniform_extract_artifacts()
{
    run_extraction([this] { extract_plugin_artifacts(); });
}

void mail_ios_uniform::find_source_file()
{
    static constexpr operation_log log{"void mail_ios_uniform::find_source_file()"};
    log("Starts");

    struct candidate
    {
        QString mail_ios_uniform::*member;
        const char *path;
    };
    // clang-format off
    static constexpr candidate candidates[] = {
        {&mail_ios_uniform::source_file_mailbox_collections_QString, "private/var/mobile/Library/Mail/MailboxCollections.plist"},
        {&mail_ios_uniform::source_file_accounts_QString,            "private/var/mobile/Library/Accounts/Accounts3.sqlite"},
        {&mail_ios_uniform::source_file_envelope_index_QString,      "private/var/mobile/Library/Mail/Envelope Index"},
        {&mail_ios_uniform::source_file_protected_index_QString,     "private/var/mobile/Library/Mail/Protected Index"},
    };
    // clang-format on
    for (const candidate &file : candidates) {
        const QString path = source_root_path_QString + QLatin1String(file.path);
        this->*file.member = stands_below(source_root_path_QString, path) ? path : QString();
    }
    log("Ends");
}

void mail_ios_uniform::extract_plugin_artifacts()
{
    static constexpr operation_log log{"void mail_ios_uniform::extract_plugin_artifacts()"};
    log("starts");
    if (has_engine()) {
        if (is_selected(QStringLiteral("accounts"))) {
            xcode_extract_mail_accounts();
            report_records();
            finish_tab();
        }
        if (is_selected(QStringLiteral("messages"))) {
            extract_mail_messages();
            report_records();
            finish_tab();
        }
    }
    log("ends");
}

QString mail_ios_uniform::relative_path(const QString &path) const
{
    return behind_source_root(path.trimmed());
}
