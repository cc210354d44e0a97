// Property lists: the readers that turn the value under a key into a row text. Fills no table itself.
#include "core/plugin_static_function.h"
#include "macos/mail_macos.h"
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
