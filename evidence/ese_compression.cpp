#include "evidence/ese_compression.h"

#include "evidence/ese_bytes.h"
#include "evidence/files.h"

#include <algorithm>
#include <vector>

namespace evidence::ese {

namespace {

constexpr int way_shift = 3;
constexpr char way_7_bit_ascii = 1;
constexpr char way_7_bit_unicode = 2;
constexpr char way_lzxpress = 3;

/// Appends numbers of seven bits, the lowest bit first.
class bit_stream
{
public:
    void append(uint seven_bits)
    {
        waiting |= seven_bits << waiting_bits;
        waiting_bits += 7;
        if (waiting_bits >= 8) {
            bytes.append(static_cast<char>(waiting & 0xff));
            waiting >>= 8;
            waiting_bits -= 8;
        }
    }

    QByteArray finish()
    {
        if (waiting_bits > 0) {
            bytes.append(static_cast<char>(waiting));
        }
        return bytes;
    }

private:
    QByteArray bytes;
    uint waiting = 0;
    int waiting_bits = 0;
};

QByteArray seven_bits(const QByteArray &bytes, char way, int unit_bytes)
{
    bit_stream stream;
    bool possible = bytes.size() % unit_bytes == 0;
    for (int offset = 0; possible && offset < bytes.size(); offset += unit_bytes) {
        const auto low = static_cast<uchar>(bytes.at(offset));
        possible = low < 0x80 && (unit_bytes == 1 || bytes.at(offset + 1) == 0);
        stream.append(low & 0x7fU);
    }
    if (!possible) {
        throw evidence_error(QStringLiteral("A value to be stored in seven bits holds other characters."));
    }
    // The lower bits of the first byte count the bits of the last one that are used, less one.
    const int bits = bytes.size() / unit_bytes * 7;
    return static_cast<char>(way << way_shift | (bits + 7) % 8) + stream.finish();
}

/// Plain LZ77 of the XPRESS family: 32 flags, then as many letters and references, in turns.
class lzxpress_writer
{
public:
    explicit lzxpress_writer(const QByteArray &bytes) : bytes(bytes), last_seen(hash_slots, -1) {}

    QByteArray compress()
    {
        start_flags();
        while (at < bytes.size()) {
            const int reference = find_reference();
            const int length = reference < 0 ? 0 : length_of_match(reference);
            if (length >= shortest_match) {
                put_flag(true);
                put_reference(at - reference, length);
                advance(length);
            } else {
                put_flag(false);
                output.append(bytes.at(at));
                advance(1);
            }
        }
        while (flag_count < flags_at_once) {
            put_bit(true);
        }
        qToLittleEndian(flags, output.data() + flags_offset);
        return output;
    }

private:
    static constexpr int hash_slots = 1 << 12;
    static constexpr int shortest_match = 3;
    static constexpr int farthest_match = 1 << 13;
    static constexpr int flags_at_once = 32;

    uint hash_of(int offset) const
    {
        constexpr uint spread = 2654435761U;
        const uint letters = static_cast<uchar>(bytes.at(offset)) |
                             static_cast<uint>(static_cast<uchar>(bytes.at(offset + 1))) << 8 |
                             static_cast<uint>(static_cast<uchar>(bytes.at(offset + 2))) << 16;
        return letters * spread >> 20;
    }

    int find_reference() const
    {
        const int found = at + shortest_match <= bytes.size() ? last_seen.at(hash_of(at)) : -1;
        return found >= 0 && at - found <= farthest_match ? found : -1;
    }

    int length_of_match(int reference) const
    {
        int length = 0;
        while (at + length < bytes.size() && bytes.at(reference + length) == bytes.at(at + length)) {
            ++length;
        }
        return length;
    }

    void advance(int length)
    {
        for (const int end = at + length; at < end; ++at) {
            if (at + shortest_match <= bytes.size()) {
                last_seen[hash_of(at)] = at;
            }
        }
    }

    void start_flags()
    {
        flags_offset = output.size();
        output.append(4, '\0');
        flags = 0;
        flag_count = 0;
    }

    void put_bit(bool set)
    {
        flags = flags << 1 | (set ? 1U : 0U);
        ++flag_count;
    }

    void put_flag(bool is_reference)
    {
        if (flag_count == flags_at_once) {
            qToLittleEndian(flags, output.data() + flags_offset);
            start_flags();
        }
        put_bit(is_reference);
    }

    /// The length goes into three bits, what is left into half a byte that two references share, then a byte, then two.
    void put_reference(int distance, int length)
    {
        const int rest = length - shortest_match;
        append_16(output, (distance - 1) << 3 | std::min(rest, 7));
        if (rest < 7) {
            return;
        }
        put_half_byte(std::min(rest - 7, 15));
        if (rest < 7 + 15) {
            return;
        }
        const int last = rest - 7 - 15;
        output.append(static_cast<char>(std::min(last, 255)));
        if (last >= 255) {
            append_16(output, rest);
        }
    }

    void put_half_byte(int half)
    {
        if (half_byte_offset < 0) {
            half_byte_offset = output.size();
            output.append(static_cast<char>(half));
        } else {
            output[half_byte_offset] = static_cast<char>(static_cast<uchar>(output.at(half_byte_offset)) | half << 4);
            half_byte_offset = -1;
        }
    }

    const QByteArray &bytes;
    std::vector<int> last_seen;
    QByteArray output;
    int at = 0;
    quint32 flags = 0;
    int flag_count = 0;
    int flags_offset = 0;
    int half_byte_offset = -1;
};

QByteArray lzxpress(const QByteArray &bytes)
{
    constexpr int most = 0xffff;
    if (bytes.size() > most) {
        throw evidence_error(QStringLiteral("A value of %1 bytes is too large to be compressed.").arg(bytes.size()));
    }
    QByteArray start(1, static_cast<char>(way_lzxpress << way_shift));
    append_16(start, bytes.size());
    return start + lzxpress_writer(bytes).compress();
}

QByteArray compressed_anyway(const QByteArray &bytes, ese_compression way)
{
    switch (way) {
    case ese_compression::seven_bit_ascii:
        return seven_bits(bytes, way_7_bit_ascii, 1);
    case ese_compression::seven_bit_unicode:
        return seven_bits(bytes, way_7_bit_unicode, 2);
    case ese_compression::lzxpress:
        return lzxpress(bytes);
    case ese_compression::none:
        break;
    }
    return bytes;
}

} // namespace

QByteArray compressed(const QByteArray &bytes, ese_compression way)
{
    const QByteArray shorter = compressed_anyway(bytes, way);
    return shorter.size() < bytes.size() ? shorter : bytes;
}

} // namespace evidence::ese
