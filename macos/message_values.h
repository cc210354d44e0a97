/// The values of the table messages that both families of the macOS mail index give by the same rules.
#pragma once

#include "core/plugin_static_function.h"

#include <QString>

/// What the rows of one index have in common.
struct message_index
{
    QString user;
    artifact_source_file source_file; ///< the index itself
};

struct message_sender
{
    QString address;
    QString comment; ///< usually the sender's name
};

/// In: address + "; : ;" + comment. Out: both trimmed; null for an empty text.
message_sender message_sender_of(const QString &text);

/// In: a date as the index holds it, in seconds. Out: the whole seconds; "0" for an empty text and for one that is no
/// number.
QString whole_seconds(const QString &date);

/// Out: a snippet as it stands in the row, without double quotes.
QString message_text_of(QString snippet);

/// Out: both paths, joined with ";++::++;" where there are two.
artifact_source_file joined_source_files(const artifact_source_file &index, const artifact_source_file &mail_file);
