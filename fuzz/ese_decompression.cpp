// The compressions of ESE values: 7-bit text against a plain way bit by bit, all of them against what was compressed.
#include "windows/ese_decompression.h"

#include "evidence/ese_compression.h"
#include "evidence/files.h"
#include "fuzz/fuzz_target.h"

#include <algorithm>

using evidence::ese_compression;

namespace {

constexpr int seven_bit_ascii = 1;
constexpr int seven_bit_unicode = 2;
constexpr int largest_lzxpress = 0xffff;

bool bit_at(const QByteArray &bytes, int bit)
{
    return (static_cast<unsigned char>(bytes.at(bit / 8)) >> bit % 8 & 1) != 0;
}

// All bits behind the first byte are one row, those of each byte from the lowest on; seven are a character.
QByteArray plainly_unfolded(const QByteArray &compressed, bool is_wide)
{
    const int unused_bits = 7 - (compressed.at(0) & 7);
    const int bits = (compressed.size() - 1) * 8 - unused_bits;
    QByteArray text;
    for (int first = 0; first + 7 <= bits; first += 7) {
        int character = 0;
        for (int bit = 0; bit < 7; ++bit) {
            character |= bit_at(compressed, 8 + first + bit) ? 1 << bit : 0;
        }
        text += static_cast<char>(character);
        text += is_wide ? QByteArray(1, '\0') : QByteArray();
    }
    return text;
}

void check_hostile(const QByteArray &input)
{
    const std::optional<QByteArray> found = ese_decompressed(input);
    const int way = input.isEmpty() ? 0 : static_cast<unsigned char>(input.at(0)) >> 3;
    if ((way == seven_bit_ascii || way == seven_bit_unicode) && input.size() >= 2) {
        require(found == plainly_unfolded(input, way == seven_bit_unicode), "7-bit text is that of the plain way");
    } else if (found) {
        require(found->size() <= largest_lzxpress, "no more than a segment comes out");
    }
}

// As it is when that is no longer.
void check_round_trip(const QByteArray &bytes, ese_compression way)
{
    const QByteArray stored = evidence::ese::compressed(bytes, way);
    require(stored == bytes || ese_decompressed(stored) == bytes, "what was compressed comes out again");
}

} // namespace

void fuzz_one(const QByteArray &input)
{
    check_hostile(input);
    const QByteArray bytes = input.left(largest_lzxpress);
    check_round_trip(bytes, ese_compression::lzxpress);
    check_round_trip(bytes.repeated(20).left(largest_lzxpress), ese_compression::lzxpress);
    QByteArray text = bytes;
    std::for_each(text.begin(), text.end(), [](char &byte) { byte = static_cast<char>(byte & 0x7f); });
    check_round_trip(text, ese_compression::seven_bit_ascii);
}
