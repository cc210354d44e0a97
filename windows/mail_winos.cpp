// Settings, sources and driver of the extractor: where the stores of each user stand, and the order of the tabs. Fills
// no table itself.
#include "windows/mail_winos.h"

#include "windows/body_rows.h"
#include "windows/mail_store_rows.h"
#include "windows/specific_table_readers.h"

#include <QScopeGuard>

namespace {

// The tables of the mail application's own store, as edb_data_parse() counts them.
constexpr int mail_attachment_table = 0;
constexpr int mail_conversation_table = 1;
constexpr int mail_message_table = 2;

constexpr const char *not_found = "FILE NOT EXISTS----  ";

} // namespace

mail_winos::mail_winos(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_winos(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_winos(count); })
{
}

mail_winos::~mail_winos() = default;

void mail_winos::winos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
{
    store_source_info(source_info);
    source = source_boundary(source_root_path_QString);
    for (const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account &account : source_info.system_account_QList) {
        user_folder_QStringList << account.system_user << account.domain_user;
    }
    user_folder_QStringList.removeDuplicates();
    user_folder_QStringList.removeAll(QString());
}

void mail_winos::winos_find_artifacts_source()
{
    find_source_file();
}

void mail_winos::find_source_file()
{
    static constexpr operation_log log{"void mail_winos::find_source_file()"};
    log("[find_source_file]---STARTS---");
    struct source_candidate
    {
        const char *path; // below the profile of a user
        QStringList mail_winos::*list;
        const char *not_found_line;
    };
    // clang-format off
    static constexpr source_candidate candidates[] = {
        {"/AppData/Local/Comms/Unistore/data/",         &mail_winos::unistore_data_folder_QStringList,   not_found},
        {"/AppData/Local/Comms/Unistore/data/7/",       &mail_winos::unistore_data_7_folder_QStringList, not_found},
        {"/AppData/Local/Comms/UnistoreDB/store.vol",   &mail_winos::store_vol_file_QStringList,         not_found},
        {"/AppData/Local/Packages/microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/",
         &mail_winos::local_state_folder_QStringList, "[find_source_file] FILE NOT EXISTS----  "},
    };
    // clang-format on
    for (const source_candidate &candidate : candidates) {
        (this->*candidate.list).clear();
    }
    for (const QString &user : qAsConst(user_folder_QStringList)) {
        const QString profile = source_root_path_QString + QLatin1String("Users/") + user;
        for (const source_candidate &candidate : candidates) {
            const QString path = profile + QLatin1String(candidate.path);
            if (source.contains(path)) {
                (this->*candidate.list).append(path);
            } else {
                log(candidate.not_found_line, path);
            }
        }
    }
    log("[find_source_file]---ENDS---");
}

void mail_winos::winos_extract_artifacts()
{
    run_extraction([this] { extract_plugin_artifacts(); });
}

void mail_winos::extract_plugin_artifacts()
{
    static constexpr operation_log log{"void mail_winos::extract_plugin_artifacts()"};
    log("[extract_plugins_artifacts] starts");
    const auto forget_stores = qScopeGuard([this] {
        recipients_of_store.clear();
        attachments_of_store.clear();
    });
    if (!has_engine() || extract_selected_tabs()) {
        log("[extract_plugins_artifacts] ends");
    }
}

// A cancel ends the writer that it meets. The tabs behind it are still begun, and end in their first loop.
bool mail_winos::extract_selected_tabs()
{
    struct tab
    {
        const char *name;
        bool (mail_winos::*extract)();
    };
    // clang-format off
    static constexpr tab tabs[] = {
        {"appointments",               &mail_winos::extract_counted_tab<&mail_winos::extract_appointments>},
        {"all_attachments",            &mail_winos::extract_all_attachments_tab},
        {"messages",                   &mail_winos::extract_messages_tab},
        {"contacts",                   &mail_winos::extract_counted_tab<&mail_winos::extract_contacts>},
        {"call_history",               &mail_winos::extract_counted_tab<&mail_winos::extract_call_history>},
        {"mail_data",                  &mail_winos::extract_counted_tab<&mail_winos::extract_mail_data>},
        {"received_attachments_files", &mail_winos::extract_counted_tab<&mail_winos::extract_received_attachments_files>},
        {"mailconversation",           &mail_winos::extract_counted_tab<&mail_winos::extract_mail_conversations>},
    };
    // clang-format on
    for (const tab &candidate : tabs) {
        if (is_selected(QString::fromLatin1(candidate.name)) && !(this->*candidate.extract)()) {
            return false;
        }
    }
    return true;
}

template <void (mail_winos::*extract)()>
bool mail_winos::extract_counted_tab()
{
    (this->*extract)();
    report_records();
    finish_tab();
    return true;
}

void mail_winos::extract_mail_conversations()
{
    edb_data_parse(mail_conversation_table);
}

// Hosts do not expect this tab among the finished ones: it is reported, not counted.
bool mail_winos::extract_all_attachments_tab()
{
    extract_sent_attachments();
    report_records();
    if (cancel_extraction_bool) {
        return false;
    }
    extract_received_attachments();
    attachments_of_store.clear(); // no writer behind this one reads them
    if (!is_selected(QStringLiteral("messages"))) {
        recipients_of_store.clear();
    }
    report_records();
    if (cancel_extraction_bool) {
        return false;
    }
    edb_data_parse(mail_attachment_table);
    report_records();
    return !cancel_extraction_bool;
}

bool mail_winos::extract_messages_tab()
{
    extract_messages();
    recipients_of_store.clear(); // no writer behind this one reads them
    report_records();
    if (cancel_extraction_bool) {
        return false;
    }
    edb_data_parse(mail_message_table);
    report_records();
    finish_tab();
    return true;
}
