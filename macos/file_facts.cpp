#include "macos/file_facts.h"

void append_metadata_columns(row_values &row, const macos_file_facts &facts, used_date_bounds bounds)
{
    const struct_GLOBAL_ARTIFACT_cfstring_attributes &attributes = facts.attributes;
    const QString &date_added = attributes.attr_date_added_QString;
    row.insert(row.end(), {
                              {"date_added", date_added.isEmpty() ? facts.created : date_added},
                              {"content_creation_date", attributes.attr_content_creation_date_QString},
                              {"content_modification_date", attributes.attr_content_modification_date_QString},
                              {"content_type", attributes.attr_content_type_QString},
                              {"fs_content_change_date", attributes.attr_fs_content_change_date_QString},
                              {"fs_creation_date", attributes.attr_fs_creation_date_QString},
                              {"fs_name", attributes.attr_fs_name_QString},
                              {"fs_node_count", attributes.attr_fs_node_count_QString},
                              {"last_used_date", facts.used.last_used_date},
                              {"used_dates", facts.used.used_dates.join(QLatin1String(";++::++;"))},
                          });
    if (bounds == used_date_bounds::with) {
        row.insert(row.end(), {{"first_date", facts.used.first_date}, {"last_date", facts.used.last_date}});
    }
    row.insert(row.end(), {
                              {"wherefrom", attributes.attr_wherefrom_QString},
                              {"latitude", attributes.attr_latitude_numeric_QString},
                              {"longitude", attributes.attr_longitude_numeric_QString},
                              {"altitude", attributes.attr_altitude_QString},
                              {"torrent_file_list", attributes.attr_torrent_file_list_QString},
                          });
}
