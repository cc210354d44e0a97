#include "core/extractor_frame.h"

#include "core/operation_log.h"
#include "core/unreadable_sources.h"

#include <new>
#include <utility>

namespace {

// However fast the rows come, the host hears of them about once a second.
constexpr qint64 signal_interval_ms = 1001;

} // namespace

extractor_frame::extractor_frame(QWidget *parent, record_signal emit_records, tab_signal emit_tabs)
    : QWidget(parent), signal_timer_QElapsedTimer(std::make_unique<QElapsedTimer>()),
      signal_extracted_records(std::move(emit_records)), signal_total_tabs_processed(std::move(emit_tabs))
{
}

extractor_frame::~extractor_frame() = default;

void extractor_frame::store_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
{
    source_root_path_QString = source_info.source_root_path_QString;
    source_type_internal_QString = source_info.source_type_internal_QString;
    os_scheme_display_QString = source_info.os_scheme_display_QString;
}

void extractor_frame::store_destination_location(const QString &result_directory, const QString &tmp_directory,
                                                 const QString &destination_db_path)
{
    result_directory_QString = result_directory;
    tmp_directory_QString = tmp_directory;
    destination_db_path_QString = destination_db_path;
}

QString extractor_frame::behind_source_root(const QString &path) const
{
    const QString relative =
        path.startsWith(source_root_path_QString) ? path.mid(source_root_path_QString.size()) : path;
    return relative.startsWith(QLatin1Char('/')) || relative.trimmed().isEmpty() ? relative
                                                                                 : QLatin1Char('/') + relative;
}

void extractor_frame::run_extraction(const std::function<void()> &extract_plugin_artifacts)
{
    signal_timer_QElapsedTimer->start();
    try {
        extract_plugin_artifacts();
    } catch (const std::bad_alloc &) { // no exception reaches the host; the rows so far are committed on the way out
        static constexpr operation_log log{"void extractor_frame::run_extraction()"};
        log("memory for the evidence -----FAILED-----, the extraction ended early");
    }
    report_records();
}

bool extractor_frame::has_engine() const
{
    return engine_type_int >= 0 && engine_type_int <= 2;
}

void extractor_frame::count_row()
{
    ++record_count_qint64;
    if (signal_timer_QElapsedTimer->elapsed() >= signal_interval_ms) {
        signal_extracted_records(record_count_qint64);
        signal_timer_QElapsedTimer->restart();
    }
}

void extractor_frame::report_records()
{
    tell_unreadable_sources_anew(); // what the next operation cannot read is its failure, too
    signal_extracted_records(record_count_qint64);
}

void extractor_frame::finish_tab()
{
    ++tab_processed_count_int;
    signal_total_tabs_processed(tab_processed_count_int);
}
