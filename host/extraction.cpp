#include "host/extraction.h"

#include "host/interrupt_watcher.h"
#include "host/ios_backup.h"
#include "host/progress_display.h"

#include <QElapsedTimer>

#include <memory>

namespace {

constexpr int engine_trawl_bench = 0;

struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info general_info_of(const run_request &request)
{
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_general_info info;
    info.debug_mode_status_bool = true;
    info.debug_print_in_file_bool = true;
    info.debug_encryption_status_bool = request.encipher_log;
    info.debug_file_path_QString = request.places.log_file;
    return info;
}

void describe_source(mail &plugin, const run_request &request)
{
    plugin.pub_set_source_info(request.source_info);
    plugin.pub_set_desktop_info(struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_desktop_info());
    plugin.pub_set_source_count(request.source_number);
    plugin.pub_set_essential_for_trawl_bench_extraction(request.tabs, QStringList());
    plugin.pub_set_extended_attributes_list(request.attributes);
}

// Out: null for a source that is no backup.
std::unique_ptr<ios_backup> open_backup(const run_request &request, const interrupt_watcher &watcher)
{
    return is_ios_backup(request)
               ? std::make_unique<ios_backup>(request.source_info.source_root_path_QString,
                                              request.places.result_directory, watcher.interrupt_flag())
               : nullptr;
}

void prepare_results(mail &plugin, const run_request &request)
{
    plugin.pub_set_result_directory(request.places.result_directory);
    plugin.pub_create_db_tables();
    plugin.pub_set_clear_db(request.clear_older_rows);
}

} // namespace

extraction_outcome extract(mail &plugin, const run_request &request)
{
    QElapsedTimer timer;
    timer.start();
    plugin.pub_set_essentials(); // first: it takes back what the others set, a cancel too
    plugin.pub_set_engine_type(engine_trawl_bench);
    const interrupt_watcher watcher(plugin);
    plugin.pub_set_general_info(general_info_of(request));
    describe_source(plugin, request);
    const std::unique_ptr<ios_backup> backup = open_backup(request, watcher);
    plugin.pub_set_ios_uid_backup_pointer(backup.get());
    prepare_results(plugin, request);

    // By name: the plug-in's own meta-object is hidden inside its library.
    progress_display progress(request.source, reported_tabs(request));
    QObject::connect(&plugin, SIGNAL(signal_extracted_records_of_plugin_overall(qint64)), &progress,
                     SLOT(slot_rows(qint64)));
    QObject::connect(&plugin, SIGNAL(signal_tab_processed_of_plugin_overall(int)), &progress, SLOT(slot_tabs(int)));

    plugin.pub_find_source_file();
    plugin.pub_extract_artifacts();
    const bool interrupted = watcher.was_interrupted();
    progress.finish();
    plugin.pub_generate_chat_html_pages();
    plugin.pub_remove_temporary_asthetics();
    return {interrupted, static_cast<double>(timer.elapsed()) / 1000.0};
}
