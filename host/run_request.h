/// What one run is asked to do, checked: all that can be wrong with it has been found before anything is written.
#pragma once

#include "core/host_records.h"
#include "host/output_places.h"
#include "host/scheme_table.h"

#include <QString>
#include <QStringList>

struct run_request
{
    QString source; ///< the folder as given, absolute and clean
    struct_GLOBAL_COMMON_TRAWL_AND_ARTIFACT_source_info source_info;
    const scheme_entry *scheme = nullptr;
    QStringList tabs; ///< in the order of the plug-in's work
    int source_number = 1;
    bool clear_older_rows = false;
    QStringList attributes;
    bool encipher_log = false;
    output_places places;
    QString plugin_file;
};

/// In: the arguments behind "run". Throws unusable_input.
run_request checked_run_request(const QStringList &arguments);

/// Whether the source is a backup, whose files are reached through an ios_uid_backup_parser.
bool is_ios_backup(const run_request &request);

/// What is in work while the plug-in has reported none, one, two ... tabs as finished, as shown: "accounts (tab 1 of
/// 2)". Where the count leaves open which tab it is, all that it can be: "all_attachments, messages (tabs 2-3 of 8)".
QStringList reported_tabs(const run_request &request);
