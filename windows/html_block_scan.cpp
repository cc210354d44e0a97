#include "windows/html_block_scan.h"

#include <algorithm>

namespace {

constexpr const char *type_name = "text/html";
constexpr const char *block_begin = "<html";
constexpr const char *block_end = "</html>";
constexpr int block_end_size = 7;
constexpr int longest_mark = 9;

} // namespace

void html_block_scan::take(const QByteArray &piece)
{
    QByteArray fresh = piece;
    fresh.truncate(static_cast<int>(std::remove(fresh.begin(), fresh.end(), '\0') - fresh.begin()));
    const int known = last_bytes.size();
    const QByteArray text = last_bytes + fresh;
    is_type_named = is_type_named || text.contains(type_name);
    if (current_place == place::before_block) {
        const int begin = text.indexOf(block_begin);
        if (begin >= 0) {
            current_place = place::in_block;
            take_block(text.mid(begin));
        }
    } else if (current_place == place::in_block) {
        take_block(text.mid(known));
    }
    last_bytes = text.right(longest_mark - 1);
}

void html_block_scan::take_block(const QByteArray &text)
{
    // The mark may have begun in what the block holds already.
    const int held = std::min(block.size(), block_end_size - 1);
    const QByteArray seam = (is_block_cut ? last_bytes.right(block_end_size - 1) : block.right(held)) + text;
    const int carried = seam.size() - text.size();
    const int end = seam.indexOf(block_end);
    const int added = end < 0 ? text.size() : std::max(0, end + block_end_size - carried);
    const int room = std::max(0, largest_block - block.size());
    block.append(text.constData(), std::min(added, room));
    is_block_cut = is_block_cut || added > room;
    if (end >= 0) {
        current_place = place::behind_block;
        if (is_block_cut) {
            block.append(block_end);
        }
    }
}

QByteArray html_block_scan::found() const
{
    const QByteArray type(is_type_named ? type_name : "");
    return current_place == place::behind_block ? type + block : type;
}
