#include "windows/ese_table_layout.h"

#include <array>
#include <vector>

namespace {

// Places of the columns in a record of the catalog; they are the same in all files.
constexpr int table_id_entry = 0;
constexpr int kind_entry = 1;
constexpr int type_or_page_entry = 3;
constexpr int codepage_entry = 6;
constexpr int first_variable_identifier = 128;

constexpr quint16 kind_is_table = 1;
constexpr quint16 kind_is_column = 2;
constexpr quint16 kind_is_long_value = 4;

struct catalog_record
{
    quint32 table_id = 0;
    quint16 kind = 0;
    quint32 type_or_page = 0;
    quint32 codepage = 0;
    QByteArray name;
    QByteArray template_name;
};

QByteArray short_text(libesedb_record_t *record, int entry, libesedb_error_t *error)
{
    std::array<char, 1024> text = {};
    size_t size = 0;
    if (settled(libesedb_record_get_value_utf8_string_size(record, entry, &size, &error), error) != 1 ||
        size > text.size() ||
        settled(libesedb_record_get_value_utf8_string(record, entry, reinterpret_cast<uint8_t *>(text.data()), size,
                                                      &error),
                error) != 1) {
        return QByteArray();
    }
    return QByteArray(text.data());
}

// The entry of the first column of variable size; the number of those of fixed size grew over the years.
int name_entry_of(libesedb_record_t *record, libesedb_error_t *error)
{
    int count = 0;
    settled(libesedb_record_get_number_of_values(record, &count, &error), error);
    for (int entry = codepage_entry; entry < count; ++entry) {
        uint32_t identifier = 0;
        settled(libesedb_record_get_column_identifier(record, entry, &identifier, &error), error);
        if (identifier == first_variable_identifier) {
            return entry;
        }
    }
    return -1;
}

catalog_record read_record(libesedb_record_t *record, int name_entry, libesedb_error_t *error)
{
    catalog_record read;
    settled(libesedb_record_get_value_32bit(record, table_id_entry, &read.table_id, &error), error);
    settled(libesedb_record_get_value_16bit(record, kind_entry, &read.kind, &error), error);
    settled(libesedb_record_get_value_32bit(record, type_or_page_entry, &read.type_or_page, &error), error);
    if (read.kind == kind_is_column) {
        settled(libesedb_record_get_value_32bit(record, codepage_entry, &read.codepage, &error), error);
    }
    if (read.kind == kind_is_column || read.kind == kind_is_table) {
        read.name = short_text(record, name_entry, error);
    }
    if (read.kind == kind_is_table) { // two columns behind the name
        read.template_name = short_text(record, name_entry + 2, error);
    }
    return read;
}

std::vector<catalog_record> read_catalog(libesedb_file_t *file)
{
    std::vector<catalog_record> records;
    libesedb_error_t *error = nullptr;
    constexpr char catalog_name[] = "MSysObjects";
    libesedb_table_t *table = nullptr;
    settled(libesedb_file_get_table_by_utf8_name(file, reinterpret_cast<const uint8_t *>(catalog_name),
                                                 sizeof(catalog_name) - 1, &table, &error),
            error);
    const ese_table_handle catalog(table);
    int count = 0;
    if (!catalog || settled(libesedb_table_get_number_of_records(table, &count, &error), error) != 1) {
        return records;
    }
    int name_entry = -1;
    for (int i = 0; i < count; ++i) {
        libesedb_record_t *handle = nullptr;
        const int result = settled(libesedb_table_get_record(table, i, &handle, &error), error);
        const ese_record_handle record(handle);
        if (result != 1 || !record) {
            break;
        }
        if (name_entry < 0) {
            name_entry = name_entry_of(handle, error);
        }
        records.push_back(read_record(handle, name_entry, error));
    }
    return records;
}

const catalog_record *table_record(const std::vector<catalog_record> &records, const QByteArray &name)
{
    for (const catalog_record &record : records) {
        if (record.kind == kind_is_table && record.name == name) {
            return &record;
        }
    }
    return nullptr;
}

} // namespace

ese_table_layout::ese_table_layout(libesedb_file_t *file, const QByteArray &table_name)
{
    const std::vector<catalog_record> records = read_catalog(file);
    const catalog_record *table = table_record(records, table_name);
    if (!table) {
        return;
    }
    const catalog_record *model =
        table->template_name.isEmpty() ? nullptr : table_record(records, table->template_name);
    for (const catalog_record &record : records) {
        if (record.table_id != table->table_id && !(model && record.table_id == model->table_id)) {
            continue;
        }
        if (record.kind == kind_is_column) {
            codepages.insert(record.name, record.codepage);
        } else if (record.kind == kind_is_long_value && record.table_id == table->table_id) {
            root_page = record.type_or_page;
        }
    }
}
