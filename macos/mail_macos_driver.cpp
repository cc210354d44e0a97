// Driver: the order of the tabs, and which operation reads which source files. Fills no table itself; rows that serve
// another tab only are made before it and deleted behind it.
#include "core/operation_log.h"
#include "macos/mail_macos.h"

namespace {

constexpr operation_log log_of_driver{"void mail_macos::extract_plugin_artifacts()"};

constexpr const char *delete_signatures = "delete from signature";
constexpr const char *delete_messages = "delete from messages";
constexpr const char *delete_emlx_list = "delete from emlx_list";

// The first of the folders below the home that stands inside the source; the last where none does.
QString first_existing(const source_boundary &source, const QString &home, std::initializer_list<const char *> folders)
{
    QString path;
    for (const char *folder : folders) {
        path = home + QLatin1String(folder);
        if (source.contains(path)) {
            break;
        }
    }
    return path;
}

} // namespace

void mail_macos::macos_extract_artifacts()
{
    run_extraction([this] { extract_plugin_artifacts(); });
}

void mail_macos::extract_plugin_artifacts()
{
    log_of_driver("[extract_plugin_artifacts] starts");
    have_messages_run = false;
    message_rows_of_index.clear();
    if (has_engine() && (!extract_selected_tabs() || cancel_extraction_bool)) {
        return;
    }
    log_of_driver("[extract_plugin_artifacts] ends");
}

// The order is fixed: accounts join the rows of signature, messages those of accounts, attachments those of messages.
bool mail_macos::extract_selected_tabs()
{
    struct tab
    {
        const char *name;
        bool (mail_macos::*extract)();
    };
    // clang-format off
    static constexpr tab tabs[] = {
        {"signature",        &mail_macos::extract_signature_tab},
        {"accounts",         &mail_macos::extract_accounts_tab},
        {"vip_contacts",     &mail_macos::extract_vip_contacts_tab},
        {"rules",            &mail_macos::extract_rules_tab},
        {"smart_mailboxes",  &mail_macos::extract_smart_mailboxes_tab},
        {"preferences",      &mail_macos::extract_preferences_tab},
        {"messages",         &mail_macos::extract_messages_tab},
        {"all_attachments",  &mail_macos::extract_all_attachments_tab},
        {"open_attachments", &mail_macos::extract_open_attachments_tab},
    };
    // clang-format on
    for (const tab &candidate : tabs) {
        if (!is_selected(QString::fromLatin1(candidate.name))) {
            continue;
        }
        if (!(this->*candidate.extract)()) {
            return false;
        }
        finish_tab();
    }
    return true;
}

// Hands each file and its user to an extraction step, and reports the records behind it.
template <typename operation>
bool mail_macos::for_each_source(const QStringList &files, operation extract)
{
    for (const QString &file : files) {
        if (cancel_extraction_bool) {
            return false;
        }
        extract(file, extract_user_name_from_plist(file));
        report_records();
    }
    return true;
}

// --- Configuration tabs ----------------------------------------------------------------------------------------------

bool mail_macos::extract_signatures(const QStringList &files, std::initializer_list<const char *> signature_folders)
{
    return for_each_source(files, [&](const QString &file, const QString &user) {
        const QString home = source_root_path_QString + QLatin1String("Users/") + user;
        xcode_extract_allsignature(file, user, destination_db_path_QString, source_root_path_QString,
                                   first_existing(source, home, signature_folders));
    });
}

bool mail_macos::update_signatures(const QStringList &files)
{
    return for_each_source(files, [this](const QString &file, const QString &user) {
        xcode_extract_updatesignature(file, user, destination_db_path_QString, source_root_path_QString);
    });
}

bool mail_macos::extract_signature_tab()
{
    count_signature_rows_bool = true;
    return extract_signatures(all_signatures_plist_v3_QStringList, {"/Library/Mail/V3/MailData/Signatures/"}) &&
           update_signatures(accounts_map_plist_v3_QStringList) &&
           extract_signatures(all_signatures_plist_v4_QStringList, {"/Library/Mail/V4/MailData/Signatures/"}) &&
           update_signatures(accounts_map_plist_v4_QStringList) &&
           extract_signatures(all_signatures_plist_v5_to_v9_QStringList,
                              {"/Library/Mail/V5/MailData/Signatures/", "/Library/Mail/V6/MailData/Signatures/",
                               "/Library/Mail/V7/MailData/Signatures/", "/Library/Mail/V8/MailData/Signatures/",
                               "/Library/Mail/V9/MailData/Signatures/"}) &&
           update_signatures(accounts_map_plist_v5_to_v9_QStringList);
}

// The signatures of V3 for the join of the accounts. Cancelled behind one of them, none stay.
bool mail_macos::extract_signatures_of_v3_for_accounts()
{
    const auto one_by_one = [this](const QStringList &files, auto extract) {
        for (const QString &file : files) {
            if (!extract(QStringList{file})) {
                return false;
            }
            if (cancel_extraction_bool) {
                delete_rows(delete_signatures);
                return false;
            }
        }
        return true;
    };
    return one_by_one(all_signatures_plist_v3_QStringList,
                      [this](const QStringList &file) {
                          return extract_signatures(file, {"/Library/Mail/V3/MailData/Signatures/"});
                      }) &&
           one_by_one(accounts_map_plist_v3_QStringList,
                      [this](const QStringList &file) { return update_signatures(file); });
}

bool mail_macos::extract_accounts(const QStringList &mail_folders, const QStringList &databases,
                                  bool deletes_signatures_when_cancelled)
{
    for (int position = 0; position < mail_folders.size(); ++position) {
        if (cancel_extraction_bool) {
            return false;
        }
        const QString &folder = mail_folders.at(position);
        extract_accounts_for_11_12(folder, databases.value(position), extract_user_name_from_plist(folder), position);
        report_records();
        if (cancel_extraction_bool && deletes_signatures_when_cancelled) {
            delete_rows(delete_signatures);
            return false;
        }
    }
    return true;
}

bool mail_macos::extract_accounts_tab()
{
    const bool needs_signatures = !is_selected(QStringLiteral("signature"));
    if (needs_signatures) {
        count_signature_rows_bool = false;
        if (!extract_signatures_of_v3_for_accounts()) {
            return false;
        }
    }
    if (!extract_accounts(mail_folder_v3_QStringList, accounts3_db_QStringList, true)) {
        return false;
    }
    if (needs_signatures &&
        (!extract_signatures(all_signatures_plist_v4_QStringList, {"/Library/Mail/V4/MailData/Signatures/"}) ||
         !update_signatures(accounts_map_plist_v4_QStringList))) {
        return false;
    }
    if (!extract_accounts(mail_folder_v4_to_v9_QStringList, accounts4_db_QStringList, false)) {
        return false;
    }
    if (needs_signatures &&
        (!extract_signatures(all_signatures_plist_v5_to_v9_QStringList, {"/Library/Mail/V5/MailData/Signatures/"}) ||
         !update_signatures(accounts_map_plist_v5_to_v9_QStringList))) {
        return false;
    }
    if (!for_each_source(accounts_plist_v2_QStringList, [this](const QString &file, const QString &user) {
            extract_xcode_accounts(source_root_path_QString, file, user, destination_db_path_QString);
        })) {
        return false;
    }
    if (needs_signatures) {
        delete_rows(delete_signatures);
    }
    return true;
}

bool mail_macos::extract_vip_contacts_tab()
{
    const auto extract = [this](const QString &file, const QString &user) {
        xcode_extract_vip_list(file, user, destination_db_path_QString, source_root_path_QString);
    };
    return for_each_source(vip_plist_v3_QStringList, extract) &&
           for_each_source(vip_plist_v4_to_v6_QStringList, extract) &&
           for_each_source(vip_plist_v7_to_v9_QStringList, [this](const QString &file, const QString &user) {
               xcode_extract_vip_list_15(file, user, destination_db_path_QString, source_root_path_QString);
           });
}

bool mail_macos::extract_rules_tab()
{
    const auto extract = [this](const QString &file, const QString &user) {
        xcode_extract_syncedrule(file, user, destination_db_path_QString, source_root_path_QString);
    };
    return for_each_source(synced_rules_plist_v3_QStringList, extract) &&
           for_each_source(synced_rules_plist_v4_to_v9_QStringList, extract);
}

bool mail_macos::extract_smart_mailboxes_tab()
{
    const auto extract = [this](const QString &file, const QString &user) {
        xcode_extract_smartbox(file, user, destination_db_path_QString, source_root_path_QString);
    };
    return for_each_source(smart_mailboxes_plist_v3_QStringList, extract) &&
           for_each_source(smart_mailboxes_plist_v4_to_v9_QStringList, extract);
}

bool mail_macos::extract_preferences_tab()
{
    return for_each_source(mail_preferences_plist_QStringList,
                           [this](const QString &file, const QString &user) {
                               xcode_extract_preferences(file, user, destination_db_path_QString,
                                                         source_root_path_QString);
                           }) &&
           for_each_source(mail_shared_plist_QStringList, [this](const QString &file, const QString &user) {
               xcode_extract_composing_addressing_prefs(file, user, destination_db_path_QString,
                                                        source_root_path_QString);
           });
}

// --- Messages and attachments ----------------------------------------------------------------------------------------

bool mail_macos::extract_messages_of_later_index(const QString &index, const QString &mail_folder,
                                                 bool stops_behind_emlx_list)
{
    count_message_rows_bool = true;
    current_index_v3_to_v9_QStringList = QStringList{index};
    extract_emlx_file_location_11(mail_folder);
    if (stops_behind_emlx_list && cancel_extraction_bool) {
        return false;
    }
    extract_messages_11_12();
    report_records();
    return !cancel_extraction_bool;
}

bool mail_macos::extract_messages_tab()
{
    for (const QString &index : qAsConst(envelope_index_v3_QStringList)) {
        if (cancel_extraction_bool ||
            !extract_messages_of_later_index(index, user_home_of(index) + QLatin1String("/Library/Mail/V3"), true)) {
            return false;
        }
    }
    for (const QString &index : qAsConst(envelope_index_v4_to_v9_QStringList)) {
        if (cancel_extraction_bool ||
            !extract_messages_of_later_index(index, mail_folder_of_later_index(index), false)) {
            return false;
        }
    }
    for (const QString &index : qAsConst(envelope_index_v2_QStringList)) {
        if (cancel_extraction_bool) {
            return false;
        }
        count_message_rows_bool = true;
        current_index_v2_QStringList = QStringList{index};
        extract_emlx_file_location();
        if (cancel_extraction_bool) {
            return false;
        }
        extract_messages();
        report_records();
        if (cancel_extraction_bool) {
            delete_rows(delete_emlx_list);
            return false;
        }
    }
    have_messages_run = !envelope_index_v3_QStringList.isEmpty() || !envelope_index_v4_to_v9_QStringList.isEmpty() ||
                        !envelope_index_v2_QStringList.isEmpty();
    return true;
}

bool mail_macos::extract_attachments_of_later_index(const QString &index, const QString &mail_folder)
{
    current_index_v3_to_v9_QStringList = QStringList{index};
    if (!have_messages_run) {
        count_message_rows_bool = false;
        extract_emlx_file_location_11(mail_folder);
        if (cancel_extraction_bool) {
            delete_rows(delete_emlx_list);
            return false;
        }
        extract_messages_11_12();
        if (cancel_extraction_bool) {
            delete_rows(delete_messages);
            return false;
        }
    }
    extract_allattachments_details_11_12();
    report_records();
    return finish_attachments_of_index();
}

bool mail_macos::extract_attachments_of_earlier_index(const QString &index)
{
    current_index_v2_QStringList = QStringList{index};
    if (!have_messages_run) {
        count_message_rows_bool = false;
        extract_emlx_file_location();
        if (cancel_extraction_bool) {
            delete_rows(delete_emlx_list);
        }
        extract_messages();
        if (cancel_extraction_bool) {
            delete_rows(delete_messages);
        }
    }
    extract_allattachments_details();
    report_records();
    return finish_attachments_of_index();
}

// Messages that only served the attachments are deleted; cancelled, all of them are.
bool mail_macos::finish_attachments_of_index()
{
    if (cancel_extraction_bool) {
        delete_rows(delete_messages);
        delete_rows(delete_emlx_list);
        return false;
    }
    if (!have_messages_run) {
        delete_rows(delete_messages);
    }
    return true;
}

bool mail_macos::extract_all_attachments_tab()
{
    for (const QString &index : qAsConst(envelope_index_v3_QStringList)) {
        if (cancel_extraction_bool ||
            !extract_attachments_of_later_index(index, user_home_of(index) + QLatin1String("/Library/Mail/V3"))) {
            return false;
        }
    }
    for (const QString &index : qAsConst(envelope_index_v4_to_v9_QStringList)) {
        if (!extract_attachments_of_later_index(index, mail_folder_of_later_index(index))) {
            return false;
        }
    }
    for (const QString &index : qAsConst(envelope_index_v2_QStringList)) {
        if (!extract_attachments_of_earlier_index(index)) {
            return false;
        }
    }
    return true;
}

bool mail_macos::extract_open_attachments_tab()
{
    const auto extract = [this](const QString &file, const QString &user) {
        extract_xcode_open_attachments(file, user, destination_db_path_QString, source_root_path_QString);
    };
    return for_each_source(
               mail_downloads_folder_QStringList,
               [this](const QString &folder, const QString &user) { extract_open_attachment_11_12(folder, user); }) &&
           for_each_source(opened_attachments_v2_plist_QStringList, extract) &&
           for_each_source(opened_attachments_plist_QStringList, extract);
}

// --- Users and folders of a source file ------------------------------------------------------------------------------

QString mail_macos::extract_user_name_from_plist(const QString &path) const
{
    return path.mid(source_root_path_QString.size()).split(QLatin1Char('/')).value(1);
}

QString mail_macos::user_home_of(const QString &index) const
{
    const QString user =
        plugin_static_function::extract_user_name_from_sourcefile(index, source_root_path_QString).system_user;
    return source_root_path_QString + QLatin1String("Users/") + user;
}

QString mail_macos::mail_folder_of_later_index(const QString &index) const
{
    return first_existing(source, user_home_of(index),
                          {"/Library/Mail/V9", "/Library/Mail/V8", "/Library/Mail/V7", "/Library/Mail/V6",
                           "/Library/Mail/V5", "/Library/Mail/V4"});
}

void mail_macos::delete_rows(const char *statement) const
{
    plugin_static_function::execute_db_command_by_dbpath(QString::fromLatin1(statement), destination_db_path_QString,
                                                         log_of_driver.signature_text());
}
