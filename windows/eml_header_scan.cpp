#include "windows/eml_header_scan.h"

#include <algorithm>
#include <cstring>

namespace {

const char *find(const char *begin, const char *end, char wanted)
{
    return static_cast<const char *>(std::memchr(begin, wanted, static_cast<std::size_t>(end - begin)));
}

QString behind_last(const QString &text, const char *mark)
{
    const QString wanted = QString::fromLatin1(mark);
    const int at = text.lastIndexOf(wanted);
    return at < 0 ? text : text.mid(at + wanted.size());
}

QString value_of(const QByteArray &line)
{
    return line.isNull() ? QString() : behind_last_colon(QString::fromUtf8(line));
}

// An address: what a display name in encoded words leaves behind, without its angle brackets.
QString address_of(const QByteArray &line)
{
    return behind_last(value_of(line), "?=").remove(QLatin1Char('<')).remove(QLatin1Char('>'));
}

} // namespace

QString behind_last_colon(const QString &text)
{
    const int at = text.lastIndexOf(QLatin1Char(':'));
    return at < 0 ? QStringLiteral("") : text.mid(at + 1);
}

bool eml_header_scan::take(const char *data, int size)
{
    const char *const end = data + size;
    if (is_cancelled) { // a line may be without end
        return false;
    }
    while (data < end) {
        const char *const line_end = find(data, end, '\n');
        const char *const next = line_end ? line_end + 1 : end;
        if (line_end && begun_line.isEmpty()) {
            if (!take_line(data, static_cast<int>(next - data))) {
                return false;
            }
        } else {
            const int room = longest_line - begun_line.size();
            const int added = std::min(room, static_cast<int>(next - data));
            begun_line.append(data, added);
            is_line_cut = is_line_cut || added < next - data;
            if (line_end && !finish()) {
                return false;
            }
        }
        data = next;
    }
    return true;
}

bool eml_header_scan::finish()
{
    const bool is_going_on = begun_line.isEmpty() || take_line(begun_line.constData(), begun_line.size());
    begun_line.resize(0);
    return is_going_on;
}

// The names are looked for from colon to colon: most lines of a mail hold none.
bool eml_header_scan::take_line(const char *line, int size)
{
    static constexpr struct
    {
        const char *name;
        QByteArray eml_header_scan::*line;
    } headers[] = {
        {"From", &eml_header_scan::from_line},       {"To", &eml_header_scan::to_line},
        {"Subject", &eml_header_scan::subject_line}, {"Importance", &eml_header_scan::importance_line},
        {"Date", &eml_header_scan::date_line},
    };
    if (is_cancelled) {
        return false;
    }
    const char *const first_colon = find(line, line + size, ':');
    if (!first_colon) {
        return true;
    }
    const char *const zero_byte = find(line, line + size, '\0');
    const char *const end = zero_byte ? zero_byte : line + size;
    bool is_taken[std::size(headers)] = {};
    QByteArray copy; // shared by the headers that stand in the same line
    for (const char *colon = first_colon; colon && colon < end; colon = find(colon + 1, end, ':')) {
        for (std::size_t i = 0; i < std::size(headers); ++i) {
            const auto name_size = static_cast<std::ptrdiff_t>(std::strlen(headers[i].name));
            if (is_taken[i] || colon - line < name_size ||
                std::memcmp(colon - name_size, headers[i].name, static_cast<std::size_t>(name_size)) != 0) {
                continue;
            }
            if (copy.isNull()) {
                copy = QByteArray(line, static_cast<int>(end - line));
            }
            is_taken[i] = true;
            this->*headers[i].line = copy;
        }
    }
    return true;
}

eml_header_values eml_header_scan::values() const
{
    eml_header_values found;
    found.from = address_of(from_line);
    found.to = address_of(to_line);
    found.subject = behind_last(value_of(subject_line), "Q?").remove(QLatin1String("?="));
    found.importance = value_of(importance_line);
    found.date = date_line.isNull() ? QString() : behind_last(QString::fromUtf8(date_line), "Date:");
    return found;
}
