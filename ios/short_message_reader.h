/// The texts of the short messages of a device, looked up in a working copy of its sms.db.
#pragma once

#include "core/operation_log.h"
#include "core/source_session.h"

#include <QString>

#include <atomic>

class short_message_reader
{
public:
    /// In: the path of the working copy; the log and the flag outlive the reader.
    short_message_reader(const operation_log &log, const QString &copy_path, const std::atomic<bool> &cancel_flag);

    /// Out: the text of the message of that guid, of several the last one's; null when there is none, when the
    /// extraction is cancelled, and when the database does not open or cannot be read, which is logged each time.
    QString text_of(const QString &guid);

private:
    bool open();

    source_session messages;
    source_query texts;
    const std::atomic<bool> &is_cancelled;
    bool is_open = false;
};
