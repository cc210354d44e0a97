#include "windows/ese_record_guard.h"

#include "windows/ese_catalog_guard.h"
#include "windows/ese_page.h"

#include <QtEndian>

#include <algorithm>

namespace {

constexpr int smallest_page = 2048;
constexpr int largest_page = 32768;
constexpr int largest_small_page = 8192;
constexpr int flags_offset = 36;
constexpr quint32 page_is_leaf = 0x2;
constexpr quint32 page_is_of_other_tree = 0x20 | 0x40 | 0x80; // space, index, long values
constexpr int tag_size = 4;

constexpr int record_header_size = 4;
constexpr int least_catalog_record = 30; // less the library does not look for
constexpr quint16 value_is_absent = 0x8000;
constexpr int tagged_entry_size = 4;

// In front of the tagged values stands where each of them begins.
bool is_tagged_part_sound(const char *part, int size, int mask)
{
    if (size == 0) {
        return true;
    }
    const auto start_of = [=](int index) {
        return qFromLittleEndian<quint16>(part + index * tagged_entry_size + 2) & mask;
    };
    const int first = size < tagged_entry_size ? 0 : start_of(0);
    if (first < tagged_entry_size || first > size || first % tagged_entry_size != 0) {
        return false;
    }
    for (int index = 1; index < first / tagged_entry_size; ++index) {
        if (start_of(index) < start_of(index - 1) || start_of(index) > size) {
            return false;
        }
    }
    return true;
}

// Behind the header of a record stand the fixed values, then for each value of variable size where it ends, then these
// values, then the tagged ones. The library looks for the tagged ones behind the last value of a column that it knows.
bool is_sound(const ese_page_entry &record, int tagged_mask, const ese_record_layout &layout)
{
    if (record.size < record_header_size) {
        return true; // refused anyway
    }
    const int last_fixed = std::min<int>(static_cast<unsigned char>(record.data[0]), last_fixed_column);
    const int last_variable = static_cast<unsigned char>(record.data[1]);
    const int count = last_variable > last_fixed_column ? last_variable - last_fixed_column : 0;
    const int ends = qFromLittleEndian<quint16>(record.data + 2);
    const int values = ends + 2 * count;
    if (ends < record_header_size || values > record.size || layout.fixed_end[last_fixed] > record.size) {
        return false;
    }
    int end_before = 0;
    int end_of_known = 0;
    for (int i = 0; i < count; ++i) {
        const int end = qFromLittleEndian<quint16>(record.data + ends + 2 * i);
        if ((end & value_is_absent) != 0) {
            continue;
        }
        if (end < end_before || values + end > record.size) {
            return false;
        }
        end_before = end;
        end_of_known = layout.variable[static_cast<std::size_t>(i)] ? end : end_of_known;
    }
    const int tagged = values + end_of_known;
    return tagged_mask == 0 || is_tagged_part_sound(record.data + tagged, record.size - tagged, tagged_mask);
}

} // namespace

void cut_unsound_records(char *page, std::size_t size, bool has_tagged_index, const ese_catalog_guard &catalog)
{
    if (size < smallest_page || size > largest_page) {
        return;
    }
    const auto flags = qFromLittleEndian<quint32>(page + flags_offset);
    if ((flags & page_is_leaf) == 0 || (flags & page_is_of_other_tree) != 0) {
        return;
    }
    const int mask = size > largest_small_page ? 0x7fff : 0x1fff;
    const int tagged_mask = !has_tagged_index ? 0 : size > largest_small_page ? 0x7fff : 0x3fff;
    const ese_page records(QByteArray::fromRawData(page, static_cast<int>(size)));
    const ese_record_layout *const layout = catalog.layout(records.tree());
    const bool is_of_catalog =
        records.tree() == ese_catalog_guard::catalog_tree || records.tree() == ese_catalog_guard::catalog_copy_tree;
    const int least_size = is_of_catalog ? least_catalog_record : 0;
    for (int index = 0; index < records.count(); ++index) {
        const std::optional<ese_page_entry> record = records.entry(index);
        if (layout && record && record->size >= least_size && is_sound(*record, tagged_mask, *layout)) {
            continue;
        }
        // The first tag is that of the page itself.
        char *const tag = page + size - static_cast<std::size_t>(index + 2) * tag_size;
        const int stored = qFromLittleEndian<quint16>(tag);
        const int kept = record ? (stored & mask) - record->size : 0;
        qToLittleEndian(static_cast<quint16>((stored & ~mask) | kept), tag);
    }
}
