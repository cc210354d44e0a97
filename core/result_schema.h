/// The tables of the result database.
#pragma once

#include <array>

struct result_table
{
    const char *name;
    const char *create_statement;
};

/// All tables in the order of their creation.
extern const std::array<result_table, 18> result_tables;
