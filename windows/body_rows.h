/// The rows of body files on their way into the result database, which stays open over all of them. A row stands by
/// itself: what was kept before a process dies stays, at most the rows of the last few hundred files are lost then.
#pragma once

#include "core/operation_log.h"
#include "core/result_session.h"
#include "core/row_writer.h"

#include <memory>
#include <optional>

class extractor_frame;

class body_row_writers
{
public:
    /// Of a file that is HTML by type, and of one that holds HTML somewhere.
    enum class kind
    {
        html_file,
        other_file
    };

    body_row_writers(extractor_frame &frame, const QString &database_path);

    /// Opens the result database where it is not open yet. In: who needs it, whose failure lines are logged. Out: false
    /// when it does not open; it is tried again the next time.
    bool open(kind wanted);
    /// Inserts a row; every few hundred rows are committed.
    void insert(kind wanted, const row_values &row);

private:
    extractor_frame &frame;
    QString path;
    std::unique_ptr<result_session> destination;
    std::optional<row_writer> writers[2]; // by kind
    int rows_since_commit = 0;
};
