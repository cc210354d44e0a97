#include "services/html_reader.h"

#include <algorithm>

namespace {

constexpr const char *comment_end = "-->";
constexpr int comment_end_size = 3;

int size_of(QStringView text)
{
    return static_cast<int>(text.size());
}

// Beyond all bounds, and still small enough for sums of products of them.
constexpr int largest_span = 1 << 18;

// As the library reads a span, no number is one column.
qint64 span_of(QStringView value)
{
    return std::clamp(value.toString().toInt(), 1, largest_span);
}

bool has_reference(QStringView word)
{
    return word.indexOf(QLatin1Char('&')) >= 0;
}

} // namespace

bool html_reader::is_at(char character) const
{
    return position < size_of(source) && source.at(position) == QLatin1Char(character);
}

void html_reader::skip_blanks()
{
    while (position < size_of(source) && source.at(position).isSpace() &&
           source.at(position) != QChar(QChar::ParagraphSeparator)) {
        ++position;
    }
}

void html_reader::skip_comment()
{
    ++position;
    const bool is_comment = source.mid(position).startsWith(QLatin1String("--"));
    const auto end = is_comment ? source.indexOf(QLatin1String(comment_end), position + 2)
                                : source.indexOf(QLatin1Char('>'), position);
    position = end < 0 ? size_of(source) : static_cast<int>(end) + (is_comment ? comment_end_size : 1);
}

// A word ends at its closing quote; one without quotes at a blank or at what means something in a tag.
QStringView html_reader::read_word()
{
    const int size = size_of(source);
    if (is_at('"') || is_at('\'')) {
        const QChar quote = source.at(position);
        const bool can_be_escaped = quote == QLatin1Char('\'');
        const int begin = ++position;
        while (position < size &&
               (source.at(position) != quote || (can_be_escaped && source.at(position - 1) == QLatin1Char('\\')))) {
            ++position;
        }
        const QStringView word = source.mid(begin, position - begin);
        position = std::min(position + 1, size);
        return word;
    }
    const int begin = position;
    for (; position < size; ++position) {
        const QChar character = source.at(position);
        const bool closes_tag =
            character == QLatin1Char('/') && position + 1 < size && source.at(position + 1) == QLatin1Char('>');
        if (closes_tag || character == QLatin1Char('>') || character == QLatin1Char('<') ||
            character == QLatin1Char('=') || character.isSpace()) {
            break;
        }
    }
    return source.mid(begin, position - begin);
}

void html_reader::read_attributes()
{
    while (position < size_of(source)) {
        skip_blanks();
        if (is_at('>') || is_at('/')) {
            return;
        }
        const QStringView key = read_word();
        if (key.isEmpty()) {
            return;
        }
        has_reference_in_name = has_reference_in_name || has_reference(key);
        ++attributes;
        skip_blanks();
        if (!is_at('=')) {
            continue;
        }
        ++position;
        skip_blanks();
        const QStringView value = read_word();
        const bool is_columns = key.compare(QLatin1String("colspan"), Qt::CaseInsensitive) == 0;
        if (is_columns || key.compare(QLatin1String("rowspan"), Qt::CaseInsensitive) == 0) {
            (is_columns ? columns : rows) = span_of(value);
            has_reference_in_name = has_reference_in_name || has_reference(value);
        }
    }
}

bool html_reader::next()
{
    const auto begin = source.indexOf(QLatin1Char('<'), position);
    const int text_end = begin < 0 ? size_of(source) : static_cast<int>(begin);
    current_text = source.mid(position, text_end - position);
    position = text_end;
    if (begin < 0) {
        return false;
    }
    ++position;
    skip_blanks();
    current_name = QStringView();
    attributes = 0;
    columns = rows = 1;
    is_closed_at_once = has_reference_in_name = false;
    if (is_at('!')) {
        current_kind = tag_kind::comment;
        skip_comment();
        return true;
    }
    current_kind = is_at('/') ? tag_kind::closing : tag_kind::opening;
    if (current_kind == tag_kind::closing) {
        ++position;
    }
    current_name = read_word();
    has_reference_in_name = has_reference(current_name);
    if (current_kind == tag_kind::opening && position < size_of(source) && source.at(position).isSpace()) {
        read_attributes();
    }
    for (; position < size_of(source) && !is_at('>'); ++position) {
        is_closed_at_once = is_closed_at_once || is_at('/');
    }
    position = std::min(position + 1, size_of(source));
    return true;
}

bool html_reader::is_empty_element() const
{
    return is_closed_at_once || is_named("br") || is_named("hr") || is_named("img");
}
