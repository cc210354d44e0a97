/// Records that the library would read beyond their end, and beyond the page: it believes the sizes that a record names
/// for its values. What lies there is memory of the process; it would get into the rows, or end the run.
#pragma once

#include <cstddef>

class ese_catalog_guard;

/// In and out: a page as it is read from the file. A record whose sizes do not hold together is cut to nothing
/// there, which the library refuses; all others stay as they are. What a record must hold, the catalog says; of a page
/// of no table that it knows all records are cut. What is no page of records stays as it is. In files
/// of the oldest programs the tagged values have no index, and are not looked at.
void cut_unsound_records(char *page, std::size_t size, bool has_tagged_index, const ese_catalog_guard &catalog);
