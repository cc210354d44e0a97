#include "windows/ese_text.h"

#include "services/byte_text.h"

#include <QString>
#include <QtEndian>

namespace {

constexpr quint32 utf_16 = 1200;
constexpr quint32 windows_1252 = 1252;
constexpr quint32 ascii = 20127;
constexpr quint32 utf_8 = 65001;

// What Windows-1252 has in the place of the control characters 0x80 to 0x9f; those without a character stay themselves.
constexpr ushort windows_1252_characters[] = {
    0x20ac, 0x0081, 0x201a, 0x0192, 0x201e, 0x2026, 0x2020, 0x2021, 0x02c6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008d, 0x017d, 0x008f, 0x0090, 0x2018, 0x2019, 0x201c, 0x201d, 0x2022,
    0x2013, 0x2014, 0x02dc, 0x2122, 0x0161, 0x203a, 0x0153, 0x009d, 0x017e, 0x0178,
};

QByteArray utf8_of_utf16(const QByteArray &bytes)
{
    // Not through QString::fromUtf16(), which would take a leading U+FEFF or U+FFFE for a mark of the byte order.
    QString text(bytes.size() / 2, Qt::Uninitialized);
    qFromLittleEndian<ushort>(bytes.constData(), text.size(), text.data());
    const int end = text.indexOf(QChar(0));
    return (end < 0 ? text : text.left(end)).toUtf8();
}

QByteArray utf8_of_windows_1252(const QByteArray &bytes)
{
    QString text = QString::fromLatin1(bytes);
    for (QChar &character : text) {
        if (character.unicode() >= 0x80 && character.unicode() < 0xa0) {
            character = QChar(windows_1252_characters[character.unicode() - 0x80]);
        }
    }
    return text.toUtf8();
}

} // namespace

std::optional<QByteArray> ese_text_in_utf8(const QByteArray &bytes, quint32 codepage)
{
    if (codepage == utf_16) {
        return utf8_of_utf16(bytes);
    }
    const QByteArray text = bytes_before_zero(bytes);
    switch (codepage) {
    case windows_1252:
        return utf8_of_windows_1252(text);
    case ascii:
    case utf_8:
        return text_of_unknown_encoding(text).toUtf8();
    default:
        return std::nullopt;
    }
}
