/// The values of one table's records. Here, and nowhere else, stands what the library reads wrongly or not at all: long
/// values that it does not find, text outside the first plane of Unicode, floats of 32 bits. No value is cut: a value
/// is refused above 256 MiB only, which no mail store holds and a lying size would claim.
#pragma once

#include "core/operation_log.h"
#include "windows/ese_file.h"

#include <QByteArray>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

class ese_long_values;
class ese_table_layout;

/// The type numbers of columns, as the file has them.
namespace ese_column_type {
constexpr unsigned int boolean = 1;
constexpr unsigned int unsigned_8bit = 2;
constexpr unsigned int signed_16bit = 3;
constexpr unsigned int signed_32bit = 4;
constexpr unsigned int currency = 5;
constexpr unsigned int float_32bit = 6;
constexpr unsigned int float_64bit = 7;
constexpr unsigned int date_time = 8;
constexpr unsigned int binary = 9;
constexpr unsigned int text = 10;
constexpr unsigned int large_binary = 11;
constexpr unsigned int large_text = 12;
constexpr unsigned int super_large_value = 13;
constexpr unsigned int unsigned_32bit = 14;
constexpr unsigned int signed_64bit = 15;
constexpr unsigned int guid = 16;
constexpr unsigned int unsigned_16bit = 17;
} // namespace ese_column_type

/// Bytes of a value; they are empty where the value is absent or could not be read.
struct ese_value
{
    QByteArray bytes;
    bool is_read = true; ///< false where there is a value and it could not be read; a log line tells which
};

class ese_value_reader
{
public:
    /// The file must be open as long as the reader is used. The log is that of the operation that reads; the word in
    /// brackets in front of its lines is the operation's name.
    ese_value_reader(const ese_file &file, const QString &table_name, const operation_log &log, const char *operation);
    ~ese_value_reader();
    ese_value_reader(const ese_value_reader &) = delete;
    ese_value_reader &operator=(const ese_value_reader &) = delete;

    /// Names the record in hand, counted from 0, for the lines of the log.
    void enter_record(int record_index) { record_index_int = record_index; }

    /// Out: the name of the value's column, empty when it cannot be read. It is the same in all records of a table: the
    /// library is asked once a column.
    const QString &column_name(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    /// Out: the column's type number; -1 when it cannot be read.
    int column_type(libesedb_record_t *record, int value_entry, libesedb_error_t *error);

    /// Text of the types 10, 12 and 13, in the record or as a long value: UTF-8 up to the first zero character.
    ese_value text(libesedb_record_t *record, int value_entry, unsigned int column_type, libesedb_error_t *error);
    /// The bytes of a binary value of the types 9 and 11, in the record or as a long value, whole.
    ese_value binary(libesedb_record_t *record, int value_entry, unsigned int column_type, libesedb_error_t *error);
    /// The bytes of a value of any other type as they stand in the record.
    ese_value raw(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    /// A float of 32 bits; 0 where it is absent or cannot be read.
    float float_32bit(libesedb_record_t *record, int value_entry, libesedb_error_t *error);

    /// One call for a number. Out: the library's result: 1, 0 for an absent value, -1 for one that cannot be read,
    /// which is logged. In both latter cases the value is left as it was.
    template <typename Number, typename Call>
    int number(Call call, libesedb_record_t *record, int value_entry, Number *value, libesedb_error_t *error)
    {
        // Of several numbers in one the library would make a number of their places.
        const int result =
            is_multiple(record, value_entry, error) ? -1 : settled(call(record, value_entry, value, &error), error);
        if (result == -1) {
            log_unread("value", column_name(record, value_entry, error));
        }
        return result;
    }

    /// Logs what cannot be read of the record in hand: the line names file, table and record, and the column if it has
    /// a name. A null name leaves the column out.
    void log_unread(const char *what, const QString &column_name = QString()) const;

private:
    struct column
    {
        QString name;
        bool is_named = false;
        int type = -1;
        std::optional<quint32> codepage;
    };

    column &column_at(int value_entry);
    quint32 codepage(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    const ese_table_layout &table_layout();

    bool is_multiple(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    quint8 flags_of(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    ese_value stored(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    ese_value stored_or_unfolded(libesedb_record_t *record, int value_entry, quint8 flags, libesedb_error_t *error);
    ese_value long_value(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    ese_value whole(libesedb_record_t *record, int value_entry, unsigned int column_type, libesedb_error_t *error);
    ese_value decoded(libesedb_record_t *record, int value_entry, unsigned int column_type, libesedb_error_t *error);
    ese_value library_text(libesedb_record_t *record, int value_entry, libesedb_error_t *error);
    ese_value logged(ese_value value, libesedb_record_t *record, int value_entry, libesedb_error_t *error);

    const ese_file &file;
    QString table_name;
    operation_log log;
    const char *operation;
    int record_index_int = 0;
    std::vector<column> columns; // by value entry
    std::unique_ptr<ese_table_layout> layout;
    std::unique_ptr<ese_long_values> long_values;
    bool may_ask_library = false; // for a long value
};
