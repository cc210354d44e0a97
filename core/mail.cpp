// The plug-in object: hands the host's settings to the four extractors, dispatches on the scheme and relays progress.
// Fills no table itself; the result database stands in mail_result_database.cpp.
#include "core/mail.h"

#include "core/operation_log.h"
#include "core/unreadable_sources.h"
#include "ios/mail_ios_uid.h"
#include "ios/mail_ios_uniform.h"
#include "macos/mail_macos.h"
#include "services/plugin_helper_functions.h"
#include "ui_mail.h"
#include "windows/mail_winos.h"

// What a source's os_scheme_internal_QString must read, and whom it reaches then.
const std::array<mail::scheme, 4> mail::schemes{{
    {"macOS", [](mail &m) { m.mail_macos_obj->macos_find_artifacts_source(); },
     [](mail &m) { m.mail_macos_obj->macos_extract_artifacts(); }},
    {"iOS_UID", [](mail &m) { m.mail_ios_uid_obj->ios_uid_find_artifacts_source(); },
     [](mail &m) { m.mail_ios_uid_obj->ios_uid_extract_artifacts(); }},
    {"iOS_Uniform", [](mail &m) { m.mail_ios_uniform_obj->ios_uniform_find_artifacts_source(); },
     [](mail &m) { m.mail_ios_uniform_obj->ios_uniform_extract_artifacts(); }},
    {"winOS", [](mail &m) { m.mail_winos_obj->winos_find_artifacts_source(); },
     [](mail &m) { m.mail_winos_obj->winos_extract_artifacts(); }},
}};

// What no operation has a failure line for.
static void log_unreadable_source(const QString &path, const QString &error_text)
{
    constexpr operation_log log("source_files::read");
    log.failure({"cannot be read ----FAILED----", "ERROR :- "}, path, error_text);
}

mail::mail(QWidget *parent) : QFrame(parent), ui(std::make_unique<Ui_mail>())
{
    ui->setupUi(this);

    mail_macos_obj = new mail_macos(this);
    connect(mail_macos_obj, &mail_macos::signal_extracted_records_of_plugin_macos, this,
            &mail::slot_extracted_records_of_plugin);
    connect(mail_macos_obj, &mail_macos::signal_total_tabs_processed_macos, this, &mail::slot_total_tabs_processed);

    mail_ios_uid_obj = new mail_ios_uid(this);
    connect(mail_ios_uid_obj, &mail_ios_uid::signal_extracted_records_of_plugin_ios_uid, this,
            &mail::slot_extracted_records_of_plugin);
    connect(mail_ios_uid_obj, &mail_ios_uid::signal_total_tabs_processed_ios_uid, this,
            &mail::slot_total_tabs_processed);

    mail_ios_uniform_obj = new mail_ios_uniform(this);
    connect(mail_ios_uniform_obj, &mail_ios_uniform::signal_extracted_records_of_plugin_ios_uniform, this,
            &mail::slot_extracted_records_of_plugin);
    connect(mail_ios_uniform_obj, &mail_ios_uniform::signal_total_tabs_processed_ios_uniform, this,
            &mail::slot_total_tabs_processed);

    mail_winos_obj = new mail_winos(this);
    connect(mail_winos_obj, &mail_winos::signal_extracted_records_of_plugin_winos, this,
            &mail::slot_extracted_records_of_plugin);
    connect(mail_winos_obj, &mail_winos::signal_total_tabs_processed_winos, this, &mail::slot_total_tabs_processed);

    plugin_helper_obj = std::make_unique<plugin_helper_functions>(this);
}

mail::~mail() = default;

// The host hands its records over by value; the operations keep that shape.
// NOLINTBEGIN(performance-unnecessary-value-param)

// --- Settings of the host --------------------------------------------------------------------------------------------

void mail::pub_set_engine_type(int engine_type)
{
    engine_type_int = engine_type;
    plugin_static_function::set_engine_type(engine_type);
    mail_macos_obj->macos_set_engine_type(engine_type);
    mail_ios_uid_obj->ios_uid_set_engine_type(engine_type);
    mail_ios_uniform_obj->ios_uniform_set_engine_type(engine_type);
    mail_winos_obj->winos_set_engine_type(engine_type);

    const QString name = pub_get_artifact_name();
    mail_macos_obj->macos_set_plugin_name(name);
    mail_ios_uid_obj->ios_uid_set_plugin_name(name);
    mail_ios_uniform_obj->ios_uniform_set_plugin_name(name);
    mail_winos_obj->winos_set_plugin_name(name);
}

QString mail::pub_get_artifact_name()
{
    return artifact_name();
}

QString mail::artifact_name() const
{
    return tr("Mail");
}

void mail::pub_set_essentials()
{
    cancel_extraction_bool = false;
    record_count_qint64 = 0;
    tab_processed_count_int = 0;
    plugin_static_function::set_essentials();
    plugin_helper_obj->set_essentials();
    mail_macos_obj->macos_set_essentials();
    mail_ios_uid_obj->ios_uid_set_essentials();
    mail_ios_uniform_obj->ios_uniform_set_essentials();
    mail_winos_obj->winos_set_essentials();
}

void mail::pub_set_source_count(int source_count)
{
    mail_macos_obj->macos_set_source_count(source_count);
    mail_ios_uid_obj->ios_uid_set_source_count(source_count);
    mail_ios_uniform_obj->ios_uniform_set_source_count(source_count);
    mail_winos_obj->winos_set_source_count(source_count);
    plugin_static_function::set_source_count(source_count);
}

void mail::pub_set_ios_uid_backup_pointer(ios_uid_backup_parser *backup_parser)
{
    mail_ios_uid_obj->ios_uid_set_ios_backup_pointer(backup_parser);
}

void mail::pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info desktop_info)
{
    plugin_static_function::set_desktop_info(desktop_info);
    mail_macos_obj->macos_set_desktop_info(desktop_info);
    mail_ios_uid_obj->ios_uid_set_desktop_info(desktop_info);
    mail_ios_uniform_obj->ios_uniform_set_desktop_info(desktop_info);
    mail_winos_obj->winos_set_desktop_info(desktop_info);
}

void mail::pub_set_general_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general_info)
{
    plugin_static_function::set_general_info(general_info);
    mail_macos_obj->macos_set_general_info(general_info);
    mail_ios_uid_obj->ios_uid_set_general_info(general_info);
    mail_ios_uniform_obj->ios_uniform_set_general_info(general_info);
    mail_winos_obj->winos_set_general_info(general_info);
}

void mail::pub_set_source_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source_info)
{
    os_scheme_internal_QString = source_info.os_scheme_internal_QString;
    tell_unreadable_sources_to(log_unreadable_source);
    plugin_static_function::set_source_info(source_info);
    mail_macos_obj->macos_set_source_info(source_info);
    mail_ios_uid_obj->ios_uid_set_source_info(source_info);
    mail_ios_uniform_obj->ios_uniform_set_source_info(source_info);
    mail_winos_obj->winos_set_source_info(source_info);
}

void mail::pub_set_essential_for_trawl_bench_extraction(QStringList selected_tabs, QStringList)
{
    selected_tabs_QStringList = selected_tabs;
    mail_macos_obj->macos_set_essential_for_trawl_bench_extraction(selected_tabs);
    mail_ios_uid_obj->ios_uid_set_essential_for_trawl_bench_extraction(selected_tabs);
    mail_ios_uniform_obj->ios_uniform_set_essential_for_trawl_bench_extraction(selected_tabs);
    mail_winos_obj->winos_set_essential_for_trawl_bench_extraction(selected_tabs);
}

void mail::pub_set_result_directory(QString directory)
{
    set_destination_location(directory);
}

void mail::pub_set_extended_attributes_list(QStringList extended_attributes)
{
    mail_macos_obj->macos_set_extended_attributes_list(extended_attributes);
}

// NOLINTEND(performance-unnecessary-value-param)

// --- The run ---------------------------------------------------------------------------------------------------------

void mail::pub_create_db_tables()
{
    create_destination_database();
}

void mail::pub_set_clear_db(bool clear)
{
    if (clear) {
        clear_db_tables();
    }
}

void mail::pub_cancel_extraction()
{
    cancel_extraction_bool = true;
    mail_macos_obj->macos_cancel_extraction();
    mail_ios_uid_obj->ios_uid_cancel_extraction();
    mail_ios_uniform_obj->ios_uniform_cancel_extraction();
    mail_winos_obj->winos_cancel_extraction();
    plugin_static_function::set_cancel_extraction(true);
    plugin_helper_obj->set_cancel_extraction(true);
}

void mail::pub_find_source_file()
{
    if (const scheme *matched = matched_scheme("virtual void mail::pub_find_source_file()")) {
        matched->find_source_file(*this);
    }
}

void mail::pub_extract_artifacts()
{
    static constexpr operation_log log{"virtual void mail::pub_extract_artifacts()"};
    log("START");
    Q_EMIT signal_extracted_records_of_plugin_overall(0);

    mail_macos_obj->macos_set_plugin_helper_obj(plugin_helper_obj.get());
    mail_macos_obj->macos_set_record_count(record_count_qint64);
    mail_macos_obj->macos_set_tab_processed_count(tab_processed_count_int);
    mail_ios_uid_obj->ios_uid_set_plugin_helper_obj(plugin_helper_obj.get());
    mail_ios_uid_obj->ios_uid_set_record_count(record_count_qint64);
    mail_ios_uid_obj->ios_uid_set_tab_processed_count(tab_processed_count_int);
    mail_ios_uniform_obj->ios_uniform_set_plugin_helper_obj(plugin_helper_obj.get());
    mail_ios_uniform_obj->ios_uniform_set_record_count(record_count_qint64);
    mail_ios_uniform_obj->ios_uniform_set_tab_processed_count(tab_processed_count_int);
    mail_winos_obj->winos_set_plugin_helper_obj(plugin_helper_obj.get());
    mail_winos_obj->winos_set_record_count(record_count_qint64);
    mail_winos_obj->winos_set_tab_processed_count(tab_processed_count_int);

    if (const scheme *matched = matched_scheme("virtual void mail::pub_extract_artifacts()")) {
        if (cancel_extraction_bool) {
            return;
        }
        matched->extract_artifacts(*this);
    }
    Q_EMIT signal_extracted_records_of_plugin_overall(record_count_qint64);
    log("END");
}

void mail::pub_generate_chat_html_pages() {}

void mail::pub_remove_temporary_asthetics()
{
    plugin_static_function::remove_directory(tmp_directory_QString);
    plugin_static_function::close_debug_file();
}

const mail::scheme *mail::matched_scheme(const char *signature) const
{
    for (const scheme &candidate : schemes) {
        if (os_scheme_internal_QString == QLatin1String(candidate.internal_name)) {
            return &candidate;
        }
    }
    if (!plugin_static_function::is_debug_on()) {
        return nullptr;
    }
    const operation_log log{signature};
    log("------FAILED------- supported os scheme internal not matched, received os scheme internal =  ",
        os_scheme_internal_QString + QLatin1String(", plugin name is ") + artifact_name());
    return nullptr;
}

// --- Progress --------------------------------------------------------------------------------------------------------

void mail::slot_extracted_records_of_plugin(qint64 rec)
{
    record_count_qint64 = rec;
    Q_EMIT signal_extracted_records_of_plugin_overall(record_count_qint64);
}

void mail::slot_total_tabs_processed(int tab_count)
{
    tab_processed_count_int = tab_count;
    Q_EMIT signal_tab_processed_of_plugin_overall(tab_processed_count_int);
}
