// Settings of the extractor. Fills no table itself.
#include "macos/mail_macos.h"

mail_macos::mail_macos(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_macos(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_macos(count); })
{
}

void mail_macos::macos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
{
    store_source_info(source_info);
    source = source_boundary(source_root_path_QString);
    for (const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account &account : source_info.system_account_QList) {
        system_user_QStringList.append(account.system_user);
    }
    system_user_QStringList.removeDuplicates();
    system_user_QStringList.removeAll(QString());
}

void mail_macos::macos_set_essential_for_trawl_bench_extraction(const QStringList &tabs)
{
    selected_tabs_QStringList = tabs;
    selected_tabs_QStringList.append(QStringLiteral("emlx_parser_data"));
}
