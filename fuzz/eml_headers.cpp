// The header scan of mail files, against the plain way: line by line as text, each line searched for each name.
#include "windows/eml_header_scan.h"

#include "fuzz/fuzz_target.h"

#include <QStringList>

namespace {

const std::atomic<bool> not_cancelled{false};
const std::atomic<bool> cancelled{true};

QList<QByteArray> lines_of(const QByteArray &content)
{
    QList<QByteArray> lines;
    for (int begin = 0; begin < content.size();) {
        const int end = content.indexOf('\n', begin);
        lines.append(content.mid(begin, end < 0 ? -1 : end + 1 - begin));
        begin += lines.last().size();
    }
    return lines;
}

QString last_part(const QString &text, const char *separator)
{
    return text.split(QLatin1String(separator)).last();
}

QString address_of(const QString &line)
{
    return last_part(last_part(line, ":"), "?=").remove(QLatin1Char('<')).remove(QLatin1Char('>'));
}

eml_header_values plainly_read(const QByteArray &content)
{
    eml_header_values found;
    for (const QByteArray &bytes : lines_of(content)) {
        const QString line = QString::fromUtf8(bytes.constData()); // up to the first zero byte
        const auto holds = [&line](const char *name) { return line.indexOf(QLatin1String(name)) >= 0; };
        if (holds("From:")) {
            found.from = address_of(line);
        }
        if (holds("To:")) {
            found.to = address_of(line);
        }
        if (holds("Subject:")) {
            found.subject = last_part(last_part(line, ":"), "Q?").remove(QLatin1String("?="));
        }
        if (holds("Importance:")) {
            found.importance = last_part(line, ":");
        }
        if (holds("Date:")) {
            found.date = last_part(line, "Date:");
        }
    }
    return found;
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    const eml_header_values expected = plainly_read(input);
    for (const int piece_size : {1 + input.size() % 40, 1 << 16}) {
        eml_header_scan scan(not_cancelled);
        for (int at = 0; at < input.size(); at += piece_size) {
            const QByteArray piece = input.mid(at, piece_size);
            require(scan.take(piece.constData(), piece.size()), "a scan that is not cancelled goes on");
        }
        require(scan.finish(), "a scan that is not cancelled ends");
        const eml_header_values found = scan.values();
        require(found.from == expected.from, "the sender is that of the plain way");
        require(found.to == expected.to, "the recipient is that of the plain way");
        require(found.subject == expected.subject, "the subject is that of the plain way");
        require(found.importance == expected.importance, "the importance is that of the plain way");
        require(found.date == expected.date, "the date is that of the plain way");
    }
    eml_header_scan scan(cancelled);
    require(!input.contains('\n') || !scan.take(input.constData(), input.size()), "a cancelled scan ends at a line");
}
