/// What the result tables say of a file of a macOS source beside its content: whether it is there, its times, and the
/// metadata that it carries. All fields are texts; an empty one is unknown.
#pragma once

#include "core/plugin_static_function.h"
#include "core/row_writer.h"

#include <QString>

/// The metadata attributes that have columns of their own. The type is shared within the suite.
struct struct_GLOBAL_ARTIFACT_cfstring_attributes
{
    QString attr_date_added_QString;
    QString attr_content_creation_date_QString;
    QString attr_content_modification_date_QString;
    QString attr_content_type_QString;
    QString attr_kind_QString;
    QString attr_fs_content_change_date_QString;
    QString attr_fs_creation_date_QString;
    QString attr_fs_name_QString;
    QString attr_fs_node_count_QString;
    QString attr_wherefrom_QString;
    QString attr_latitude_numeric_QString;  ///< no attribute is read for it
    QString attr_longitude_numeric_QString; ///< no attribute is read for it
    QString attr_altitude_QString;
    QString attr_torrent_file_list_QString;
    QString attr_origin_message_id_QString;
    QString attr_origin_sender_display_name_QString;
    QString attr_origin_sender_handle_QString;
    QString attr_origin_subject_QString;
};

/// The attributes that the host asked for, in the two forms in which they are stored.
struct extended_attributes
{
    QString value_for_search; ///< the values joined by ";++::++;"
    QString key_value;        ///< an XML document
};

struct macos_file_facts
{
    bool is_there = false;
    QString created;   ///< seconds since 1970 UTC
    QString file_size; ///< bytes; of a folder, those of all files below it
    struct_used_dates used;
    struct_GLOBAL_ARTIFACT_cfstring_attributes attributes;
    extended_attributes extended;

    QString file_exist() const { return is_there ? QStringLiteral("YES") : QStringLiteral("NO"); }
};

/// Whether the columns first_date and last_date stand behind used_dates.
enum class used_date_bounds
{
    without,
    with
};

/// The columns from date_added to torrent_file_list.
void append_metadata_columns(row_values &row, const macos_file_facts &facts, used_date_bounds bounds);
