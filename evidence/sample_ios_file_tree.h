/// A whole iOS mail tree of any size, with what real ones hold: several accounts, percent-encoded mailboxes, mails that
/// stand in two of them, drafts, missing summaries, missing mail files.
#pragma once

#include "evidence/sqlite_file.h"

#include <QString>

namespace evidence {

struct sample_ios_file_tree_options
{
    qint64 message_count = 1000; ///< rows of "messages"
    uint64_t seed = 1;           ///< the same seed and options give the same tree
    sqlite_storage storage = sqlite_storage::plain;
    int emlx_text_characters = 600; ///< length of a mail's text, about
};

struct sample_ios_file_tree_summary
{
    qint64 messages = 0;
    qint64 mailboxes = 0;
    qint64 recipients = 0;
    qint64 emlx_files = 0;
    QString last_selected_account; ///< the id in MailboxCollections.plist
};

/// Writes the tree below the root. Failures throw evidence_error.
sample_ios_file_tree_summary write_sample_ios_file_tree(const QString &root,
                                                        const sample_ios_file_tree_options &options);

} // namespace evidence
