// Settings of the extractor. It reads no source yet: it finds and extracts nothing.
#include "windows/mail_winos.h"

mail_winos::mail_winos(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_winos(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_winos(count); })
{
}

void mail_winos::winos_set_source_info(const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info &source_info)
{
    store_source_info(source_info);
    for (const struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_system_account &account : source_info.system_account_QList) {
        system_and_domain_user_QStringList << account.system_user << account.domain_user;
    }
    system_and_domain_user_QStringList.removeDuplicates();
    system_and_domain_user_QStringList.removeAll(QString());
}

void mail_winos::winos_find_artifacts_source() {}

void mail_winos::winos_extract_artifacts()
{
    run_extraction([] {});
}
