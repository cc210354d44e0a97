/// The records of a table by their position. The library keeps the pages of a table in lists that it searches for each
/// new page; so a large table is read window by window (ese_root_view), each through a handle of its own, and the time
/// grows with the number of records and not with its square. Records, order and number are those of the whole table.
#pragma once

#include "windows/ese_file.h"

#include <QByteArray>

#include <memory>
#include <vector>

class ese_table_records
{
public:
    struct window_plan
    {
        int most_windows = 64;  ///< each of them has the catalog read twice
        int least_leaves = 256; ///< in a window; the lists of so many pages are short
    };

    /// In: an open file; one of its tables by name and handle, which may be null. All must live as long as this.
    ese_table_records(const ese_file &file, const QByteArray &table_name, libesedb_table_t *table,
                      const window_plan &plan);
    ese_table_records(const ese_file &file, const QByteArray &table_name, libesedb_table_t *table)
        : ese_table_records(file, table_name, table, window_plan())
    {
    }
    ~ese_table_records();

    /// As libesedb_table_get_number_of_records(); -1 also for a table whose pages are no tree. To be called before
    /// get(): it reads the whole table once.
    int count(int *count, libesedb_error_t **error);
    /// As libesedb_table_get_record(). The record is to be freed before the next one is fetched.
    int get(int index, libesedb_record_t **record, libesedb_error_t **error);

private:
    struct window
    {
        ese_root_window shown;
        int first_record = 0;
    };
    struct open_window;

    void plan_windows(quint32 root, const window_plan &plan);
    libesedb_table_t *enter(size_t index, libesedb_error_t **error);

    const ese_file &file;
    const QByteArray table_name;
    libesedb_table_t *const table;
    bool may_walk = true;        // also for a null table: the library refuses that itself
    std::vector<window> windows; // none: the table is read whole
    std::unique_ptr<open_window> current;
};
