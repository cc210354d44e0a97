/// The extractor of the scheme "macOS": the mail store and the mail configuration of each user.
#pragma once

#include "core/extractor_frame.h"
#include "services/property_list.h"

class mail_macos : public extractor_frame
{
    Q_OBJECT

public:
    explicit mail_macos(QWidget *parent);

    // --- What the plug-in object hands on; plain stores unless said otherwise ----------------------------------------
    void macos_set_plugin_helper_obj(plugin_helper_functions *helper) { plugin_helper_obj = helper; }
    void macos_set_record_count(qint64 count) { record_count_qint64 = count; }
    void macos_set_tab_processed_count(int count) { tab_processed_count_int = count; }
    /// Keeps nothing.
    void macos_set_desktop_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info &) {}
    /// Keeps nothing.
    void macos_set_general_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info &) {}
    /// Takes over the users of the source as well.
    void macos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    /// Clears the cancel flag.
    void macos_set_essentials() { cancel_extraction_bool = false; }
    void macos_set_plugin_name(const QString &name) { plugin_name_QString = name.trimmed(); }
    void macos_set_destination_location(const QString &result_directory, const QString &tmp_directory,
                                        const QString &destination_db_path, const QString &, const QString &,
                                        const QString &)
    {
        store_destination_location(result_directory, tmp_directory, destination_db_path);
    }
    /// Keeps the list with the tab "emlx_parser_data" behind it.
    void macos_set_essential_for_trawl_bench_extraction(const QStringList &tabs);
    void macos_set_engine_type(int engine_type) { engine_type_int = engine_type; }
    void macos_cancel_extraction() { cancel_extraction_bool = true; }
    void macos_set_source_count(int source_count) { source_count_int = source_count; }
    void macos_set_extended_attributes_list(const QStringList &names) { extended_attributes_QStringList = names; }

    /// Finds the source files below the source root.
    void macos_find_artifacts_source();
    /// Extracts the selected tabs and reports the final record count.
    void macos_extract_artifacts();

Q_SIGNALS:
    void signal_extracted_records_of_plugin_macos(qint64 records);
    void signal_total_tabs_processed_macos(int count);

protected:
    // --- Property lists: mail_macos_property_readers.cpp -------------------------------------------------------------
    // Readers of one key of a dictionary, giving a row text: the label, ":+:" and the value. A key that is missing, or
    // holds a value of another kind, gives an empty text; a present one at least the label and ":+:".

    /// The trimmed text.
    QString get_prefs_nsstring_values(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;
    /// A number cut towards zero: 0 is "NO", 1 is "YES", any other has nothing behind the label.
    QString get_prefs_nsnumber_values(const QString &key, const property_list_value &dictionary,
                                      const QString &label) const;
    /// The elements of a list of texts, trimmed, joined by ";". Empty when the extraction was cancelled.
    QString get_prefs_nsarray_values(const QString &key, const property_list_value &dictionary,
                                     const QString &label) const;

private:
    QStringList system_user_QStringList; // users of all sources so far, each once
    QStringList extended_attributes_QStringList;
};
