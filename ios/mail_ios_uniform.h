/// The extractor of the scheme "iOS_Uniform": the mail indexes and the account of an iOS file tree.
#pragma once

#include "core/extractor_frame.h"

class mail_ios_uniform : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_ios_uniform(QWidget *parent);

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void ios_uniform_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void ios_uniform_set_record_count(qint64 count) { record_count_qint64 = count; }
    void ios_uniform_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void ios_uniform_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void ios_uniform_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    void ios_uniform_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
    {
        store_source_info(source_info);
    }
    /// Clears the cancel flag.
    void ios_uniform_set_essentials() { cancel_extraction_bool = false; }
    void ios_uniform_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void ios_uniform_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                              const QString &destination_db_path)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    void ios_uniform_set_essential_for_trawl_bench_extraction(const QStringList &tabs)
    {
        selected_tabs_QStringList = tabs;
    }
    void ios_uniform_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void ios_uniform_cancel_extraction() { cancel_extraction_bool = true; }
    void ios_uniform_set_source_count(int source_count) { source_count_int = source_count; }

    /// Finds the source files below the source root.
    void ios_uniform_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void ios_uniform_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_ios_uniform(qint64 records);
    void signal_total_tabs_processed_ios_uniform(int count);

private:
    // --- Sources and driver: mail_ios_uniform.cpp --------------------------------------------------------------------
    void find_source_file();
    void extract_plugin_artifacts();
    /// A path of the source as it stands in the rows: without the source root, with "/" in front; empty stays empty.
    QString relative_path(const QString &path) const;

    // --- Table messages: mail_ios_uniform_messages.cpp ---------------------------------------------------------------
    void extract_mail_messages();

    // --- Table accounts: mail_ios_uniform_accounts.cpp ---------------------------------------------------------------
    void xcode_extract_mail_accounts();

    // Full paths; empty unless the file was found.
    QString source_file_mailbox_collections_QString;
    QString source_file_accounts_QString;
    QString source_file_envelope_index_QString;
    QString source_file_protected_index_QString;
};
