#include "windows/ese_catalog_guard.h"

#include "windows/ese_page.h"

#include <QtEndian>

#include <utility>
#include <vector>

#include <unistd.h>

namespace {

constexpr off64_t page_size_offset = 236;    // in the head of the file
constexpr int page_size_of_old_files = 4096; // whose head names none
constexpr quint32 catalog_root = 4;
constexpr char catalog_name[] = "MSysObjects";
constexpr int most_levels = 8;

// A record of the catalog: its header and the fixed columns that the library reads without a look at its size.
constexpr int record_header_size = 4;
constexpr int least_fixed_columns = 5;
constexpr int least_record_size = 30;
constexpr int table_offset = 4;
constexpr int kind_offset = 8;
constexpr int identifier_offset = 10;
constexpr int type_or_page_offset = 14;
constexpr int size_offset = 18;
constexpr int name_column = 128;
constexpr int template_column = 130;
constexpr quint16 value_is_absent = 0x8000;

constexpr quint16 kind_is_table = 1;
constexpr quint16 kind_is_column = 2;
constexpr quint16 kind_is_long_value = 4;
constexpr quint16 last_kind = 5; // the library skips those behind it
constexpr quint32 last_tagged_column = 0xffff;

// Sizes of the values by their type; 0 where the catalog alone knows.
constexpr std::array<quint32, 18> size_of_type = {0, 1, 1, 2, 4, 8, 4, 8, 8, 0, 0, 0, 0, 0, 4, 8, 16, 2};
constexpr quint32 largest_fixed_value = 255;

struct table_entry
{
    quint32 tree = 0;
    quint32 root_page = 0;
    quint32 long_value_root = 0;
    quint32 last_column = 0;
    QByteArray name;
    QByteArray template_name;
    ese_record_layout layout;
};

template <typename Number>
Number number_at(const ese_page_entry &record, int offset)
{
    return qFromLittleEndian<Number>(record.data + offset);
}

// Out: null for a value that is absent or lies beyond the record.
QByteArray variable_value(const ese_page_entry &record, int column)
{
    const int last = static_cast<unsigned char>(record.data[1]);
    const int ends = number_at<quint16>(record, 2);
    const int values = ends + 2 * (last - last_fixed_column);
    if (column > last || values > record.size) {
        return QByteArray();
    }
    int begin = 0;
    int end = 0;
    for (int current = name_column; current <= column; ++current) {
        const int stored = number_at<quint16>(record, ends + 2 * (current - name_column));
        begin = end;
        end = (stored & value_is_absent) != 0 ? begin : stored;
    }
    return end <= begin || values + end > record.size ? QByteArray()
                                                      : QByteArray(record.data + values + begin, end - begin);
}

class catalog_walk
{
public:
    explicit catalog_walk(ese_page_source &source) : pages(source) {}

    bool take_page(quint32 number, int level);

    std::vector<table_entry> tables;
    int records_taken = 0;

private:
    bool take_record(const ese_page_entry &record);
    bool take_column(const ese_page_entry &record);

    ese_page_source &pages;
    qint64 pages_taken = 0;
};

// Along the entries that lead to other pages, as the library goes.
bool catalog_walk::take_page(quint32 number, int level)
{
    const std::optional<ese_page> page = pages.page(number);
    if (!page || page->tree() != ese_catalog_guard::catalog_tree || level > most_levels ||
        ++pages_taken > pages.count()) {
        return false;
    }
    for (int index = 0; index < page->count(); ++index) {
        const std::optional<ese_page_entry> entry = page->entry(index);
        if (!entry) {
            return false;
        }
        if (page->is_leaf()) {
            if (!entry->is_deleted && !take_record(*entry)) {
                return false;
            }
        } else if (entry->is_deleted || entry->size < static_cast<int>(sizeof(quint32)) ||
                   !take_page(number_at<quint32>(*entry, 0), level + 1)) {
            return false;
        }
    }
    return true;
}

// A table's record stands in front of those that belong to it.
bool catalog_walk::take_record(const ese_page_entry &record)
{
    ++records_taken;
    if (record.size < least_record_size || static_cast<unsigned char>(record.data[0]) < least_fixed_columns) {
        return false;
    }
    const auto kind = number_at<quint16>(record, kind_offset);
    const auto table = number_at<quint32>(record, table_offset);
    if (kind == kind_is_table) {
        table_entry entry;
        entry.tree = table;
        entry.root_page = number_at<quint32>(record, type_or_page_offset);
        entry.name = variable_value(record, name_column);
        entry.template_name = variable_value(record, template_column);
        entry.layout.fixed_end.fill(record_header_size);
        tables.push_back(entry);
        return number_at<quint32>(record, identifier_offset) == table;
    }
    if (kind == 0 || kind > last_kind) {
        return true;
    }
    if (tables.empty() || tables.back().tree != table) {
        return false;
    }
    if (kind == kind_is_long_value) {
        const quint32 known =
            std::exchange(tables.back().long_value_root, number_at<quint32>(record, type_or_page_offset));
        return known == 0; // a table has one such tree
    }
    return kind != kind_is_column || take_column(record);
}

bool catalog_walk::take_column(const ese_page_entry &record)
{
    table_entry &table = tables.back();
    const auto column = number_at<quint32>(record, identifier_offset);
    const auto type = number_at<quint32>(record, type_or_page_offset);
    const auto size = number_at<quint32>(record, size_offset);
    if (column <= table.last_column || column > last_tagged_column) {
        return false;
    }
    table.last_column = column;
    if (column > last_fixed_column) {
        if (column <= last_variable_column) {
            table.layout.variable.set(column - last_fixed_column - 1);
        }
        return true;
    }
    const quint32 right_size = type < size_of_type.size() ? size_of_type[type] : 0;
    if (size > largest_fixed_value || (right_size != 0 && size != right_size)) {
        return false;
    }
    for (quint32 last = column; last <= last_fixed_column; ++last) {
        table.layout.fixed_end[last] += static_cast<int>(size);
    }
    return true;
}

// A table made after another one has the columns of that one in front of its own.
ese_record_layout layout_after(const ese_record_layout &model, ese_record_layout layout)
{
    for (std::size_t last = 0; last < layout.fixed_end.size(); ++last) {
        layout.fixed_end[last] += model.fixed_end[last] - record_header_size;
    }
    layout.variable |= model.variable;
    return layout;
}

int page_size_of(const file_descriptor &file)
{
    quint32 stored = 0;
    if (!file.is_open() || read_at(file.get(), &stored, sizeof(stored), page_size_offset) != qint64{sizeof(stored)}) {
        return -1;
    }
    const quint32 size = qFromLittleEndian(stored);
    return size == 0 ? page_size_of_old_files : static_cast<int>(size);
}

} // namespace

ese_catalog_guard::ese_catalog_guard(const file_descriptor &file)
{
    ese_page_source pages(file, page_size_of(file));
    catalog_walk walk(pages);
    if (!walk.take_page(catalog_root, 0)) {
        return;
    }
    records_taken = walk.records_taken;
    QHash<QByteArray, const ese_record_layout *> by_name;
    for (const table_entry &table : walk.tables) {
        const ese_record_layout *&known = by_name[table.name]; // of the first one, as the library has it
        known = known ? known : &table.layout;
        if (!roots_by_name.contains(table.name)) {
            roots_by_name.insert(table.name, {table.root_page, table.long_value_root});
        }
        if (table.name == catalog_name && table.root_page != catalog_root) {
            return; // the library would read another tree for it
        }
    }
    for (const table_entry &table : walk.tables) {
        if (layouts.contains(table.tree)) {
            return;
        }
        if (table.template_name.isEmpty()) {
            layouts.insert(table.tree, table.layout);
        } else if (const ese_record_layout *model = by_name.value(table.template_name)) {
            layouts.insert(table.tree, layout_after(*model, table.layout));
        }
    }
    sound = true;
    for (const table_entry &table : walk.tables) {
        const std::optional<ese_page> root = pages.page(table.root_page);
        sound = sound && (!root || root->tree() == table.tree || !layouts.contains(root->tree()));
    }
}

const ese_record_layout *ese_catalog_guard::layout(quint32 tree) const
{
    const auto found = layouts.constFind(tree);
    return found == layouts.constEnd() ? nullptr : &*found;
}
