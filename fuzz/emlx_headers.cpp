// The header scanner of mail files, against the plain way: all replacements over the whole text, then line by line.
#include "macos/emlx_header_scanner.h"

#include "fuzz/fuzz_target.h"

#include <cstring>
#include <string>
#include <vector>

namespace {

const std::atomic<bool> not_cancelled{false};

struct replacement
{
    std::string text;
    std::string becomes;
};

const replacement replacements[] = {
    {"; ", ";"},    {";\n\t", ";"},       {";\r\n\t", ";"}, {";\n ", ";"},      {";\r\n ", ";"}, {", \r\n", ","},
    {",\r\n", ","}, {"=E2=80=A6", "..."}, {"=\r\n", "\n"},  {"=E2=80=99", "'"}, {"=2C", ","},
};

// What stands there from left to right goes, not what its going brings together.
std::string replaced(const std::string &text, const replacement &step)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const bool is_match = text.compare(at, step.text.size(), step.text) == 0;
        result += is_match ? step.becomes : text.substr(at, 1);
        at += is_match ? step.text.size() : 1;
    }
    return result;
}

std::vector<std::string> split(const std::string &text, const std::string &separator)
{
    std::vector<std::string> parts;
    std::size_t begin = 0;
    for (std::size_t end = text.find(separator); end != std::string::npos; end = text.find(separator, begin)) {
        parts.push_back(text.substr(begin, end - begin));
        begin = end + separator.size();
    }
    parts.push_back(text.substr(begin));
    return parts;
}

std::string trimmed(const std::string &text)
{
    constexpr const char *blanks = " \t\n\v\f\r";
    const std::size_t begin = text.find_first_not_of(blanks);
    return begin == std::string::npos ? std::string() : text.substr(begin, text.find_last_not_of(blanks) - begin + 1);
}

QString utf8_up_to_zero(const std::string &bytes)
{
    return QString::fromUtf8(bytes.c_str());
}

std::string address_text(const std::string &line)
{
    const std::vector<std::string> pieces = split(line, ",");
    std::string result;
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        std::string piece = pieces[i];
        const std::vector<std::string> parts = split(piece, "?=\"");
        if (piece.find("=?utf-8?") != std::string::npos && parts.size() >= 2) {
            std::string word = parts[0];
            for (const char *removed : {"=?utf-8?B?", "Reply-To:", "To:", "BCC:", "Bcc:", "CC:", "Cc:"}) {
                word = replaced(word, {removed, ""});
            }
            const QByteArray decoded = QByteArray::fromBase64(QByteArray::fromStdString(word));
            result += utf8_up_to_zero(decoded.toStdString()).toStdString();
            piece = parts[1];
        }
        result += trimmed(piece);
        if (i + 1 < pieces.size()) {
            result += ",";
        }
    }
    return replaced(result.empty() ? line : result, {"\"", ""});
}

std::string without_percent_escapes(const std::string &text)
{
    std::string bytes;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == '%' && at + 2 < text.size() && std::strchr("0123456789abcdefABCDEF", text[at + 1]) &&
            std::strchr("0123456789abcdefABCDEF", text[at + 2])) {
            bytes += static_cast<char>(std::stoi(text.substr(at + 1, 2), nullptr, 16));
            at += 2;
        } else {
            bytes += text[at];
        }
    }
    return bytes;
}

// The first line that begins with either name.
QString field(const std::vector<std::string> &lines, const std::string &name, const std::string &other_name)
{
    for (const std::string &line : lines) {
        if (line.compare(0, name.size(), name) == 0 || line.compare(0, other_name.size(), other_name) == 0) {
            std::string text = address_text(line);
            for (const replacement &step :
                 {replacement{name, ""}, replacement{other_name, ""}, replacement{"<", "("}, replacement{">", ")"}}) {
                text = replaced(text, step);
            }
            return utf8_up_to_zero(without_percent_escapes(text));
        }
    }
    return QString();
}

struct_address_bcc_replyto plainly_read(const QByteArray &content)
{
    std::string text = content.constData(); // up to the first zero byte
    for (const replacement &step : replacements) {
        text = replaced(text, step);
    }
    const std::vector<std::string> lines = split(text, "\n");
    return {field(lines, "BCC:", "Bcc:"), field(lines, "Reply-To:", "Reply-to:")};
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const struct_address_bcc_replyto expected = plainly_read(input);
    const QString path = file_with(input);
    for (const int block_size : {1 + input.size() % 40, 1 << 16}) {
        const file_descriptor file = open_source_file(path);
        const struct_address_bcc_replyto found = emlx_header_scanner(file, not_cancelled, block_size).scan();
        require(found.bcc == expected.bcc, "the Bcc text is that of the plain way");
        require(found.reply_to == expected.reply_to, "the Reply-To text is that of the plain way");
    }
}
