/// The floors of the works on a Windows profile. Those on ESE databases let esedbexport (Debian: libesedb-utils) write
/// the same tables as text; what the plug-in does beyond the tables they do as well, in the plainest way.
#pragma once

#include "bench/stopwatch.h"

#include <QString>

namespace bench {

constexpr const char *winos_user = "anna";

/// The rows are as many as the records that were exported. Nothing else is compared: the text of the export is not that
/// of the rows.
constexpr const char *winos_store_columns = "bookmark";
constexpr const char *winos_message_columns = "bookmark,system_user,fromemail,mimemessegeid,source_count_name";
constexpr const char *winos_body_columns =
    "bookmark,system_user,file_name,file_size,source_count_name,os_scheme_display";

/// Exports the tables of the store.vol.
void run_winos_store_floor(const QString &root, const QString &database_path, stopwatch &watch);
/// Exports the mail store, reads each mail file that its messages name once, and writes a row for each message and each
/// mail file, with the exported values as they are.
void run_winos_walker_floor(const QString &root, const QString &database_path, stopwatch &watch);
/// Reads each body file once, writes it as a text file and as a row, both with the markup in it.
void run_winos_bodies_floor(const QString &root, const QString &database_path, stopwatch &watch);

} // namespace bench
