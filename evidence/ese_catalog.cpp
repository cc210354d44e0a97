#include "evidence/ese_catalog.h"

#include "evidence/ese_bytes.h"
#include "evidence/ese_encoding.h"

#include <algorithm>
#include <array>

namespace evidence::ese {

namespace {

enum class entry_type : quint16
{
    table = 1,
    column = 2,
    index = 3,
    long_value = 4,
};

struct catalog_column
{
    const char *name;
    ese_type type;
    quint32 since_revision;
};

constexpr quint32 from_the_start = 0;
constexpr quint32 vista = 0x0c;
constexpr quint32 windows_7 = 0x11;

constexpr std::array<catalog_column, 25> columns_of_catalog{{
    {"ObjidTable", ese_type::signed32, from_the_start},
    {"Type", ese_type::signed16, from_the_start},
    {"Id", ese_type::signed32, from_the_start},
    {"ColtypOrPgnoFDP", ese_type::signed32, from_the_start},
    {"SpaceUsage", ese_type::signed32, from_the_start},
    {"Flags", ese_type::signed32, from_the_start},
    {"PagesOrLocale", ese_type::signed32, from_the_start},
    {"RootFlag", ese_type::boolean, from_the_start},
    {"RecordOffset", ese_type::signed16, from_the_start},
    {"LCMapFlags", ese_type::signed32, from_the_start},
    {"KeyMost", ese_type::unsigned16, vista},
    {"Name", ese_type::text, from_the_start},
    {"Stats", ese_type::binary, from_the_start},
    {"TemplateTable", ese_type::text, from_the_start},
    {"DefaultValue", ese_type::binary, from_the_start},
    {"KeyFldIDs", ese_type::binary, from_the_start},
    {"VarSegMac", ese_type::binary, from_the_start},
    {"ConditionalColumns", ese_type::binary, from_the_start},
    {"TupleLimits", ese_type::binary, from_the_start},
    {"Version", ese_type::binary, vista},
    {"CallbackData", ese_type::long_binary, from_the_start},
    {"CallbackDependencies", ese_type::long_binary, from_the_start},
    {"SeparateLV", ese_type::long_binary, windows_7},
    {"SpaceHints", ese_type::long_binary, windows_7},
    {"SpaceDeferredLVHints", ese_type::long_binary, windows_7},
}};

/// One record of the catalog, without the columns that only an engine uses.
struct catalog_entry
{
    quint32 table = 0;
    entry_type type = entry_type::table;
    quint32 id = 0;
    quint32 column_type_or_root = 0;
    quint32 space = 0;
    qint64 flags = 0;
    quint32 pages_or_codepage = 0;
    QByteArray name;
    int record_offset = 0;  // of a fixed column
    QByteArray key_columns; // of an index
};

/// A column of a key, as indexes compare it: a byte that says that there is a value, then the value with its sign bit
/// turned, the high byte first.
template <typename number_type>
void append_key_column(QByteArray &key, number_type value)
{
    constexpr char has_value = 0x7f;
    constexpr auto sign_bit = static_cast<number_type>(number_type{1} << (sizeof(number_type) * 8 - 1));
    key += has_value + big_endian(static_cast<number_type>(value ^ sign_bit));
}

QByteArray key_of(const catalog_entry &entry)
{
    QByteArray key;
    append_key_column(key, entry.table);
    append_key_column(key, static_cast<quint16>(entry.type));
    append_key_column(key, entry.id);
    return key;
}

/// In the order of the columns of the catalog.
std::vector<ese_value> record_of(const catalog_entry &entry, const file_format &format)
{
    const bool is_fixed_column = entry.record_offset > 0;
    const bool is_table = entry.type == entry_type::table;
    std::vector<ese_value> values{
        ese_value::number(entry.table),
        ese_value::number(static_cast<int>(entry.type)),
        ese_value::number(entry.id),
        ese_value::number(entry.column_type_or_root),
        ese_value::number(entry.space),
        ese_value::number(entry.flags),
        ese_value::number(entry.pages_or_codepage),
        is_table ? ese_value::boolean(true) : ese_value(),
        is_fixed_column ? ese_value::number(entry.record_offset) : ese_value(),
        ese_value(),
    };
    if (format.revision >= vista) {
        values.emplace_back(); // KeyMost
    }
    values.push_back(ese_value::bytes(entry.name));
    values.insert(values.end(), 3, ese_value());
    values.push_back(entry.key_columns.isEmpty() ? ese_value() : ese_value::bytes(entry.key_columns));
    return values;
}

class catalog_writer
{
public:
    catalog_writer(const file_format &format, table_writer &catalog, table_writer &copy)
        : format(format), catalog(catalog), copy(copy)
    {
    }

    void add_table(const table_writer &table)
    {
        constexpr quint32 least_pages = 1;
        const bool is_catalog = table.records().object <= catalog_objects;
        const tree_place &records = table.records();
        add({records.object,
             entry_type::table,
             records.object,
             records.root,
             table_density,
             is_catalog ? system_table : 0,
             least_pages,
             table.name(),
             0,
             {}});
        std::vector<placed_column> columns = table.layout().columns();
        std::sort(columns.begin(), columns.end(),
                  [](const placed_column &left, const placed_column &right) { return left.id < right.id; });
        for (const placed_column &column : columns) {
            add_column(table, column);
        }
        if (is_catalog) {
            add_primary_index(records);
        }
        if (table.long_values().root != 0) {
            add({records.object,
                 entry_type::long_value,
                 table.long_values().object,
                 table.long_values().root,
                 long_value_density,
                 0,
                 least_pages,
                 QByteArrayLiteral("LV"),
                 0,
                 {}});
        }
    }

private:
    static constexpr quint32 catalog_objects = 3;
    static constexpr quint32 table_density = 80;
    static constexpr quint32 long_value_density = 100;
    static constexpr qint64 system_table = -0x40000000;
    static constexpr qint64 compressed_column = 0x1000;

    void add(const catalog_entry &entry)
    {
        const QByteArray key = key_of(entry);
        const std::vector<ese_value> values = record_of(entry, format);
        catalog.add_record(key, values);
        copy.add_record(key, values);
    }

    void add_column(const table_writer &table, const placed_column &at)
    {
        const bool may_be_compressed = table.holds_compressed() && is_long(at.column.type);
        catalog_entry entry;
        entry.table = table.records().object;
        entry.type = entry_type::column;
        entry.id = static_cast<quint32>(at.id);
        entry.column_type_or_root = static_cast<quint32>(at.column.type);
        entry.space = at.size;
        entry.flags = may_be_compressed ? compressed_column : 0;
        entry.pages_or_codepage = is_text(at.column.type) ? static_cast<quint32>(at.column.codepage) : 0;
        entry.name = at.column.name;
        entry.record_offset = at.record_offset;
        add(entry);
    }

    void add_primary_index(const tree_place &records)
    {
        constexpr qint64 unique_primary_without_absent = 0x31;
        constexpr std::array<char, 12> first_three_columns{0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0};
        catalog_entry entry{records.object,
                            entry_type::index,
                            records.object,
                            records.root,
                            table_density,
                            unique_primary_without_absent,
                            0,
                            QByteArrayLiteral("Id"),
                            0,
                            {}};
        entry.key_columns = QByteArray(first_three_columns.data(), static_cast<int>(first_three_columns.size()));
        add(entry);
    }

    const file_format &format;
    table_writer &catalog;
    table_writer &copy;
};

} // namespace

std::vector<ese_column> catalog_columns(const file_format &format)
{
    std::vector<ese_column> columns;
    for (const catalog_column &known : columns_of_catalog) {
        if (format.revision >= known.since_revision) {
            columns.push_back({known.name, known.type, ese_codepage::windows_1252});
        }
    }
    return columns;
}

void write_catalog(const file_format &format, const std::vector<std::unique_ptr<table_writer>> &tables)
{
    catalog_writer writer(format, *tables[0], *tables[1]);
    for (const std::unique_ptr<table_writer> &table : tables) {
        writer.add_table(*table);
    }
    tables[0]->finish();
    tables[1]->finish();
}

} // namespace evidence::ese
