// Settings of the extractor. It reads no source yet: it finds and extracts nothing.
#include "ios/mail_ios_uid.h"

mail_ios_uid::mail_ios_uid(QWidget *parent)
    : extractor_frame(
          parent, [this](qint64 records) { Q_EMIT signal_extracted_records_of_plugin_ios_uid(records); },
          [this](int count) { Q_EMIT signal_total_tabs_processed_ios_uid(count); })
{
}

void mail_ios_uid::ios_uid_find_artifacts_source() {}

void mail_ios_uid::ios_uid_extract_artifacts()
{
    run_extraction([] {});
}
