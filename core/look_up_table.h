/// Look-ups by a column that the source has no index for: each would walk the whole table, a million times over.
#pragma once

#include "core/source_session.h"

/// A table of a source with the columns that look-ups read, and those they find their rows by.
struct look_up_table
{
    const char *table;
    const char *columns; ///< separated by commas, the keys among them
    const char *keys;    ///< separated by commas; a look-up compares one of them
};

/// Where the source has no index for one of the look-ups, makes a temporary one: statements on this session that name
/// the table find their rows by it, row for row in the same order. The rows stay where they are. A table that is
/// missing, lacks a column, compares a key in a way of its own or cannot be walked to its end is left to its statements
/// and their failures.
void make_look_up_fast(source_session &source, const look_up_table &table);
