/// Writes an Extensible Storage Engine database (ESE, "EDB") as Windows programs leave it: tables with fixed, variable
/// and tagged columns, each table a tree of pages of its own, long values in a second tree beside it.
#pragma once

#include "evidence/ese_value.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <vector>

namespace evidence {

/// How the long values of a table lie in its long-value tree.
enum class ese_long_value_layout
{
    /// As Windows writes it: segments side by side, each key without what it has in common with the page's first one.
    /// Of these libesedb 20181229 finds only the few whose own key is empty.
    ordinary,
    /// No entry has a key of its own: the page's first entry holds it, so that each segment has a page for itself and
    /// the tree is as high as a binary one. Later releases read it just as well.
    readable_by_libesedb_2018,
};

struct ese_file_options
{
    int page_size = 8192;           ///< bytes: 4096, 8192, 16384 or 32768
    quint32 format_revision = 0x11; ///< above 0x0a: checksums with error correction, below 0x0b: the older sum alone
    bool cleanly_shut_down = true;  ///< false: the header says that the log files still hold changes
};

namespace ese {
class file_writer;
class table_writer;
} // namespace ese

/// One table of an ese_file, which must outlive it.
class ese_table
{
public:
    explicit ese_table(ese::table_writer &writer) : writer(writer) {}

    /// Appends a record. In: a value per column in the order that add_table() was told; fewer values leave the last
    /// columns absent. A value that does not suit its column's type, or a record that is larger than a page, throws.
    /// Out: the record's position in its table, as a reader counts.
    int add_record(const std::vector<ese_value> &values);

private:
    ese::table_writer &writer;
};

/// A new database. Pages are written as they fill, several tables may be filled in turns. Failures throw
/// evidence_error.
class ese_file
{
public:
    /// Makes the folder with its parents and the database in it; a file that stands there already is a failure.
    explicit ese_file(const QString &path, const ese_file_options &options = {});
    /// Removes nothing: what was not finished is a file without a header.
    ~ese_file();
    ese_file(const ese_file &) = delete;
    ese_file &operator=(const ese_file &) = delete;

    ese_table add_table(const QByteArray &name, const std::vector<ese_column> &columns,
                        ese_long_value_layout layout = ese_long_value_layout::ordinary);

    /// Writes the trees' upper pages, the catalog and the header; only now the file is a database. Once.
    void finish();

private:
    std::unique_ptr<ese::file_writer> writer;
};

} // namespace evidence
