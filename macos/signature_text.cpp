#include "macos/signature_text.h"

#include "services/byte_text.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr const char *quoted_printable_header = "Content-Transfer-Encoding: quoted-printable";
constexpr const char *line_marker = "+@@,@@+"; // tells the ends of lines from line feeds that stand alone
constexpr const char *soft_line_break = "=\n+@@,@@+";

// Out: the lines with the marker behind each; a line ends at a zero byte. None when the extraction is cancelled.
std::optional<QByteArray> marked_lines(const QByteArray &content, bool &is_quoted_printable,
                                       const std::atomic<bool> &cancel_flag)
{
    QByteArray marked;
    marked.reserve(content.size() + content.size() / 4);
    for (int begin = 0; begin < content.size();) {
        if (cancel_flag) {
            return std::nullopt;
        }
        const int line_feed = content.indexOf('\n', begin);
        const int end = line_feed < 0 ? content.size() : line_feed + 1;
        const char *first = content.constData() + begin;
        const auto *zero = static_cast<const char *>(std::memchr(first, 0, static_cast<std::size_t>(end - begin)));
        const QByteArray line = QByteArray::fromRawData(first, zero ? static_cast<int>(zero - first) : end - begin);
        is_quoted_printable = is_quoted_printable || line.contains(quoted_printable_header);
        marked.append(line).append(line_marker);
        begin = end;
    }
    return marked;
}

} // namespace

std::optional<html_text> plain_text_of_signature(const QByteArray &content, const std::atomic<bool> &cancel_flag)
{
    bool is_quoted_printable = false;
    std::optional<QByteArray> text = marked_lines(content, is_quoted_printable, cancel_flag);
    if (!text) {
        return std::nullopt;
    }
    if (is_quoted_printable) {
        text->replace(soft_line_break, "");
    }
    text->replace(line_marker, "");
    text->remove(0, std::max(0, text->indexOf("<body")));
    html_text result = plain_text_of_html(text_of_unknown_encoding(*text));
    result.text = result.text.trimmed();
    return result;
}
