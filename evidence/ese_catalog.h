/// The catalog of an ESE database: a table like any other that describes all tables, itself among them.
#pragma once

#include "evidence/ese_table_writer.h"

#include <memory>
#include <vector>

namespace evidence::ese {

/// The columns of the catalog in a file of that format.
std::vector<ese_column> catalog_columns(const file_format &format);

/// Writes the catalog and its copy and finishes both trees. In: the two catalog tables, which have no record yet, then
/// the others in the order of their object ids, all of them finished.
void write_catalog(const file_format &format, const std::vector<std::unique_ptr<table_writer>> &tables);

} // namespace evidence::ese
