/// The mail application's own store of a Windows profile, of any size, with the files that it names; and the body files
/// of a UniStore.
#pragma once

#include "evidence/windows_profile.h"

#include <QtGlobal>

#include <cstdint>

namespace evidence {

struct sample_windows_mail_store_options
{
    qint64 message_count = 1000; ///< records of "MailMessage"; a third as many conversations and attachments
    qint64 eml_count = -1;       ///< mail files, of the first messages; negative: one a message
    uint64_t seed = 1;
    ese_file_options store_format;
};

struct sample_windows_mail_store_summary
{
    qint64 eml_files = 0;
    qint64 attachment_files = 0;
};

/// Writes the database, its mail files of 2 to 30 KB, and files for two of three attachments into the package folder.
sample_windows_mail_store_summary write_sample_windows_mail_store(windows_profile &profile,
                                                                  const sample_windows_mail_store_options &options);

/// Writes that many HTML files of 1 to 20 KB beside the UniStore.
void write_sample_html_bodies(windows_profile &profile, qint64 count, uint64_t seed);

} // namespace evidence
