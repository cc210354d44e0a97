#include "windows/ese_page.h"

#include <QtEndian>

#include <algorithm>

#include <sys/stat.h>
#include <unistd.h>

namespace {

// Offsets in the header of a page.
constexpr int next_page_offset = 20;
constexpr int tree_offset = 24;
constexpr int tag_count_offset = 34;
constexpr int flags_offset = 36;
constexpr int small_header_size = 40;
constexpr int large_header_size = 80;
constexpr int largest_small_page = 8192;

constexpr quint32 page_is_root = 0x1;
constexpr quint32 page_is_leaf = 0x2;
constexpr quint32 page_is_of_space_tree = 0x20;
constexpr quint32 page_is_of_index = 0x40;
constexpr quint32 page_is_of_long_values = 0x80;

constexpr int tag_size = 4;
constexpr int tag_is_deleted = 0x2;
constexpr int tag_has_common_key = 0x4;

template <typename Number>
Number number_at(const QByteArray &content, int offset)
{
    return qFromLittleEndian<Number>(content.constData() + offset);
}

// Takes a little-endian number of two bytes from the front of a span; its three highest bits are flags in large pages.
int taken_size(const char *&data, int &size)
{
    if (size < 2) {
        return -1;
    }
    const int value = qFromLittleEndian<quint16>(data) & 0x1fff;
    data += 2;
    size -= 2;
    return value;
}

} // namespace

ese_page::ese_page(const QByteArray &page_content)
    : content(page_content), is_small(content.size() <= largest_small_page)
{
    const int header_size = is_small ? small_header_size : large_header_size;
    if (content.size() < header_size + tag_size) {
        content.clear();
        return;
    }
    // The first tag belongs to the page itself. The upper bits of the count are newer and mean something else.
    const int tags = number_at<quint16>(content, tag_count_offset) & 0x0fff;
    entry_count = std::clamp(tags, 1, (content.size() - header_size) / tag_size) - 1;
}

bool ese_page::is_leaf() const
{
    return !content.isEmpty() && (number_at<quint32>(content, flags_offset) & page_is_leaf) != 0;
}

quint32 ese_page::next_page() const
{
    return content.isEmpty() ? 0 : number_at<quint32>(content, next_page_offset);
}

quint32 ese_page::tree() const
{
    return content.isEmpty() ? 0 : number_at<quint32>(content, tree_offset);
}

ese_page::content_kind ese_page::kind() const
{
    const quint32 flags = content.isEmpty() ? 0 : number_at<quint32>(content, flags_offset);
    if ((flags & (page_is_of_space_tree | page_is_of_index)) != 0) {
        return content_kind::other;
    }
    return (flags & page_is_of_long_values) != 0 ? content_kind::long_values : content_kind::records;
}

std::optional<ese_page::tag> ese_page::tag_at(int index) const
{
    const int header_size = is_small ? small_header_size : large_header_size;
    const int tag_offset = content.size() - (index + 1) * tag_size;
    const int mask = is_small ? 0x1fff : 0x7fff;
    const int place = number_at<quint16>(content, tag_offset + 2);
    const int size = number_at<quint16>(content, tag_offset) & mask;
    const int start = header_size + (place & mask);
    if (start + size > content.size()) {
        return std::nullopt;
    }
    tag found = {content.constData() + start, size, place >> 13};
    if (!is_small) {
        found.flags = size >= 2 ? static_cast<unsigned char>(found.data[1]) >> 5 : 0;
    }
    return found;
}

std::optional<ese_page_entry> ese_page::entry(int index) const
{
    if (index < 0 || index >= entry_count) {
        return std::nullopt;
    }
    std::optional<tag> found = tag_at(index + 1);
    if (!found) {
        return std::nullopt;
    }
    ese_page_entry result;
    result.is_deleted = (found->flags & tag_is_deleted) != 0;
    if (found->flags & tag_has_common_key) {
        const int prefix_size = taken_size(found->data, found->size);
        const std::optional<tag> common = tag_at(0);
        if (prefix_size < 0 || !common || number_at<quint32>(content, flags_offset) & page_is_root) {
            return std::nullopt;
        }
        // A common key ends in zeros that are not written.
        result.key = QByteArray(common->data, std::min(prefix_size, common->size)).leftJustified(prefix_size, '\0');
    }
    const int suffix_size = taken_size(found->data, found->size);
    if (suffix_size < 0 || suffix_size > found->size) {
        return std::nullopt;
    }
    result.key.append(found->data, suffix_size);
    result.data = found->data + suffix_size;
    result.size = found->size - suffix_size;
    return result;
}

ese_page_source::ese_page_source(const file_descriptor &source, int size) : file(source), page_size(size)
{
    struct stat status = {};
    if (page_size >= 2048 && page_size <= 32768 && file.is_open() && ::fstat(file.get(), &status) == 0) {
        page_count = status.st_size / page_size;
    }
}

std::optional<ese_page> ese_page_source::page(quint32 number)
{
    // Two pages of header stand in front of page 1.
    const qint64 place = static_cast<qint64>(number) + 1;
    if (number == 0 || place >= page_count) {
        return std::nullopt;
    }
    kept_page &slot = kept[number % kept.size()];
    if (slot.number != number) {
        QByteArray content(page_size, Qt::Uninitialized);
        if (read_at(file.get(), content.data(), static_cast<std::size_t>(page_size), place * page_size) != page_size) {
            return std::nullopt;
        }
        slot = {number, content};
    }
    return ese_page(slot.content);
}
