/// The rows of emlx_list by file name. The table has no index over its names, so a look-up in it would walk all of it
/// for every message; the catalog walks it once.
#pragma once

#include "core/result_session.h"

#include <QString>

#include <cstddef>
#include <vector>

/// Where the mail file of a message lies, as its row in emlx_list tells; all empty when the table has none.
struct struct_emlx
{
    QString file_name;
    QString file_path;
    QString source_file;
};

class emlx_catalog
{
public:
    /// In: the caller's open connection, whose transaction is shared and left open, and the source whose rows count,
    /// those of earlier runs of it included. The session outlives the catalog.
    emlx_catalog(result_session &destination, const QString &source_count_name);

    /// Out: the first row of the table for the file of a message: row id + ".emlx" or + ".partial.emlx". The rows are
    /// those that the table holds at the first call. A statement that fails is logged at each call.
    struct_emlx find(const QString &row_id, const operation_log &log);

private:
    // 16 bytes a file: the name itself stays in the table and is compared there.
    struct entry
    {
        std::size_t name_hash;
        qint64 row;
    };

    bool load();
    bool read_row(qint64 row, struct_emlx &record);
    bool fail(const char *statement);

    result_session &destination;
    QString source_count_name;
    bool is_loaded = false;
    const char *failed_statement = nullptr; // kept with its error: a table that cannot be read is not tried again
    QString error_text;
    std::vector<entry> entries; // by hash, then by row
    sqlite_statement select_row;
};
