/// A whole Windows volume of any size, with what real ones hold: mails with their senders and receivers, attachments
/// whose names come again, contacts that are none, appointments, calls, the files of received attachments, HTML bodies,
/// and the mail application's own store with its mail files.
#pragma once

#include "evidence/ese_file.h"

#include <QString>
#include <QStringList>

namespace evidence {

struct sample_windows_profile_options
{
    qint64 message_count = 1000; ///< records of "Message"; three times as many of "Recipient", half as many attachments
    uint64_t seed = 1;           ///< the same seed and options give the same tree
    bool has_second_user = true; ///< who then has one of ten mails, in a store of his own
    bool has_mail_store = true;  ///< the mail application's own one and HTML bodies, each with a tenth as many mails
    ese_file_options store_format;
};

struct sample_windows_profile_summary
{
    QStringList users;
    qint64 messages = 0;
    qint64 recipients = 0;
    qint64 attachments = 0;
    qint64 contacts = 0;
    qint64 appointments = 0;
    qint64 calls = 0;
    qint64 attachment_files = 0;
    qint64 html_bodies = 0;
    qint64 eml_files = 0;
};

/// Writes the tree below the root. Failures throw evidence_error.
sample_windows_profile_summary write_sample_windows_profile(const QString &root,
                                                            const sample_windows_profile_options &options);

} // namespace evidence
