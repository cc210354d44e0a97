/// Reading a table of the mail application's own store, record by record.
#pragma once

#include "core/operation_log.h"
#include "windows/ese_file.h"
#include "windows/ese_table_records.h"
#include "windows/ese_value_reader.h"
#include "windows/mail_store_record.h"

#include <QString>

#include <atomic>
#include <vector>

struct taken_column;

class mail_store_table
{
public:
    enum class outcome
    {
        read,
        not_fetched, ///< the library does not give the record, which is logged
        cancelled
    };

    /// In: a table of the file by its handle, which may be null: then it has no records. All arguments outlive it.
    mail_store_table(const ese_file &file, libesedb_table_t *table, const QString &name, const operation_log &log,
                     const std::atomic<bool> &cancel_flag);

    int record_count() const { return record_count_int; }
    /// Reads the record at a position counted from 0. A column that is absent, or that stands there in another type
    /// than it is taken in, leaves its field null; a value that cannot be read is logged and taken as empty or 0. Each
    /// column gives log lines, which is what most of the log of such a run is.
    outcome read(int position, mail_store_record &record);

private:
    struct column
    {
        QString name;
        const taken_column *taken = nullptr; // by its name
        bool is_found = true;
        bool has_name_size = true;
        bool has_name = true;
    };

    void count_records();
    void find_columns();
    column column_at(int position) const;
    void log_column(const column &column) const;
    void read_value(libesedb_record_t *stored, int position, mail_store_record &record);
    void read_text(libesedb_record_t *stored, int position, unsigned int type, mail_store_record &record);
    void read_unused_number(libesedb_record_t *stored, int position, unsigned int type);
    void read_number(libesedb_record_t *stored, int position, unsigned int type, mail_store_record &record);
    bool is_taken(int position, unsigned int type) const;
    void store(int position, const QString &value, mail_store_record &record) const;

    libesedb_table_t *table;
    const operation_log &log;
    const std::atomic<bool> &is_cancelled;
    ese_table_records records;
    ese_value_reader values;
    int record_count_int = 0;
    std::vector<column> columns;
    libesedb_error_t *error = nullptr; // null between calls
};
