#include "macos/emlx_header_scanner.h"

#include "services/percent_encoding.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace {

struct replacement
{
    const char *text;
    const char *becomes;
};

// The order is the meaning: each works on what the ones before it have left.
// clang-format off
constexpr replacement replacements[] = {
    {"; ",        ";"},   // blank behind a separator
    {";\n\t",     ";"},   // folded line after a semicolon
    {";\r\n\t",   ";"},
    {";\n ",      ";"},
    {";\r\n ",    ";"},
    {", \r\n",    ","},   // folded line after a comma
    {",\r\n",     ","},
    {"=E2=80=A6", "..."}, // quoted-printable ellipsis
    {"=\r\n",     "\n"},  // quoted-printable soft break
    {"=E2=80=99", "'"},   // quoted-printable apostrophe
    {"=2C",       ","},   // quoted-printable comma
};
// clang-format on
constexpr const char *replaced_characters = ";,= \t\r\n0269ACE8";

// What in front of a line start takes it away, the end of the line before included.
constexpr const char *joining_ends[] = {",\r\n", ", \r\n", ", \r\n\r\n"};
constexpr int longest_joining_end = 6;

constexpr const char *bcc_names[] = {"BCC:", "Bcc:"};
constexpr const char *reply_to_names[] = {"Reply-To:", "Reply-to:"};
constexpr int longest_name = 9;

constexpr int shortest_part = 128; // bytes: about a line

constexpr const char *word_begin = "=?utf-8?";
constexpr const char *word_end = "?=\"";
constexpr int word_end_size = 3;
constexpr const char *texts_in_front_of_word[] = {"=?utf-8?B?", "Reply-To:", "To:", "BCC:", "Bcc:", "CC:", "Cc:"};

bool stays_in_place(char character)
{
    return character != '\0' && !std::strchr(replaced_characters, character);
}

// As QByteArray's own, which looks at one byte at a time: lines and zero bytes are looked for in all of every mail.
int index_of(const QByteArray &text, char character, int from)
{
    const auto size = static_cast<std::size_t>(text.size() - from);
    const auto *found = static_cast<const char *>(std::memchr(text.constData() + from, character, size));
    return found ? static_cast<int>(found - text.constData()) : -1;
}

void remove_all(QByteArray &text, const char *removed)
{
    text.replace(removed, "");
}

void append_piece(QByteArray &result, QByteArray piece)
{
    const int word_size = piece.contains(word_begin) ? piece.indexOf(word_end) : -1;
    if (word_size >= 0) {
        QByteArray word = piece.left(word_size);
        for (const char *text : texts_in_front_of_word) {
            remove_all(word, text);
        }
        result += QString::fromUtf8(QByteArray::fromBase64(word).constData()).toUtf8();
        piece.remove(0, word_size + word_end_size);
        const int next_end = piece.indexOf(word_end); // what stands behind a second one is lost
        if (next_end >= 0) {
            piece.truncate(next_end);
        }
    }
    result += piece.trimmed();
}

template <std::size_t count>
QString address_text(QByteArray text, const char *const (&names)[count])
{
    for (const char *name : names) {
        remove_all(text, name);
    }
    text.replace('<', '(').replace('>', ')');
    return QString::fromUtf8(percent_decoded(text).constData()); // up to the first zero byte
}

} // namespace

QByteArray get_to_field(const QByteArray &line, const std::atomic<bool> &cancel_flag)
{
    QByteArray text;
    for (int begin = 0; begin >= 0;) {
        if (cancel_flag) {
            return QByteArray();
        }
        const int comma = line.indexOf(',', begin);
        append_piece(text, line.mid(begin, comma < 0 ? -1 : comma - begin));
        if (comma >= 0) {
            text += ',';
        }
        begin = comma < 0 ? -1 : comma + 1;
    }
    if (text.isEmpty()) {
        text = line;
    }
    return text.replace("\"", "");
}

emlx_header_scanner::emlx_header_scanner(const file_descriptor &mail_file, const std::atomic<bool> &cancel_flag,
                                         int bytes_at_a_time)
    : file(mail_file), is_cancelled(cancel_flag), block_size(bytes_at_a_time)
{
    window.reserve(longest_joining_end + longest_name + block_size);
}

// Appends a block to the window and drops what lies too far behind the position to be looked at again.
bool emlx_header_scanner::read_more()
{
    if (is_complete) {
        return false;
    }
    const int dropped = std::max(0, position - longest_joining_end);
    window.remove(0, dropped);
    position -= dropped;
    const int filled = window.size();
    window.resize(filled + block_size);
    const auto count = static_cast<int>(read_block(file, window.data() + filled, static_cast<std::size_t>(block_size)));
    window.truncate(filled + std::max(0, count));
    const int zero_byte = index_of(window, '\0', filled);
    if (zero_byte >= 0) {
        window.truncate(zero_byte);
    }
    is_complete = count < block_size || zero_byte >= 0;
    return !is_complete || window.size() > filled;
}

// Out: false when the text ends first.
bool emlx_header_scanner::step_to_next_line()
{
    do {
        const int line_end = index_of(window, '\n', position);
        if (line_end >= 0) {
            position = line_end + 1;
            return true;
        }
        position = window.size();
    } while (read_more());
    return false;
}

bool emlx_header_scanner::is_at_line_of(const char *const (&names)[2])
{
    while (window.size() - position < longest_name && read_more()) {
    }
    const char *const line = window.constData() + position;
    return std::any_of(std::begin(names), std::end(names),
                       [line](const char *name) {
                           return *line == *name && std::strncmp(line, name, std::strlen(name)) == 0;
                       }) &&
           is_line_start();
}

// Whether the line in hand is a line of the replaced text.
bool emlx_header_scanner::is_line_start() const
{
    const int begin = std::max(0, position - longest_joining_end);
    const QByteArray before = QByteArray::fromRawData(window.constData() + begin, position - begin);
    return std::none_of(std::begin(joining_ends), std::end(joining_ends),
                        [&before](const char *end) { return before.endsWith(end); });
}

// The line in hand of the replaced text, which may go on behind that of the file. Stays at its position.
QByteArray emlx_header_scanner::take_line()
{
    QByteArray line;
    for (int begin = 0;;) {
        const int end = end_of_part(begin);
        QByteArray part = window.mid(position + begin, end - begin);
        for (const replacement &step : replacements) {
            part.replace(step.text, step.becomes);
        }
        const int line_end = part.indexOf('\n');
        line += part.mid(0, line_end);
        const bool is_text_end = is_complete && position + end == window.size();
        if (line_end >= 0 || is_text_end || end >= longest_line) {
            is_line_cut = is_line_cut || (line_end < 0 && !is_text_end);
            return line;
        }
        begin = end;
    }
}

// Out: the end of a part of the text that can be replaced by itself, counted from the position as its begin is. It is
// the end of the text, or of what is read of a line, where no such part ends.
int emlx_header_scanner::end_of_part(int begin)
{
    int end = begin + shortest_part;
    do {
        const int limit = window.size() - position;
        while (end < limit && !stays_in_place(window.at(position + end))) {
            ++end;
        }
        if (end < limit) {
            return end;
        }
    } while (end < longest_line && read_more());
    return std::min(end, window.size() - position);
}

struct_address_bcc_replyto emlx_header_scanner::scan()
{
    struct_address_bcc_replyto addresses;
    bool has_bcc = false;
    bool has_reply_to = false;
    do {
        if (is_cancelled) {
            return struct_address_bcc_replyto();
        }
        if (!has_bcc && is_at_line_of(bcc_names)) {
            has_bcc = true;
            addresses.bcc = address_text(get_to_field(take_line(), is_cancelled), bcc_names);
        } else if (!has_reply_to && is_at_line_of(reply_to_names)) {
            has_reply_to = true;
            addresses.reply_to = address_text(get_to_field(take_line(), is_cancelled), reply_to_names);
        }
    } while ((!has_bcc || !has_reply_to) && step_to_next_line());
    return addresses;
}
