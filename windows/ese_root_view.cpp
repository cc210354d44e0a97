#include "windows/ese_root_view.h"

#include "services/source_files.h"

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

int header_size_of(const QByteArray &page)
{
    return page.size() > largest_small_page ? large_header_size : small_header_size;
}

int tag_count_of(const QByteArray &page)
{
    return qFromLittleEndian<quint16>(page.constData() + tag_count_offset) & 0x0fff;
}

int place_of_tag(const QByteArray &page, int index)
{
    return page.size() - (index + 1) * tag_size;
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
    const int header_size = header_size_of(page);
    const int mask = page.size() > largest_small_page ? 0x7fff : 0x1fff;
    const int tag_count = tag_count_of(page);
    if ((flags & page_is_root) == 0 || (flags & (page_is_leaf | page_is_of_other_tree)) != 0 || tag_count < 2 ||
        place_of_tag(page, tag_count - 1) < header_size) {
        return std::nullopt;
    }
    const char *tag = page.constData() + place_of_tag(page, 0);
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
    const int header_size = header_size_of(page);
    QByteArray root(page.size(), '\0');
    std::memcpy(root.data(), page.constData(), static_cast<size_t>(header_size));
    std::memcpy(root.data() + header_size, page.constData() + entry.start, static_cast<size_t>(entry.size));
    put(root, header_size + entry.size + key_size_bytes, child);
    const int used = entry.size + child_size;
    put(root, free_bytes_offset, static_cast<quint16>(page.size() - header_size - used - 2 * tag_size));
    put(root, free_offset_offset, static_cast<quint16>(used));
    put(root, tag_count_offset, quint16{2});
    put(root, flags_offset, word_at(page, flags_offset) & ~page_is_parent_of_leaf);
    put(root, place_of_tag(root, 0), static_cast<quint16>(entry.size));
    put(root, place_of_tag(root, 1), static_cast<quint16>(child_size));
    put(root, place_of_tag(root, 1) + 2, static_cast<quint16>(entry.size));
    return root;
}

// What the root leads to, in a page that is none: its first entry is a key that no other shares.
QByteArray root_as_branch(const QByteArray &page, quint32 number)
{
    QByteArray branch = page;
    put(branch, flags_offset, word_at(page, flags_offset) & ~page_is_root);
    put(branch, place_of_tag(branch, 0), quint16{0});
    if (page.size() > largest_small_page) {
        put(branch, large_number_offset, quint64{number});
    }
    return branch;
}

// Takes what is not in the window out of the list of a page's entries.
void keep_window(QByteArray &branch, const ese_root_window &window)
{
    const int child_count = tag_count_of(branch) - 1;
    const int first = std::min(window.first, child_count);
    const int count = std::min(window.count, child_count - first);
    for (int i = 1; i <= count; ++i) {
        put(branch, place_of_tag(branch, i), word_at(branch, place_of_tag(branch, first + i)));
    }
    put(branch, tag_count_offset, static_cast<quint16>(count + 1));
}

/// What a root has to be to be shown in another way.
struct sound_root
{
    root_entry entry;
    checksum_kind checksum;
};

std::optional<sound_root> sound_root_in(const QByteArray &page, quint32 number)
{
    const std::optional<root_entry> entry = root_entry_of(page);
    const std::optional<checksum_kind> kind = entry ? checksum_kind_of(page, number) : std::nullopt;
    return kind ? std::make_optional(sound_root{*entry, *kind}) : std::nullopt;
}

} // namespace

ese_root_view::ese_root_view(int file) : descriptor(file)
{
    quint32 stored = 0;
    struct stat status = {};
    if (read_at(descriptor, &stored, sizeof(stored), page_size_offset) != qint64{sizeof(stored)} ||
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

quint32 ese_root_view::stored_page(quint32 number) const
{
    return page_size != 0 && number > page_count ? static_cast<quint32>(number - page_count) : number;
}

off64_t ese_root_view::size() const
{
    struct stat status = {};
    if (::fstat(descriptor, &status) != 0) {
        return -1;
    }
    return page_size == 0 ? status.st_size : 2 * (page_count + head_pages) * page_size;
}

// The child of the root with the number n has the number n + page_count.
ssize_t ese_root_view::read(char *buffer, size_t size, off64_t place) const
{
    const bool is_page = page_size != 0 && static_cast<off64_t>(size) == page_size && place % page_size == 0 &&
                         place >= head_pages * page_size;
    const off64_t number = is_page ? place / page_size - 1 : 0;
    if (number > page_count) {
        const auto root = static_cast<quint32>(number - page_count);
        const QByteArray page = page_at(root);
        if (const std::optional<sound_root> sound = sound_root_in(page, root)) {
            QByteArray shown = root_as_branch(page, static_cast<quint32>(number));
            if (root == window.root) {
                keep_window(shown, window);
            }
            put_checksum(shown, sound->checksum, static_cast<quint32>(number));
            std::memcpy(buffer, shown.constData(), size);
            return page_size;
        }
    }
    const ssize_t count = read_at(descriptor, buffer, size, place);
    if (is_page && count == page_size) {
        const auto page = QByteArray::fromRawData(buffer, static_cast<int>(size));
        if (const std::optional<sound_root> sound = sound_root_in(page, static_cast<quint32>(number))) {
            QByteArray shown = root_with_child(page, sound->entry, static_cast<quint32>(number + page_count));
            put_checksum(shown, sound->checksum, static_cast<quint32>(number));
            std::memcpy(buffer, shown.constData(), size);
        }
    }
    return count;
}

// Out: a page of zeros for one that the file does not have, which is no root.
QByteArray ese_root_view::page_at(quint32 number) const
{
    QByteArray page(static_cast<int>(page_size), '\0');
    const off64_t place = (off64_t{number} + 1) * page_size;
    if (read_at(descriptor, page.data(), static_cast<size_t>(page_size), place) != page_size) {
        page.fill('\0');
    }
    return page;
}

ese_root_view::ese_root_view(const ese_root_view &whole, const ese_root_window &shown) : ese_root_view(whole)
{
    window = shown;
}

std::optional<ese_root_view::root_shape> ese_root_view::shape_of(quint32 root) const
{
    if (page_size == 0 || root == 0 || root > page_count) {
        return std::nullopt;
    }
    const QByteArray page = page_at(root);
    if (!sound_root_in(page, root)) {
        return std::nullopt;
    }
    return root_shape{tag_count_of(page) - 1, (word_at(page, flags_offset) & page_is_parent_of_leaf) != 0};
}
