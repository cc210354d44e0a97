/// A macOS volume of any size with the mail of several users, with what real ones hold: several accounts and scripts,
/// drafts, mails without a file, partial mails with their attachments beside, opened attachments.
#pragma once

#include "evidence/sqlite_file.h"

#include <QString>
#include <QStringList>

namespace evidence {

struct sample_macos_mail_tree_options
{
    qint64 message_count = 1000; ///< rows of "messages" in all indexes together
    qint64 emlx_count = -1; ///< mail files, spread evenly over the messages; negative: one for nearly every message
    uint64_t seed = 1;      ///< the same seed and options give the same tree
    sqlite_storage storage = sqlite_storage::plain;
    bool is_single_store = false; ///< everything in one V6 store, nothing beside it
};

struct sample_macos_mail_tree_summary
{
    QStringList users;
    qint64 stores = 0;
    qint64 messages = 0;
    qint64 recipients = 0;
    qint64 attachments = 0; ///< rows of the indexes
    qint64 emlx_files = 0;
    qint64 attachment_files = 0;
    qint64 opened_attachments = 0; ///< files in the folders of opened attachments and elements of the lists
};

/// Writes the tree below the root. Failures throw evidence_error.
sample_macos_mail_tree_summary write_sample_macos_mail_tree(const QString &root,
                                                            const sample_macos_mail_tree_options &options);

} // namespace evidence
