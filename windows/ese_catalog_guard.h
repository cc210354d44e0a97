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

/// The pages of the roots of a table's trees; 0 for one that it does not have.
struct ese_table_roots
{
    quint32 records = 0;
    quint32 long_values = 0;
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
    /// Out: the roots of the table of the name, the first one; none for a table that is not in the catalog.
    ese_table_roots roots(const QByteArray &table_name) const { return roots_by_name.value(table_name); }
    /// Out: how many records the catalog has, those of all tables and columns.
    int record_count() const { return records_taken; }
    /// In: the number of a table's tree. Out: null for a tree that is no table's.
    const ese_record_layout *layout(quint32 tree) const;

private:
    QHash<quint32, ese_record_layout> layouts;
    QHash<QByteArray, ese_table_roots> roots_by_name;
    int records_taken = 0;
    bool sound = false;
};
