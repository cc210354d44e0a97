/// The extractor of the scheme "winOS": the mail data of a Windows user profile.
#pragma once

#include "core/extractor_frame.h"

class mail_winos : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_winos(QWidget *parent);

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void winos_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void winos_set_record_count(qint64 count) { record_count_qint64 = count; }
    void winos_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void winos_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void winos_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    /// Takes over users and domains of the source as well.
    void winos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    /// Clears the cancel flag.
    void winos_set_essentials() { cancel_extraction_bool = false; }
    void winos_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void winos_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                        const QString &destination_db_path)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    void winos_set_essential_for_trawl_bench_extraction(const QStringList &tabs) { selected_tabs_QStringList = tabs; }
    void winos_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void winos_cancel_extraction() { cancel_extraction_bool = true; }
    void winos_set_source_count(int source_count) { source_count_int = source_count; }

    /// Finds the source files below the source root.
    void winos_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void winos_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_winos(qint64 records);
    void signal_total_tabs_processed_winos(int count);

private:
    QStringList system_and_domain_user_QStringList; // users and domains of all sources so far, each once
};
