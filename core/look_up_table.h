/// Look-ups by a column that the source has no index for: each would walk the whole table, a million times over.
#pragma once

#include "core/source_session.h"

/// A table of a source with the columns that a look-up reads, and the one it finds its rows by.
struct look_up_table
{
    const char *table;
    const char *columns; ///< separated by commas, the key among them
    const char *key;
};

/// Where the source has no index for the look-up, puts a temporary copy of the table with one in its place: statements
/// on this session that name the table read the copy, row for row in the same order. The source stays as it is. A table
/// that is missing, lacks a column or cannot be copied is left to its statements and their failures.
void make_look_up_fast(source_session &source, const look_up_table &table);
