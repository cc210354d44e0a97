/// Writes the metadata that macOS keeps of a file (kMDItem…), where a copied tree or a mounted image carries it.
#pragma once

#include "evidence/property_list_file.h"

#include <QString>

namespace evidence {

enum class metadata_place
{
    extended_attributes, ///< of the file itself, under "user.com.apple.metadata:" + name
    apple_double,        ///< in the file "._" + name beside it, as file systems without attributes hold them
};

/// Writes the attributes, each value a binary property list: `{{"kMDItemWhereFroms", QStringList{…}}}`. For
/// apple_double a second call replaces what the first wrote.
void write_file_metadata(const QString &path, const property_list_dictionary &attributes, metadata_place place);

/// Out: whether files of the folder, which must stand, can hold extended attributes.
bool holds_extended_attributes(const QString &folder);

} // namespace evidence
