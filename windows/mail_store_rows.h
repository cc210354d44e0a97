/// The rows of the mail store on their way into the result database. A row stands by itself: what was kept before a
/// process dies stays, at most the rows of the last thousand records are lost then.
#pragma once

#include "core/operation_log.h"
#include "core/result_session.h"
#include "core/row_writer.h"

class extractor_frame;

class mail_store_row_writers
{
public:
    /// The arguments outlive it.
    mail_store_row_writers(extractor_frame &frame, const operation_log &log, const QString &database_path);

    /// Opens the result database, once. Out: false when it does not open, which is logged.
    bool open();
    /// A record is done: commits, once in a thousand records.
    void keep();

private:
    const operation_log &log;
    result_session destination;
    bool is_open = false;
    int records_since_commit = 0;

public:
    row_writer attachments;
    row_writer conversations;
    row_writer messages;
    row_writer mail_files; ///< table mail_data
};
