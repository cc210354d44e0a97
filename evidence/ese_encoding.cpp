#include "evidence/ese_encoding.h"

#include "evidence/ese_bytes.h"
#include "evidence/files.h"

#include <QTextCodec>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <limits>

namespace evidence::ese {

namespace {

struct type_size
{
    ese_type type;
    int bytes;
};

constexpr std::array<type_size, 12> type_sizes{{
    {ese_type::boolean, 1},
    {ese_type::unsigned8, 1},
    {ese_type::signed16, 2},
    {ese_type::unsigned16, 2},
    {ese_type::signed32, 4},
    {ese_type::unsigned32, 4},
    {ese_type::float32, 4},
    {ese_type::currency, 8},
    {ese_type::float64, 8},
    {ese_type::date_time, 8},
    {ese_type::signed64, 8},
    {ese_type::guid, 16},
}};

[[noreturn]] void refuse(const ese_column &column, const QString &what)
{
    throw evidence_error(QStringLiteral("The column \"%1\" of type %2 cannot hold %3.")
                             .arg(QString::fromUtf8(column.name))
                             .arg(static_cast<quint32>(column.type))
                             .arg(what));
}

QByteArray real_bytes(const ese_column &column, double value)
{
    switch (column.type) {
    case ese_type::float32:
        return little_endian(static_cast<float>(value));
    case ese_type::float64:
    case ese_type::date_time:
        return little_endian(value);
    default:
        refuse(column, QStringLiteral("a number with a fraction"));
    }
}

QByteArray number_bytes(const ese_column &column, qint64 value)
{
    if (column.type == ese_type::float32 || column.type == ese_type::float64) {
        return real_bytes(column, static_cast<double>(value));
    }
    const int size = size_of_type(column.type);
    if (size == 0 || size > 8) {
        refuse(column, QStringLiteral("a number"));
    }
    // A number of either sign has its place: the bits are the same.
    const qint64 limit = size < 8 ? Q_INT64_C(1) << size * 8 : std::numeric_limits<qint64>::max();
    if (size < 8 && (value < -limit / 2 || value >= limit)) {
        refuse(column, QStringLiteral("the number %1").arg(value));
    }
    return little_endian(value).left(size);
}

QByteArray utf16_bytes(const QString &text)
{
    QByteArray bytes(text.size() * 2, Qt::Uninitialized);
    qToLittleEndian<char16_t>(text.utf16(), text.size(), bytes.data());
    return bytes;
}

QByteArray text_bytes(const ese_column &column, const QString &text)
{
    if (!is_text(column.type)) {
        refuse(column, QStringLiteral("text"));
    }
    if (column.codepage == ese_codepage::utf16) {
        return utf16_bytes(text);
    }
    static QTextCodec *const western = QTextCodec::codecForName("windows-1252");
    const bool ascii = std::all_of(text.cbegin(), text.cend(), [](QChar letter) { return letter.unicode() < 0x80; });
    if (!ascii && (column.codepage == ese_codepage::ascii || !western->canEncode(text))) {
        refuse(column, QStringLiteral("the text \"%1\"").arg(text));
    }
    return ascii ? text.toLatin1() : western->fromUnicode(text);
}

void check_size(const ese_column &column, const QByteArray &bytes)
{
    constexpr int most_of_short_types = 255;
    const int size = size_of_type(column.type);
    const bool is_short = column.type == ese_type::binary || column.type == ese_type::text;
    if ((size > 0 && bytes.size() != size) || (is_short && bytes.size() > most_of_short_types)) {
        refuse(column, QStringLiteral("%1 bytes").arg(bytes.size()));
    }
}

} // namespace

int size_of_type(ese_type type)
{
    const auto *found = std::find_if(type_sizes.begin(), type_sizes.end(),
                                     [type](const type_size &known) { return known.type == type; });
    return found == type_sizes.end() ? 0 : found->bytes;
}

bool is_text(ese_type type)
{
    return type == ese_type::text || type == ese_type::long_text;
}

bool is_long(ese_type type)
{
    return type == ese_type::long_binary || type == ese_type::long_text || type == ese_type::super_long;
}

QByteArray value_bytes(const ese_column &column, const ese_value &value)
{
    QByteArray bytes;
    switch (value.kind) {
    case ese_value::content::bytes:
        bytes = value.raw;
        break;
    case ese_value::content::number:
        return number_bytes(column, value.integer);
    case ese_value::content::real:
        return real_bytes(column, value.real);
    case ese_value::content::text:
        bytes = text_bytes(column, value.string);
        break;
    case ese_value::content::absent:
    case ese_value::content::several:
        refuse(column, QStringLiteral("several values"));
    }
    check_size(column, bytes);
    return bytes;
}

} // namespace evidence::ese
