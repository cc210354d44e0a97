#include "windows/specific_table.h"

#include "services/byte_text.h"
#include "windows/ese_file.h"
#include "windows/ese_table_records.h"
#include "windows/ese_value_reader.h"

#include <vector>

namespace {

constexpr operation_log reading_log{
    "QByteArray specific_table::record_type_case(libesedb_record_t *, int, unsigned int, libesedb_error_t *)"};
constexpr const char *reading_operation = "record_type_case";

// Long enough for the name of any table, with a zero behind it.
constexpr int table_name_limit = 1023;

// In all of them an absent value, and one that cannot be read, is the text of 0.
template <typename Number, typename Stored, typename Call>
QByteArray number_text(ese_value_reader &values, Call call, libesedb_record_t *record, int value_entry,
                       libesedb_error_t *error)
{
    Stored value = 0;
    values.number(call, record, value_entry, &value, error);
    return QByteArray::number(static_cast<Number>(value));
}

QByteArray boolean_text(ese_value_reader &values, libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    const QByteArray digits =
        number_text<uint, uint8_t>(values, libesedb_record_get_value_boolean, record, value_entry, error);
    return digits.contains('1') ? QByteArrayLiteral("true") : QByteArrayLiteral("false");
}

QByteArray double_text(ese_value_reader &values, libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    double value = 0;
    values.number(libesedb_record_get_value_floating_point_64bit, record, value_entry, &value, error);
    return QByteArray::number(value, 'g', 6);
}

QByteArray name_in_file(const QString &table_name)
{
    return QByteArray(table_name.toLocal8Bit().left(table_name_limit).constData()); // up to a zero
}

QByteArray never_null(const QByteArray &text)
{
    return text.isNull() ? QByteArrayLiteral("") : text;
}

} // namespace

// The table that is being walked.
struct specific_table::table_walk
{
    table_walk(const ese_file &source, const QString &name)
        : file(source), table_name(name_in_file(name)), values(source, name, reading_log, reading_operation)
    {
    }

    struct column
    {
        bool is_known = false;
        bool is_wanted = false;
        int type = -1;
        QString name;
    };

    column &column_at(int value_entry)
    {
        if (value_entry >= static_cast<int>(columns.size())) {
            columns.resize(static_cast<std::size_t>(value_entry) + 1);
        }
        return columns[static_cast<std::size_t>(value_entry)];
    }

    const ese_file &file;
    const QByteArray table_name;
    ese_value_reader values;
    std::vector<column> columns; // by value entry, as far as they are known
};

specific_table::specific_table() = default;
specific_table::~specific_table() = default;

int specific_table::start_parsing(QString file_path, QString table_name)
{
    return parse_file(file_path, table_name, [&](libesedb_file_t *file, libesedb_error_t *error) {
        get_desired_table(file, error, table_name);
    });
}

int specific_table::start_parsing(QString file_path, QString table_name, QString text, QStringList list)
{
    return parse_file(file_path, table_name, [&](libesedb_file_t *file, libesedb_error_t *error) {
        get_desired_table(file, error, table_name, text, list);
    });
}

template <typename Parse>
int specific_table::parse_file(const QString &file_path, const QString &table_name, Parse parse)
{
    libesedb_error_t *error = nullptr;
    ese_file file;
    if (file.open(file_path, error) != ese_file::opening::done) {
        reading_log("[record_type_case] store not readable ----FAILED----: file ", file_path);
        return -1;
    }
    walk = std::make_unique<table_walk>(file, table_name);
    parse(file.handle(), error);
    walk.reset();
    return 0;
}

void specific_table::get_desired_table(libesedb_file_t *file, libesedb_error_t *error, QString table_name)
{
    with_table(file, error, table_name, [&](libesedb_table_t *table) { get_records(table, error); });
}

void specific_table::get_desired_table(libesedb_file_t *file, libesedb_error_t *error, QString table_name, QString text,
                                       QStringList list)
{
    with_table(file, error, table_name, [&](libesedb_table_t *table) { get_records(table, error, text, list); });
}

template <typename Read>
void specific_table::with_table(libesedb_file_t *file, libesedb_error_t *error, const QString &table_name, Read read)
{
    const QByteArray name = name_in_file(table_name);
    libesedb_table_t *handle = nullptr;
    const int result =
        settled(libesedb_file_get_table_by_utf8_name(file, reinterpret_cast<const uint8_t *>(name.constData()),
                                                     static_cast<size_t>(name.size()), &handle, &error),
                error);
    const ese_table_handle table(handle);
    if (result == -1) {
        walk->values.log_unread("table");
    }
    if (result != -1 && table) {
        read(table.get());
    }
}

void specific_table::get_records(libesedb_table_t *table, libesedb_error_t *error)
{
    each_record(table, error, [&](libesedb_record_t *record) { get_column_name_and_type(record, error); });
}

void specific_table::get_records(libesedb_table_t *table, libesedb_error_t *error, QString text, QStringList list)
{
    each_record(table, error, [&](libesedb_record_t *record) { get_column_name_and_type(record, error, text, list); });
}

template <typename Read>
void specific_table::each_record(libesedb_table_t *table, libesedb_error_t *error, Read read)
{
    ese_table_records records(walk->file, walk->table_name, table);
    int count = 0;
    if (settled(records.count(&count, &error), error) == -1) {
        walk->values.log_unread("number of records");
        return;
    }
    for (int i = 0; i < count; ++i) {
        walk->values.enter_record(i);
        libesedb_record_t *handle = nullptr;
        const int result = settled(records.get(i, &handle, &error), error);
        const ese_record_handle record(handle);
        if (result == -1 || !record) {
            walk->values.log_unread("record");
            return;
        }
        read(record.get());
    }
}

// What a column is called, of which type it is and whether it is wanted is asked once: it is the same in all records.
bool specific_table::each_value(libesedb_record_t *record, libesedb_error_t *error, const column_question &is_wanted,
                                const value_hook &take)
{
    int count = 0;
    if (settled(libesedb_record_get_number_of_values(record, &count, &error), error) == -1) {
        walk->values.log_unread("number of values");
        return false;
    }
    for (int entry = 0; entry < count; ++entry) {
        table_walk::column &column = walk->column_at(entry);
        if (!column.is_known) {
            column.name = get_column_name(record, entry, error);
            column.type = walk->values.column_type(record, entry, error);
            if (column.type == -1) {
                walk->values.log_unread("column type", column.name);
                return false;
            }
            column.is_wanted = is_wanted(column.name);
            column.is_known = !column.name.isEmpty();
        }
        if (column.is_wanted) {
            take(column.name, entry, static_cast<unsigned int>(column.type));
        }
    }
    return true;
}

void specific_table::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error)
{
    struct_data data;
    current_struct_data = &data;
    const bool is_read = each_value(
        record, error, [](const QString &) { return true; },
        [&](const QString &name, int entry, unsigned int type) {
            get_record_values(record, error, name, entry, type);
        });
    if (is_read) {
        struct_data_QList.append(data);
    }
    current_struct_data = nullptr;
}

void specific_table::get_column_name_and_type(libesedb_record_t *record, libesedb_error_t *error, QString text,
                                              QStringList list)
{
    struct_data data;
    current_struct_data = &data;
    const bool is_read = each_value(
        record, error, [](const QString &) { return true; },
        [&](const QString &name, int entry, unsigned int type) {
            get_record_values(record, error, name, entry, type, text, list);
        });
    if (is_read) {
        struct_data_QList.append(data);
    }
    current_struct_data = nullptr;
}

void specific_table::get_record_values(libesedb_record_t *, libesedb_error_t *, QString, int, unsigned int) {}

void specific_table::get_record_values(libesedb_record_t *, libesedb_error_t *, QString, int, unsigned int, QString,
                                       QStringList)
{
}

QString specific_table::get_column_name(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    return walk->values.column_name(record, value_entry, error);
}

QByteArray specific_table::record_type_case(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                            libesedb_error_t *error)
{
    ese_value_reader &values = walk->values;
    switch (column_type) {
    case ese_column_type::boolean:
        return boolean_text(values, record, value_entry, error);
    case ese_column_type::unsigned_8bit:
        return number_text<uint, uint8_t>(values, libesedb_record_get_value_8bit, record, value_entry, error);
    case ese_column_type::signed_16bit: // printed without its sign, as the next one
    case ese_column_type::unsigned_16bit:
        return number_text<uint, uint16_t>(values, libesedb_record_get_value_16bit, record, value_entry, error);
    case ese_column_type::signed_32bit:
    case ese_column_type::unsigned_32bit:
        return number_text<uint, uint32_t>(values, libesedb_record_get_value_32bit, record, value_entry, error);
    case ese_column_type::float_32bit:
        return QByteArray::number(double{values.float_32bit(record, value_entry, error)}, 'g', 6);
    case ese_column_type::float_64bit:
        return double_text(values, record, value_entry, error);
    case ese_column_type::date_time:
        return number_text<qulonglong, uint64_t>(values, libesedb_record_get_value_filetime, record, value_entry,
                                                 error);
    case ese_column_type::signed_64bit:
        return number_text<qlonglong, uint64_t>(values, libesedb_record_get_value_64bit, record, value_entry, error);
    case ese_column_type::currency:
    case ese_column_type::guid:
        return never_null(bytes_before_zero(values.raw(record, value_entry, error).bytes).toHex());
    case ese_column_type::binary:
    case ese_column_type::large_binary:
        return never_null(values.binary(record, value_entry, column_type, error).bytes.toHex());
    case ese_column_type::text:
    case ese_column_type::large_text:
    case ese_column_type::super_large_value:
        return never_null(values.text(record, value_entry, column_type, error).bytes);
    default:
        return never_null(bytes_before_zero(values.raw(record, value_entry, error).bytes));
    }
}
