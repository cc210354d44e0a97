/// The catalog of an ESE file, looked at before the library believes it: the library takes the records of a table apart
/// by what the catalog says of its columns, and reads beyond a record when that is not true.
#pragma once

#include "services/source_files.h"

#include <QHash>

#include <array>
#include <bitset>
#include <optional>

constexpr int last_fixed_column = 127;
constexpr int last_variable_column = 255;

/// What the catalog says of the columns of one table, as far as it decides where their values lie in a record.
struct ese_record_layout
{
    /// Where the fixed values end, by the last fixed column that a record has a value for; bytes.
    std::array<int, last_fixed_column + 1> fixed_end = {};
    /// Which of the columns of variable size there are, the first one at 0.
    std::bitset<last_variable_column - last_fixed_column> variable;
};

class ese_catalog_guard
{
public:
    static constexpr quint32 catalog_tree = 2;
    static constexpr quint32 catalog_copy_tree = 3;

    /// Reads the catalog through the file, which may be closed afterwards.
    explicit ese_catalog_guard(const file_descriptor &file);

    /// Out: whether the entries of the catalog hold together; false also for what is no ESE file. A page that the
    /// catalog names and the file does not have is no lie: that table alone cannot be read.
    bool is_sound() const { return sound; }
    /// In: the number of a table's tree. Out: null for a tree that is no table's.
    const ese_record_layout *layout(quint32 tree) const;

private:
    QHash<quint32, ese_record_layout> layouts;
    bool sound = false;
};
