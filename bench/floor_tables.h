/// The result tables that floors fill: those of the plug-in, which no floor may make cheaper.
#pragma once

#include "core/result_schema.h"

#include <cstring>
#include <stdexcept>

namespace bench {

/// Out: the CREATE statement of a result table.
inline const char *create_statement_of(const char *table)
{
    for (const result_table &candidate : result_tables) {
        if (std::strcmp(candidate.name, table) == 0) {
            return candidate.create_statement;
        }
    }
    throw std::logic_error(table);
}

} // namespace bench
