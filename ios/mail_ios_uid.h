/// The extractor of the scheme "iOS_UID": an iOS device backup, reached through the host's backup parser.
#pragma once

#include "core/extractor_frame.h"
#include "core/ios_uid_backup_parser.h"

class mail_ios_uid : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_ios_uid(QWidget *parent);

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void ios_uid_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void ios_uid_set_record_count(qint64 count) { record_count_qint64 = count; }
    void ios_uid_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void ios_uid_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void ios_uid_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    void ios_uid_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
    {
        store_source_info(source_info);
    }
    /// Clears the cancel flag.
    void ios_uid_set_essentials() { cancel_extraction_bool = false; }
    void ios_uid_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void ios_uid_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                          const QString &destination_db_path)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    void ios_uid_set_essential_for_trawl_bench_extraction(const QStringList &tabs) { selected_tabs_QStringList = tabs; }
    void ios_uid_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void ios_uid_cancel_extraction() { cancel_extraction_bool = true; }
    void ios_uid_set_source_count(int source_count) { source_count_int = source_count; }
    /// The host's object; it stays the host's.
    void ios_uid_set_ios_backup_pointer(ios_uid_backup_parser *parser) { backup_parser = parser; }

    /// Finds the source files below the source root.
    void ios_uid_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void ios_uid_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_ios_uid(qint64 records);
    void signal_total_tabs_processed_ios_uid(int count);

private:
    ios_uid_backup_parser *backup_parser = nullptr;
};
