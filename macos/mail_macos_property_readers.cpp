// Property lists: the readers that turn the value under a key into a row text, and the columns that tell of the list
// itself. Fills no table itself.
#include "core/plugin_static_function.h"
#include "macos/mail_macos.h"
#include "macos/row_text.h"
#include "services/property_list_readers.h"

QString mail_macos::get_prefs_nsstring_values(const QString &key, const property_list_value &dictionary,
                                              const QString &label) const
{
    return plugin_static_function::get_nsstring_key_and_values(key, dictionary, label);
}

QString mail_macos::get_prefs_nsnumber_values(const QString &key, const property_list_value &dictionary,
                                              const QString &label) const
{
    return plugin_static_function::get_nsnumber_key_and_value_yes_no(key, dictionary, label);
}

QString mail_macos::get_prefs_nsarray_values(const QString &key, const property_list_value &dictionary,
                                             const QString &label) const
{
    return labelled_texts_of_array(dictionary.object_for_key(key), label, cancel_extraction_bool);
}

artifact_source_file mail_macos::shown_source_of(const QString &file, const QString &user) const
{
    return plugin_static_function::get_final_artifact_source_file(behind_source_root(file), user,
                                                                  source_type_internal_QString);
}

QString mail_macos::sources_with(const QString &stored_sources, const QString &file, const operation_log &log) const
{
    constexpr int longest = 16384;
    if (stored_sources.size() > longest) {
        return stored_sources;
    }
    const QString sources =
        behind_source_root(stored_sources) + QLatin1String(list_separator) + behind_source_root(file);
    if (sources.size() > longest) {
        log("source_file longer than 16384 characters -----FAILED-----, further sources are left out");
    }
    return sources;
}

void mail_macos::append_source_columns(row_values &row, const artifact_source_file &shown_source) const
{
    row.insert(row.end(), {
                              {"source_file", shown_source.source_file},
                              {"artifacts_relation_source_file", shown_source.artifacts_relation_source_file},
                              {"source_count_name", plugin_static_function::get_source_count_name()},
                              {"os_scheme_display", os_scheme_display_QString},
                          });
}
