/// A table "Records" whose records have a leaf each: few of them make a tree of several levels.
#pragma once

#include "tests/evidence/ese_tables.h"

inline QByteArray record_bytes(int index, int page_size)
{
    return QByteArray::number(index).rightJustified(page_size * 6 / 10, 'x');
}

inline void write_records(const QString &path, const evidence::ese_file_options &options, int count,
                          bool are_long_values = false)
{
    std::vector<std::vector<evidence::ese_value>> records;
    for (int i = 0; i < count; ++i) {
        const evidence::ese_value value = evidence::ese_value::bytes(record_bytes(i, options.page_size));
        records.push_back({are_long_values ? value.as_long_value() : value});
    }
    write_table(path, "Records", {{"value", evidence::ese_type::long_binary}}, records, options);
}
