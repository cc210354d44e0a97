#include "windows/ese_decompression.h"

#include <QtEndian>

#include <cstddef>

namespace {

// The upper five bits of the first byte.
constexpr int seven_bit_ascii = 1;
constexpr int seven_bit_unicode = 2;
constexpr int lzxpress = 3;

// The lower three bits of the first byte tell how many bits of the last one are used, less one.
std::optional<QByteArray> seven_bit_decompressed(const QByteArray &compressed, bool is_wide)
{
    if (compressed.size() < 2) {
        return std::nullopt;
    }
    const int last_bits = (compressed.at(0) & 7) + 1;
    const int count = ((compressed.size() - 2) * 8 + last_bits) / 7;
    QByteArray result;
    result.reserve(is_wide ? 2 * count : count);
    unsigned int bits = 0;
    int bit_count = 0;
    int at = 1;
    for (int i = 0; i < count; ++i) {
        if (bit_count < 7) {
            bits |= static_cast<unsigned int>(static_cast<unsigned char>(compressed.at(at++))) << bit_count;
            bit_count += 8;
        }
        result += static_cast<char>(bits & 0x7f);
        if (is_wide) {
            result += '\0';
        }
        bits >>= 7;
        bit_count -= 7;
    }
    return result;
}

// The input of the other kind: bytes and little-endian numbers, read with a look at the end.
class lzxpress_input
{
public:
    explicit lzxpress_input(const QByteArray &data, int start) : data(data), at(start) {}

    bool has(int count) const { return data.size() - at >= count; }
    template <typename Number>
    std::optional<Number> next()
    {
        if (!has(static_cast<int>(sizeof(Number)))) {
            return std::nullopt;
        }
        const Number value = qFromLittleEndian<Number>(data.constData() + at);
        at += static_cast<int>(sizeof(Number));
        return value;
    }

    // The length of a repetition. Beyond the three bits that stand with its distance it goes on in half a byte (the
    // second half of which belongs to the next length of that kind), then in one, two or four bytes.
    std::optional<quint32> length(quint32 first_bits)
    {
        if (first_bits < 7) {
            return first_bits + 3;
        }
        quint32 half = 0;
        if (has_spare_half) {
            half = spare_half;
            has_spare_half = false;
        } else {
            const std::optional<quint8> byte = next<quint8>();
            if (!byte) {
                return std::nullopt;
            }
            half = *byte & 0x0f;
            spare_half = *byte >> 4;
            has_spare_half = true;
        }
        return half < 15 ? half + 7 + 3 : long_length();
    }

private:
    std::optional<quint32> long_length()
    {
        const std::optional<quint8> byte = next<quint8>();
        if (!byte) {
            return std::nullopt;
        }
        if (*byte < 255) {
            return *byte + 15u + 7 + 3;
        }
        const std::optional<quint16> word = next<quint16>();
        const std::optional<quint32> length = word && *word == 0 ? next<quint32>() : std::optional<quint32>(word);
        if (!length || *length < 15 + 7 || *length > 0xffff) {
            return std::nullopt;
        }
        return *length + 3;
    }

    const QByteArray &data;
    int at;
    quint32 spare_half = 0;
    bool has_spare_half = false;
};

// Behind the first byte stands the size of the result in two bytes, then 32 flags for 32 items, the first in the
// highest bit: a byte as it is, or a repetition of what stands already there.
std::optional<QByteArray> lzxpress_decompressed(const QByteArray &compressed)
{
    lzxpress_input input(compressed, 1);
    const std::optional<quint16> size = input.next<quint16>();
    if (!size) {
        return std::nullopt;
    }
    QByteArray result;
    result.reserve(*size);
    quint32 flags = 0;
    int flag_count = 0;
    while (result.size() < *size) {
        if (flag_count == 0) {
            const std::optional<quint32> word = input.next<quint32>();
            if (!word) {
                return std::nullopt;
            }
            flags = *word;
            flag_count = 32;
        }
        --flag_count;
        if ((flags >> flag_count & 1) == 0) {
            const std::optional<quint8> byte = input.next<quint8>();
            if (!byte) {
                return std::nullopt;
            }
            result += static_cast<char>(*byte);
            continue;
        }
        const std::optional<quint16> word = input.next<quint16>();
        const std::optional<quint32> length = word ? input.length(*word & 7) : std::nullopt;
        const int distance = word ? (*word >> 3) + 1 : 0;
        if (!length || distance > result.size() || *length > static_cast<quint32>(*size - result.size())) {
            return std::nullopt;
        }
        for (quint32 i = 0; i < *length; ++i) { // a repetition may run into itself
            result += result.at(result.size() - distance);
        }
    }
    return result;
}

} // namespace

std::optional<QByteArray> ese_decompressed(const QByteArray &compressed)
{
    switch (compressed.isEmpty() ? 0 : static_cast<unsigned char>(compressed.at(0)) >> 3) {
    case seven_bit_ascii:
        return seven_bit_decompressed(compressed, false);
    case seven_bit_unicode:
        return seven_bit_decompressed(compressed, true);
    case lzxpress:
        return lzxpress_decompressed(compressed);
    default:
        return std::nullopt;
    }
}
