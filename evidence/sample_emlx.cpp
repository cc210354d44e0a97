#include "evidence/sample_emlx.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace evidence {

namespace {

constexpr int smallest_mail = 2000;
constexpr double largest_to_smallest = 28; // with headers and frames below 60 KB
constexpr int line_count = 2000;
constexpr int line_characters = 70;
constexpr uint64_t message_flags = 8590195713; // a mail that was read, as its file has it

struct attachment_kind
{
    const char *name; ///< "%1" is a number
    const char *media_type;
    const char *start; ///< of the content
};

// clang-format off
constexpr std::array<attachment_kind, 6> kinds = {{
    {"Übersicht %1.pdf", "application/pdf",                "%PDF-1.4\n%\n"},
    {"IMG_%1.JPG",       "image/jpeg",                     "\xff\xd8\xff\xe0\x20\x10JFIF"},
    {"報告書_%1.docx",   "application/octet-stream",       "PK\x03\x04"},
    {"договор %1.txt",   "text/plain",                     "Nr. "},
    {"archive.tar.%1",   "application/octet-stream",       "ustar"},
    {"logo%1",           "image/png",                      "\x89PNG\r\n"},
}};
// clang-format on

/// Names outside ASCII are encoded within quotes, as many programs write them.
QByteArray mailbox_text(const sample_person &person)
{
    const QByteArray address = '<' + person.address.toUtf8() + '>';
    if (person.name.isEmpty()) {
        return person.address.toUtf8();
    }
    if (person.name.toLatin1() == person.name.toUtf8()) {
        return '"' + person.name.toUtf8().replace('"', '\'') + "\" " + address;
    }
    return "\"=?utf-8?B?" + person.name.toUtf8().toBase64() + "?=\" " + address;
}

} // namespace

sample_emlx::sample_emlx(sample_random &random) : random(random)
{
    for (int line = 0; line < line_count; ++line) {
        const QString text = text_of(random, line_characters) + QLatin1Char('\n');
        lines.push_back({text, text.toUtf8().size()});
    }
}

QVector<mail_attachment> sample_emlx::attachments(int count)
{
    QVector<mail_attachment> result;
    for (int index = 0; index < count; ++index) {
        const attachment_kind &kind = random.pick(kinds);
        // The index stands in the number, so that no two names of a mail are the same.
        const auto number = static_cast<qint64>(random.below(1000)) * 10 + index;
        QByteArray content(kind.start);
        content += QByteArray(static_cast<int>(500 + random.below(3500)), static_cast<char>('a' + index));
        result.append({QString::fromUtf8(kind.name).arg(number), kind.media_type, content});
    }
    return result;
}

emlx_message sample_emlx::message(const sample_mail &mail)
{
    const QDateTime date = QDateTime::fromSecsSinceEpoch(mail.date, Qt::UTC);
    emlx_message message;
    message.headers = {
        {"From", mailbox_text(mail.sender)},
        {"Subject", encoded_header(mail.subject)},
        {"Date", QLocale::c().toString(date, QStringLiteral("ddd, d MMM yyyy hh:mm:ss '+0000'")).toLatin1()},
        {"Message-Id", '<' + QByteArray::number(static_cast<quint64>(mail.message_id), 16) + "@example.com>"},
    };
    const char *const names[] = {"To", "Cc", "Bcc"};
    for (size_t type = 0; type < mail.recipients.size(); ++type) {
        if (!mail.recipients[type].isEmpty()) {
            message.headers.append({names[type], address_list(mail.recipients[type])});
        }
    }
    if (mail.has_reply_to) {
        message.headers.append({random.one_in(5) ? "Reply-to" : "Reply-To", address_list({mail.sender})});
    }
    const double size = smallest_mail * std::pow(largest_to_smallest, static_cast<double>(random.below(1000)) / 1000);
    int body_bytes = static_cast<int>(size);
    message.is_partial = !mail.attachments.isEmpty() && random.one_in(2);
    for (const mail_attachment &attachment : mail.attachments) {
        body_bytes -= message.is_partial ? 0 : attachment.content.size() * 4 / 3;
    }
    message.text = body(std::max(body_bytes, 200));
    message.attachments = mail.attachments;
    message.properties = {{"date-received", mail.date}, {"flags", static_cast<qint64>(message_flags)}};
    return message;
}

/// Long lists are folded behind a comma, with the line end of the server that the mail came from.
QByteArray sample_emlx::address_list(const QVector<sample_person> &people)
{
    const QByteArray fold = random.one_in(2) ? ",\r\n " : ",\n ";
    QByteArray list;
    for (const sample_person &person : people) {
        list += (list.isEmpty() ? QByteArray() : fold) + mailbox_text(person);
    }
    return list;
}

QString sample_emlx::body(int bytes)
{
    QString text;
    size_t line = random.below(lines.size());
    for (int left = bytes; left > 0; left -= lines[line].bytes) {
        text += lines[line].text;
        line = (line + 1) % lines.size();
    }
    return text;
}

} // namespace evidence
