// ESE files, all values of all records, through the library and around it.
#include "windows/ese_file.h"

#include "fuzz/changed_ese_file.h"
#include "fuzz/fuzz_target.h"
#include "windows/ese_table_records.h"
#include "windows/ese_value_reader.h"

namespace {

constexpr operation_log no_log{"fuzz_one"};
constexpr int most_tables = 20; // of more that a changed catalog claims the first ones tell enough
constexpr int most_records = 40;
constexpr int most_columns = 60;

void read_value(ese_value_reader &values, libesedb_record_t *record, int entry)
{
    libesedb_error_t *error = nullptr;
    values.column_name(record, entry, error);
    const int type = values.column_type(record, entry, error);
    std::uint32_t number = 0;
    std::uint64_t wide_number = 0;
    ese_value value;
    switch (type) {
    case ese_column_type::text:
    case ese_column_type::large_text:
    case ese_column_type::super_large_value:
        value = values.text(record, entry, static_cast<unsigned int>(type), error);
        require(!value.bytes.contains('\0'), "a text ends in front of its first zero");
        require(QString::fromUtf8(value.bytes).toUtf8() == value.bytes, "a text is valid UTF-8");
        break;
    case ese_column_type::binary:
    case ese_column_type::large_binary:
        value = values.binary(record, entry, static_cast<unsigned int>(type), error);
        break;
    case ese_column_type::float_32bit:
        values.float_32bit(record, entry, error);
        break;
    case ese_column_type::signed_32bit:
    case ese_column_type::unsigned_32bit:
        values.number(libesedb_record_get_value_32bit, record, entry, &number, error);
        break;
    case ese_column_type::signed_64bit:
        values.number(libesedb_record_get_value_64bit, record, entry, &wide_number, error);
        break;
    default:
        value = values.raw(record, entry, error);
    }
    require(value.is_read || value.bytes.isEmpty(), "what cannot be read has no bytes");
    require(!error, "no error object is left over");
}

void read_record(ese_value_reader &values, libesedb_record_t *record)
{
    libesedb_error_t *error = nullptr;
    int count = 0;
    settled(libesedb_record_get_number_of_values(record, &count, &error), error);
    for (int entry = 0; entry < count && entry < most_columns; ++entry) {
        read_value(values, record, entry);
    }
}

void read_table(const ese_file &file, libesedb_table_t *table)
{
    libesedb_error_t *error = nullptr;
    QByteArray name(1024, '\0');
    settled(libesedb_table_get_utf8_name(table, reinterpret_cast<std::uint8_t *>(name.data()),
                                         static_cast<std::size_t>(name.size()), &error),
            error);
    const ese_table_records::window_plan small_windows{4, 1};
    ese_table_records records(file, name.constData(), table, small_windows);
    int count = 0;
    settled(records.count(&count, &error), error);
    ese_value_reader values(file, QString::fromUtf8(name.constData()), no_log, "fuzz_one");
    for (int index = 0; index < count && index < most_records; ++index) {
        libesedb_record_t *fetched = nullptr;
        const int result = settled(records.get(index, &fetched, &error), error);
        const ese_record_handle record(fetched);
        if (result == 1) {
            values.enter_record(index);
            read_record(values, fetched);
        }
    }
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    libesedb_error_t *error = nullptr;
    ese_file file;
    if (file.open(file_with(changed_ese_file(input)), error) != ese_file::opening::done) {
        require(!file.handle(), "a file that does not open has no handle");
        return;
    }
    int count = 0;
    settled(libesedb_file_get_number_of_tables(file.handle(), &count, &error), error);
    for (int index = 0; index < count && index < most_tables; ++index) {
        libesedb_table_t *found = nullptr;
        settled(libesedb_file_get_table(file.handle(), index, &found, &error), error);
        const ese_table_handle table(found);
        if (table) {
            read_table(file, found);
        }
    }
}
