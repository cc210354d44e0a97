#include "services/html_text.h"

#include "services/html_measure.h"
#include "services/html_reader.h"

#include <QTextDocument>
#include <QUrl>
#include <QVariant>

#include <algorithm>
#include <iterator>

namespace {

// What evidence names belongs to the machine of its owner: on this one it is another file, or a pipe that never ends.
class closed_document : public QTextDocument
{
protected:
    QVariant loadResource(int /*type*/, const QUrl & /*name*/) override { return QVariant(); }
};

struct character_name
{
    const char *name;
    ushort code;
};

// clang-format off
constexpr character_name character_names[] = {
    {"amp",  '&'},
    {"lt",   '<'},
    {"gt",   '>'},
    {"quot", '"'},
    {"apos", '\''},
    {"nbsp", ' '},
};
// clang-format on
constexpr int longest_reference = 9;

constexpr const char *names_of_blocks[] = {"br", "p",  "div", "li",         "tr",     "td",   "th",   "table", "ul",
                                           "ol", "dt", "dd",  "title",      "h1",     "h2",   "h3",   "h4",    "h5",
                                           "h6", "hr", "pre", "blockquote", "center", "body", "head", "html"};
constexpr const char *names_without_text[] = {"script", "style", "title"};

template <std::size_t count>
bool is_one_of(const html_reader &tag, const char *const (&names)[count])
{
    return std::any_of(std::begin(names), std::end(names), [&tag](const char *name) { return tag.is_named(name); });
}

// The character that a reference without its "&" and ";" stands for; 0 for none.
uint character_of(QStringView reference)
{
    if (reference.startsWith(QLatin1Char('#'))) {
        const bool is_hexadecimal = reference.mid(1).startsWith(QLatin1Char('x'), Qt::CaseInsensitive);
        const uint code = reference.mid(is_hexadecimal ? 2 : 1).toString().toUInt(nullptr, is_hexadecimal ? 16 : 10);
        return code <= QChar::LastValidCodePoint ? code : 0;
    }
    const auto *known =
        std::find_if(std::begin(character_names), std::end(character_names),
                     [reference](const character_name &one) { return reference == QLatin1String(one.name); });
    return known == std::end(character_names) ? 0 : known->code;
}

void append_blank(QString &text, QChar blank)
{
    if (!text.isEmpty() && !text.back().isSpace()) {
        text += blank;
    } else if (!text.isEmpty() && blank == QLatin1Char('\n')) {
        text.back() = blank;
    }
}

void append_text(QString &text, QStringView added)
{
    for (int at = 0; at < static_cast<int>(added.size()); ++at) {
        const QChar character = added.at(at);
        if (character == QLatin1Char('&')) {
            const auto size = added.mid(at + 1, longest_reference).indexOf(QLatin1Char(';'));
            const uint code = size < 1 ? 0 : character_of(added.mid(at + 1, size));
            if (code != 0) {
                text += QString::fromUcs4(&code, 1);
                at += static_cast<int>(size) + 1;
                continue;
            }
        }
        if (character.isSpace()) {
            append_blank(text, QLatin1Char(' '));
        } else {
            text += character;
        }
    }
}

} // namespace

QString text_without_markup(const QString &html)
{
    QString text;
    html_reader reader(html);
    bool is_hidden = false;
    bool is_more = true;
    while (is_more) {
        is_more = reader.next();
        if (!is_hidden) {
            append_text(text, reader.text());
        }
        if (is_more && reader.kind() != html_reader::tag_kind::comment) {
            is_hidden = reader.kind() == html_reader::tag_kind::opening && !reader.is_empty_element() &&
                        is_one_of(reader, names_without_text);
            if (is_one_of(reader, names_of_blocks)) {
                append_blank(text, QLatin1Char('\n'));
            }
        }
    }
    return text;
}

html_text plain_text_of_html(const QString &html)
{
    html_text result;
    result.excess = excess_of(html);
    if (result.excess) {
        result.text = text_without_markup(html);
        return result;
    }
    closed_document document;
    document.setUndoRedoEnabled(false);
    document.setHtml(html);
    result.text = document.toPlainText();
    return result;
}
