/// What the four extractors share: the settings that the plug-in object hands on, the counters of a run and the two
/// rules of progress. Each extractor offers the setters under its own names, and hands the frame what emits its
/// signals.
#pragma once

#include "core/host_records.h"

#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <atomic>
#include <functional>
#include <memory>

class plugin_helper_functions;

class extractor_frame : public QWidget
{
public:
    /// A row for the record count: counts it and, at most about once a second, reports the count.
    void count_row();

protected:
    using record_signal = std::function<void(qint64)>;
    using tab_signal = std::function<void(int)>;

    extractor_frame(QWidget *parent, record_signal emit_records, tab_signal emit_tabs);
    ~extractor_frame() override;

    /// Keeps root path, internal type and display text of the source.
    void store_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info);
    void store_destination_location(const QString &result_directory, const QString &tmp_directory,
                                    const QString &destination_db_path);

    /// A path of the source as it stands in the rows: without the source root, with "/" in front; a path that does not
    /// begin with the root gets the "/" all the same, a blank one stays as it is.
    QString behind_source_root(const QString &path) const;

    /// Starts the clock of the throttled signal, runs the extractor's tabs, reports the final count. Evidence that is
    /// too large for the memory ends the run with a log line.
    void run_extraction(const std::function<void()> &extract_plugin_artifacts);
    /// One of the three engines; without one no tab runs.
    bool has_engine() const;
    bool is_selected(const QString &tab) const { return selected_tabs_QStringList.contains(tab); }
    /// An extraction step is over: reports the count, without looking at the clock.
    void report_records();
    /// A tab is over, with rows or without: counts and reports it.
    void finish_tab();

    qint64 record_count_qint64 = 0;
    int tab_processed_count_int = 0;
    std::unique_ptr<QElapsedTimer> signal_timer_QElapsedTimer;
    plugin_helper_functions *plugin_helper_obj = nullptr; // the plug-in object's
    QString tmp_directory_QString;
    QString destination_db_path_QString;
    QString result_directory_QString;
    QString source_root_path_QString;
    QString source_type_internal_QString;
    QString os_scheme_display_QString;
    int engine_type_int = -1;
    std::atomic<bool> cancel_extraction_bool{false};
    int source_count_int = -1;
    QStringList selected_tabs_QStringList;
    QString plugin_name_QString;

private:
    record_signal signal_extracted_records;
    tab_signal signal_total_tabs_processed;
};
