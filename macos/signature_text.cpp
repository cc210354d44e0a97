#include "macos/signature_text.h"

#include "services/byte_text.h"

#include <QRegularExpression>
#include <QTextDocument>

#include <algorithm>
#include <cstring>

namespace {

constexpr const char *quoted_printable_header = "Content-Transfer-Encoding: quoted-printable";
constexpr const char *line_marker = "+@@,@@+"; // tells the ends of lines from line feeds that stand alone
constexpr const char *soft_line_break = "=\n+@@,@@+";

// The document reads markup in a time that grows with the square of what is nested: this much takes it a second or two.
constexpr int most_tags = 10000;

// A row of a table has as many cells as the widest, so a few tags can make millions.
constexpr qint64 most_cells = 200000;
constexpr qint64 widest_span = 20480; // of which the document makes no more

// Evidence names resources at will, and the document would read them from the examiner's machine.
class document_without_resources : public QTextDocument
{
protected:
    QVariant loadResource(int, const QUrl &) override { return QVariant(); }
};

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

// The time for matching the selectors of a style sheet has no bound, and all that one could change in a plain text is
// what it hides. The document takes a tag's name in quotes or with entities for the name itself.
QString without_style_sheets(QString html)
{
    static const QRegularExpression style_sheet(QStringLiteral("<\\s*+style(?:(?!-->)[^<])*+"),
                                                QRegularExpression::CaseInsensitiveOption |
                                                    QRegularExpression::UseUnicodePropertiesOption);
    static const QRegularExpression disguised_tag(QStringLiteral("<(?=\\s*+(?:[\"']|[^\\s<>=&]*+&))"),
                                                  QRegularExpression::UseUnicodePropertiesOption);
    return html.remove(style_sheet).replace(disguised_tag, QStringLiteral("<unknown "));
}

// A name of an attribute with a letter of it as an entity.
constexpr const char *disguised_name =
    "&#(?:x0*[4-7][0-9a-f]|0*(?:6[5-9]|[789][0-9]|1[01][0-9]|12[0-2]))(?![0-9a-f])[^<>=\\s\"']*+[\"']?\\s*=";

int count_of(const QString &html, const char *pattern)
{
    return html.count(QRegularExpression(QLatin1String(pattern), QRegularExpression::CaseInsensitiveOption));
}

// The sum of an attribute's values. One with entities in its name or value may be any.
qint64 sum_of_spans(const QString &html, const char *attribute)
{
    const QRegularExpression span(QLatin1String(attribute) + QLatin1String("[\"']?\\s*=\\s*[\"']?\\s*[+]?(\\d*)(&?)"),
                                  QRegularExpression::CaseInsensitiveOption);
    qint64 sum = widest_span * count_of(html, disguised_name);
    for (QRegularExpressionMatchIterator matches = span.globalMatch(html); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        sum += match.captured(2).isEmpty() ? qMin(match.captured(1).toLongLong(), widest_span) : widest_span;
    }
    return sum;
}

bool has_too_many_cells(const QString &html)
{
    const qint64 rows = count_of(html, "<\\s*tr");
    const qint64 cells = count_of(html, "<\\s*t[dh]");
    return cells > 0 &&
           (rows + 1 + sum_of_spans(html, "rowspan")) * (cells + sum_of_spans(html, "colspan")) > most_cells;
}

} // namespace

std::optional<QString> plain_text_of_signature(const QByteArray &content, const std::atomic<bool> &cancel_flag)
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
    if (text->count('<') > most_tags) {
        return std::nullopt;
    }
    const QString html = without_style_sheets(text_of_unknown_encoding(*text));
    if (has_too_many_cells(html)) {
        return std::nullopt;
    }
    document_without_resources document;
    document.setUndoRedoEnabled(false);
    document.setHtml(html);
    return document.toPlainText().trimmed();
}
