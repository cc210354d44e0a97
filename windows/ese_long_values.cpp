#include "windows/ese_long_values.h"

#include "windows/ese_decompression.h"

#include <QtEndian>

#include <algorithm>

namespace {

// A value of a few hundred bytes can be made that unfolds to megabytes, and a table full of records that all show it.
// So there is a bound for all values together, too, far above what programs reach: their segments are no larger than a
// page.
constexpr qint64 size_limit = 256 << 20;
constexpr qint64 least_budget = 64 << 20;
constexpr qint64 budget_per_file_byte = 16;
constexpr int deepest_tree = 32;
constexpr int offset_size = 4;

// The entry of a value: how often it is used, its size, and in newer files a byte of flags behind them.
constexpr int value_size_offset = 4;
constexpr int value_entry_size = 8;
constexpr int value_flags_offset = 8;
constexpr char value_is_encrypted = 0x1;

// A segment that is shorter or longer than the distance to the next one is compressed.
bool append_segment(QByteArray &value, const QByteArray &segment, quint32 expected_size)
{
    if (static_cast<quint32>(segment.size()) == expected_size) {
        value += segment;
        return true;
    }
    const std::optional<QByteArray> bytes = ese_decompressed(segment);
    if (!bytes || static_cast<quint32>(bytes->size()) != expected_size) {
        return false;
    }
    value += *bytes;
    return true;
}

} // namespace

ese_long_values::ese_long_values(const file_descriptor &file, int page_bytes, quint32 root)
    : pages(file, page_bytes), page_size(page_bytes), root_page(root)
{
    if (const std::optional<ese_page> page = pages.page(root_page)) {
        tree = page->tree();
    }
    budget = std::max(least_budget, budget_per_file_byte * page_bytes * pages.count());
}

std::optional<QByteArray> ese_long_values::value(const QByteArray &number)
{
    if (tree == 0 || (number.size() != 4 && number.size() != 8)) {
        return std::nullopt;
    }
    QByteArray key = number;
    std::reverse(key.begin(), key.end());
    if (std::optional<QByteArray> found = value_with_key(key)) {
        return found;
    }
    // Files of older programs leave out the zeros in front.
    const auto first = std::find_if(key.cbegin(), key.cend(), [](char byte) { return byte != '\0'; });
    return first == key.cbegin() ? std::nullopt : value_with_key(key.mid(static_cast<int>(first - key.cbegin())));
}

// The segments follow their value's entry in the order of their offsets; one that is missing makes the value
// unreadable.
std::optional<QByteArray> ese_long_values::value_with_key(const QByteArray &key)
{
    std::optional<position> at = first_not_before(key);
    ese_page_entry entry;
    if (key.isEmpty() || !at || !step_to_entry(*at, entry) || entry.key != key || entry.size < value_entry_size) {
        return std::nullopt;
    }
    const quint32 size = qFromLittleEndian<quint32>(entry.data + value_size_offset);
    const bool is_encrypted = entry.size > value_flags_offset && entry.data[value_flags_offset] & value_is_encrypted;
    if (size > std::min(size_limit, budget) || is_encrypted) {
        return std::nullopt;
    }
    budget -= size;
    QByteArray value;
    QByteArray segment;
    bool has_segment = false;
    while (step_to_entry(*at, entry) && entry.key.size() == key.size() + offset_size && entry.key.startsWith(key)) {
        const quint32 offset = qFromBigEndian<quint32>(entry.key.constData() + key.size());
        const auto start = static_cast<quint32>(value.size());
        if (has_segment ? offset <= start || offset > size || !append_segment(value, segment, offset - start)
                        : offset != 0) {
            return std::nullopt;
        }
        segment = entry.bytes();
        has_segment = true;
    }
    if (has_segment && !append_segment(value, segment, size - static_cast<quint32>(value.size()))) {
        return std::nullopt;
    }
    return static_cast<quint32>(value.size()) == size ? std::optional<QByteArray>(value) : std::nullopt;
}

// Down from the root: an entry of a branch leads to what lies before its key, its last one to all that is left.
std::optional<ese_long_values::position> ese_long_values::first_not_before(const QByteArray &key)
{
    quint32 number = root_page;
    for (int depth = 0; depth < deepest_tree; ++depth) {
        const std::optional<ese_page> page = tree_page(number);
        if (!page || page->count() == 0) {
            return std::nullopt;
        }
        const bool is_leaf = page->is_leaf();
        int low = 0;
        int high = is_leaf ? page->count() : page->count() - 1;
        while (low < high) {
            const int middle = (low + high) / 2;
            const std::optional<ese_page_entry> entry = page->entry(middle);
            if (!entry) {
                return std::nullopt;
            }
            if (is_leaf ? entry->key < key : entry->key <= key) {
                low = middle + 1;
            } else {
                high = middle;
            }
        }
        if (is_leaf) {
            return position{number, low};
        }
        const std::optional<ese_page_entry> branch = page->entry(low);
        if (!branch || branch->size < 4) {
            return std::nullopt;
        }
        number = qFromLittleEndian<quint32>(branch->data);
    }
    return std::nullopt;
}

std::optional<ese_page> ese_long_values::tree_page(quint32 number)
{
    std::optional<ese_page> page = pages.page(number);
    return page && page->tree() == tree ? page : std::nullopt;
}

// Takes the entry at the position, or the next one there is, and steps behind it. Pages without entries are passed
// over at the cost of the budget: damaged ones may lead in a circle, and each of a million values through all of them.
bool ese_long_values::step_to_entry(position &at, ese_page_entry &entry)
{
    for (int empty_pages = -1; budget >= 0; ++empty_pages) { // the first step is that from a page read to its end
        budget -= empty_pages > 0 ? page_size : 0;
        const std::optional<ese_page> page = tree_page(at.page);
        if (!page || !page->is_leaf()) {
            return false;
        }
        for (; at.index < page->count(); ++at.index) {
            const std::optional<ese_page_entry> found = page->entry(at.index);
            if (!found) {
                return false;
            }
            if (!found->is_deleted) {
                entry = *found;
                ++at.index;
                return true;
            }
        }
        at = {page->next_page(), 0};
    }
    return false;
}
