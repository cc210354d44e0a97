/// The rows of a result database, to be compared with those of another run over the same source.
#pragma once

#include <QByteArray>
#include <QString>

#include <filesystem>
#include <map>
#include <vector>

namespace trial {

struct result_row
{
    QByteArray text;                        ///< what a second run gives alike, a line a column that is not NULL
    std::map<QByteArray, QByteArray> cells; ///< those of it by the column's name
};

using result_rows = std::map<QByteArray, std::vector<result_row>>; // by table

/// Out: the rows of all tables; none where there is no database. What cannot be read throws evidence::evidence_error.
result_rows read_rows(const std::filesystem::path &database);

/// Out: how many rows the tables hold together.
size_t count_of(const result_rows &rows);

/// Out: what SQLite's integrity check says of a copy of the database with its journal, empty when all is well or there
/// is no database. The database itself stays as it is.
QString integrity_fault(const std::filesystem::path &database, const std::filesystem::path &scratch_folder);

/// Out: the same, of the tables that no run clears each row but once.
result_rows distinct(result_rows rows);

/// Out: the rows that are in the first and, counted, not in the second, a block each; empty when there are none.
QString missing_rows(const result_rows &wanted, const result_rows &present);

} // namespace trial
