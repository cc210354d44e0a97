#include "evidence/emlx_file.h"

namespace evidence {

namespace {

constexpr const char *boundary = "Apple-Mail=_4E0C17D8-93A5-4B0B-8C1F-6A7F2D5B1E90";
constexpr int byte_count_width = 10;
constexpr int encoded_word_bytes = 42; // 56 characters of Base64, with its frame below the 75 an encoded word may have
constexpr int base64_line_length = 76;

bool is_ascii(const QString &text)
{
    for (const QChar character : text) {
        if (character.unicode() < 0x20 || character.unicode() > 0x7e) {
            return false;
        }
    }
    return true;
}

/// The length of the longest start of the bytes that fits and does not cut a UTF-8 sequence.
int whole_characters(const QByteArray &bytes, int start)
{
    if (bytes.size() - start <= encoded_word_bytes) {
        return bytes.size() - start;
    }
    int length = encoded_word_bytes;
    while (length > 1 && (static_cast<unsigned char>(bytes.at(start + length)) & 0xc0U) == 0x80U) {
        --length;
    }
    return length;
}

QByteArray base64_lines(const QByteArray &content)
{
    const QByteArray encoded = content.toBase64();
    QByteArray lines;
    for (int start = 0; start < encoded.size(); start += base64_line_length) {
        lines += encoded.mid(start, base64_line_length) + '\n';
    }
    return lines;
}

QByteArray text_part(const QString &text)
{
    return "Content-Transfer-Encoding: 8bit\nContent-Type: text/plain;\n\tcharset=utf-8\n\n" + text.toUtf8() + '\n';
}

QByteArray attachment_part(const mail_attachment &attachment, bool is_partial)
{
    const QByteArray name = encoded_header(attachment.file_name);
    const QByteArray content = base64_lines(attachment.content);
    QByteArray part = "Content-Disposition: attachment;\n\tfilename=\"" + name +
                      "\"\nContent-Type: " + attachment.media_type + ";\n\tname=\"" + name +
                      "\"\nContent-Transfer-Encoding: base64\n";
    if (is_partial) {
        return part + "X-Apple-Content-Length: " + QByteArray::number(content.size()) + "\n\n";
    }
    return part + '\n' + content;
}

QByteArray multipart(const emlx_message &message)
{
    const QByteArray delimiter = QByteArray("--") + boundary;
    QByteArray parts = QByteArray("Content-Type: multipart/mixed;\n boundary=\"") + boundary + "\"\n\n" + delimiter +
                       '\n' + text_part(message.text);
    for (const mail_attachment &attachment : message.attachments) {
        parts += '\n' + delimiter + '\n' + attachment_part(attachment, message.is_partial);
    }
    return parts + '\n' + delimiter + "--\n";
}

} // namespace

QByteArray encoded_header(const QString &text)
{
    if (is_ascii(text)) {
        return text.toLatin1();
    }
    const QByteArray bytes = text.toUtf8();
    QByteArray value;
    for (int start = 0; start < bytes.size();) {
        const int length = whole_characters(bytes, start);
        value += (start == 0 ? "=?utf-8?B?" : "\n =?utf-8?B?") + bytes.mid(start, length).toBase64() + "?=";
        start += length;
    }
    return value;
}

QByteArray emlx_bytes(const emlx_message &message)
{
    QByteArray mail;
    for (const mail_header &header : message.headers) {
        mail += header.name + ": " + header.value + '\n';
    }
    mail += "Mime-Version: 1.0\n";
    mail += message.attachments.isEmpty() ? text_part(message.text) : multipart(message);
    return QByteArray::number(mail.size()).leftJustified(byte_count_width) + '\n' + mail +
           property_list_bytes(message.properties, property_list_form::xml);
}

} // namespace evidence
