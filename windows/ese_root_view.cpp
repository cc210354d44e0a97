#include "windows/ese_root_view.h"

#include <QtEndian>

#include <algorithm>
#include <initializer_list>

#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr off64_t page_size_offset = 236; // in the head of the file
constexpr int smallest_page = 2048;
constexpr int largest_page = 32768;
constexpr int largest_small_page = 8192;
constexpr int head_pages = 2; // in front of page 1

// Offsets in the header of a page.
constexpr int old_number_offset = 4;
constexpr int free_bytes_offset = 28;
constexpr int free_offset_offset = 32;
constexpr int tag_count_offset = 34;
constexpr int flags_offset = 36;
constexpr int large_number_offset = 64;
constexpr int small_header_size = 40;
constexpr int large_header_size = 80;

constexpr quint32 page_is_root = 0x1;
constexpr quint32 page_is_leaf = 0x2;
constexpr quint32 page_is_parent_of_leaf = 0x4;
// Space trees, indexes and long values are searched by key, or not at all.
constexpr quint32 page_is_of_other_tree = 0x20 | 0x40 | 0x80;

constexpr int tag_size = 4;

enum class checksum_kind
{
    sum,       ///< the exclusive or of all words, and the page's number behind it
    corrected, ///< with a second word that tells which bit is wrong
    quartered  ///< the same of each quarter of a large page
};

quint32 word_at(const QByteArray &page, int offset)
{
    return qFromLittleEndian<quint32>(page.constData() + offset);
}

template <typename Number>
void put(QByteArray &page, int offset, Number number)
{
    qToLittleEndian(number, page.data() + offset);
}

// The lower half of the correction is the exclusive or of the positions of all set bits, the upper one that of the
// complements of these positions.
void put_corrected_sum(QByteArray &page, int at, int block, int begin, int size, quint32 number)
{
    quint32 sum = 0;
    quint32 positions = 0;
    for (int offset = begin; offset < size; offset += 4) {
        const quint32 word = word_at(page, block + offset);
        sum ^= word;
        if (__builtin_parity(word) != 0) {
            positions ^= static_cast<quint32>(offset) * 8;
        }
    }
    for (quint32 bit = 0; bit < 32; ++bit) {
        if ((sum >> bit & 1U) != 0) {
            positions ^= bit;
        }
    }
    const quint32 mask = static_cast<quint32>(size) * 8 - 1;
    put(page, at, sum ^ number);
    put(page, at + 4, (__builtin_parity(sum) != 0 ? positions ^ mask : positions) << 16 | positions);
}

void put_checksum(QByteArray &page, checksum_kind kind, quint32 number)
{
    constexpr quint32 start_of_sum = 0x89abcdef;
    constexpr int sum_offset_of_quarter[] = {40, 48, 56};
    switch (kind) {
    case checksum_kind::sum: {
        put(page, old_number_offset, number);
        quint32 sum = start_of_sum;
        for (int offset = old_number_offset; offset < page.size(); offset += 4) {
            sum ^= word_at(page, offset);
        }
        put(page, 0, sum);
        return;
    }
    case checksum_kind::corrected:
        put_corrected_sum(page, 0, 0, 8, page.size(), number);
        return;
    case checksum_kind::quartered:
        const int quarter = page.size() / 4;
        for (int i = 0; i < 3; ++i) {
            put_corrected_sum(page, sum_offset_of_quarter[i], quarter * (i + 1), 0, quarter, number);
        }
        put_corrected_sum(page, 0, 0, 8, quarter, number); // last: it covers the others
        return;
    }
}

// Out: how the page's checksum is made; none when it is wrong. Such a page is shown as it is, and the library judges
// it.
std::optional<checksum_kind> checksum_kind_of(const QByteArray &page, quint32 number)
{
    const bool is_large = page.size() > largest_small_page;
    for (const checksum_kind kind : {checksum_kind::corrected, checksum_kind::sum, checksum_kind::quartered}) {
        if (is_large != (kind == checksum_kind::quartered)) {
            continue;
        }
        QByteArray same = page;
        put_checksum(same, kind, number);
        if (same == page) {
            return kind;
        }
    }
    return std::nullopt;
}

/// The first entry of a root: what the tree has to say of itself.
struct root_entry
{
    int start;
    int size;
};

// Out: none for a page that is no root, leads to no other pages or does not hold together.
std::optional<root_entry> root_entry_of(const QByteArray &page)
{
    const quint32 flags = word_at(page, flags_offset);
    const int header_size = page.size() > largest_small_page ? large_header_size : small_header_size;
    const int mask = page.size() > largest_small_page ? 0x7fff : 0x1fff;
    const int tag_count = qFromLittleEndian<quint16>(page.constData() + tag_count_offset) & 0x0fff;
    if ((flags & page_is_root) == 0 || (flags & (page_is_leaf | page_is_of_other_tree)) != 0 || tag_count < 2) {
        return std::nullopt;
    }
    const char *tag = page.constData() + page.size() - tag_size;
    const root_entry entry{header_size + (qFromLittleEndian<quint16>(tag + 2) & mask),
                           qFromLittleEndian<quint16>(tag) & mask};
    constexpr int room_for_child = 64;
    if (entry.start + entry.size > page.size() || header_size + entry.size + room_for_child > page.size()) {
        return std::nullopt;
    }
    return entry;
}

// The root with its first entry and one child, an entry without a key: all keys lie before its end.
QByteArray root_with_child(const QByteArray &page, const root_entry &entry, quint32 child)
{
    constexpr int key_size_bytes = 2;
    constexpr int child_size = key_size_bytes + 4;
    const int header_size = page.size() > largest_small_page ? large_header_size : small_header_size;
    QByteArray root(page.size(), '\0');
    std::memcpy(root.data(), page.constData(), static_cast<size_t>(header_size));
    std::memcpy(root.data() + header_size, page.constData() + entry.start, static_cast<size_t>(entry.size));
    put(root, header_size + entry.size + key_size_bytes, child);
    const int used = entry.size + child_size;
    put(root, free_bytes_offset, static_cast<quint16>(page.size() - header_size - used - 2 * tag_size));
    put(root, free_offset_offset, static_cast<quint16>(used));
    put(root, tag_count_offset, quint16{2});
    put(root, flags_offset, word_at(page, flags_offset) & ~page_is_parent_of_leaf);
    put(root, page.size() - tag_size, static_cast<quint16>(entry.size));
    put(root, page.size() - 2 * tag_size, static_cast<quint16>(child_size));
    put(root, page.size() - 2 * tag_size + 2, static_cast<quint16>(entry.size));
    return root;
}

// What the root leads to, in a page that is none: its first entry is a key that no other shares.
QByteArray root_as_branch(const QByteArray &page, quint32 number)
{
    QByteArray branch = page;
    put(branch, flags_offset, word_at(page, flags_offset) & ~page_is_root);
    put(branch, page.size() - tag_size, quint16{0});
    if (page.size() > largest_small_page) {
        put(branch, large_number_offset, quint64{number});
    }
    return branch;
}

} // namespace

ese_root_view::ese_root_view(int file) : descriptor(file)
{
    quint32 stored = 0;
    struct stat status = {};
    if (::pread(descriptor, &stored, sizeof(stored), page_size_offset) != sizeof(stored) ||
        ::fstat(descriptor, &status) != 0) {
        return;
    }
    const quint32 named = qFromLittleEndian(stored);
    const off64_t pages = named == 0 ? 0 : (status.st_size + named - 1) / named;
    constexpr off64_t most_pages = 0x3fffffff; // twice as many have numbers of 31 bits
    if (named >= smallest_page && named <= largest_page && (named & (named - 1)) == 0 && pages <= most_pages) {
        page_size = named;
        page_count = pages;
    }
}

off64_t ese_root_view::size() const
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return -1;
    }
    return page_size == 0 ? status.st_size : 2 * (page_count + head_pages) * page_size;
}

ssize_t ese_root_view::read(char *buffer, size_t size, off64_t place) const
{
    const bool is_page = page_size != 0 && static_cast<off64_t>(size) == page_size && place % page_size == 0;
    if (is_page && place >= head_pages * page_size) {
        if (const std::optional<QByteArray> page = page_at(place)) {
            std::memcpy(buffer, page->constData(), size);
            return static_cast<ssize_t>(size);
        }
    }
    return ::pread(descriptor, buffer, size, place);
}

// The child of the root with the number n has the number n + page_count. Out: none for a page that is shown as it is.
std::optional<QByteArray> ese_root_view::page_at(off64_t place) const
{
    const off64_t number = place / page_size - 1;
    const off64_t root_number = number > page_count ? number - page_count : number;
    QByteArray page(static_cast<int>(page_size), Qt::Uninitialized);
    if (::pread(descriptor, page.data(), static_cast<size_t>(page_size), (root_number + 1) * page_size) != page_size) {
        return std::nullopt;
    }
    const std::optional<root_entry> entry = root_entry_of(page);
    if (!entry) {
        return number == root_number ? std::optional<QByteArray>(page) : std::nullopt;
    }
    const auto root = static_cast<quint32>(root_number);
    const std::optional<checksum_kind> kind = checksum_kind_of(page, root);
    if (!kind) {
        return number == root_number ? std::optional<QByteArray>(page) : std::nullopt;
    }
    const auto child = static_cast<quint32>(root_number + page_count);
    const bool is_child = number != root_number;
    QByteArray shown = is_child ? root_as_branch(page, child) : root_with_child(page, *entry, child);
    put_checksum(shown, *kind, is_child ? child : root);
    return shown;
}
