#include "evidence/ese_table_writer.h"

#include "evidence/ese_bytes.h"
#include "evidence/ese_compression.h"

#include <algorithm>

namespace evidence::ese {

namespace {

/// What a page can hold of one record, its key and its tag taken off. The first entry is a root's header or the key.
int largest_record(const file_format &format, const QByteArray &key)
{
    constexpr int root_header_bytes = 16;
    constexpr int tag_bytes = 4;
    const int first_entry_bytes = std::max(root_header_bytes, key.size()) + tag_bytes;
    return page_builder::capacity(format) - first_entry_bytes - page_builder::bytes_of_entry(key, QByteArray());
}

} // namespace

table_writer::table_writer(page_store &store, const QByteArray &name, const std::vector<ese_column> &columns,
                           tree_place records, quint32 long_value_object, key_storage long_value_keys)
    : store(store), table_name(name), records_layout(columns, store.format()),
      record_place(records), long_value_place{0, long_value_object}, long_value_keys(long_value_keys),
      record_tree(store, records.root, records.object, 0, 1)
{
}

int table_writer::add_record(const std::vector<ese_value> &values)
{
    add_record(big_endian(record_count + 1), values);
    return static_cast<int>(record_count++);
}

void table_writer::add_record(const QByteArray &key, const std::vector<ese_value> &values)
{
    has_compressed = has_compressed || std::any_of(values.begin(), values.end(), [](const ese_value &value) {
                         return value.compression != ese_compression::none;
                     });
    const auto store_long = [this](const QByteArray &bytes, ese_compression way) {
        return store_long_value(bytes, way);
    };
    record_tree.append(key, records_layout.encode(values, largest_record(store.format(), key), store_long));
}

int table_writer::segment_bytes() const
{
    // Pages above 8 KiB hold several segments.
    constexpr int page_overhead = 82;
    return std::min(store.format().page_size, 8192) - page_overhead;
}

/// An entry with the size, then the segments, each found by id and offset.
quint32 table_writer::store_long_value(const QByteArray &bytes, ese_compression compression)
{
    if (!long_value_tree) {
        long_value_place.root = store.allocate();
        long_value_tree.emplace(store, long_value_place.root, long_value_place.object, page_flag::long_value,
                                record_place.root, long_value_keys);
    }
    constexpr quint32 references = 1;
    const quint32 id = ++long_value_count;
    const QByteArray key = big_endian(id);
    long_value_tree->append(key, little_endian(references) + little_endian(static_cast<quint32>(bytes.size())),
                            key + big_endian<quint32>(0));
    for (int offset = 0; offset < bytes.size(); offset += segment_bytes()) {
        long_value_tree->append(key + big_endian(static_cast<quint32>(offset)),
                                compressed(bytes.mid(offset, segment_bytes()), compression));
    }
    return id;
}

void table_writer::finish()
{
    record_tree.finish();
    if (long_value_tree) {
        long_value_tree->finish();
    }
}

} // namespace evidence::ese
