#include "evidence/ese_page.h"

#include "evidence/ese_bytes.h"

#include <array>

namespace evidence::ese {

namespace {

constexpr int tag_bytes = 4;
constexpr int key_size_bytes = 2;
constexpr quint32 old_checksum_start = 0x89abcdef;
constexpr quint16 key_is_shared = 4 << 13; // of the three flag bits of a tag

struct block_checksum
{
    quint32 sum;
    quint32 correction;
};

/// The sum tells that a bit is wrong, the correction which: its lower half is the exclusive or of the positions of all
/// set bits, the upper one that of the complements of these positions.
block_checksum checksum_of(const char *block, int size, int begin, quint32 page_number)
{
    quint32 sum = 0;
    quint32 positions = 0;
    for (int offset = begin; offset < size; offset += 4) {
        const auto word = qFromLittleEndian<quint32>(block + offset);
        sum ^= word;
        if (__builtin_parity(word) != 0) {
            positions ^= static_cast<quint32>(offset) * 8;
        }
    }
    for (quint32 bit = 0; bit < 32; ++bit) {
        if ((sum >> bit & 1U) != 0) {
            positions ^= bit;
        }
    }
    const quint32 mask = static_cast<quint32>(size) * 8 - 1;
    const bool odd = __builtin_parity(sum) != 0;
    return {sum ^ page_number, (odd ? positions ^ mask : positions) << 16 | positions};
}

void put_checksum(char *at, const block_checksum &checksum)
{
    qToLittleEndian(checksum.sum, at);
    qToLittleEndian(checksum.correction, at + 4);
}

/// A large page has one checksum for each quarter. That of the first covers the others, so it comes last.
void put_quarter_checksums(char *page, int page_size, quint32 number)
{
    constexpr std::array<int, 3> further_checksums{40, 48, 56};
    const int quarter = page_size / 4;
    const char *block = page;
    for (const int offset : further_checksums) {
        block += quarter;
        put_checksum(page + offset, checksum_of(block, quarter, 0, number));
    }
    put_checksum(page, checksum_of(page, quarter, 8, number));
}

void put_checksums(char *page, const file_format &format, quint32 number)
{
    if (format.has_large_pages()) {
        put_quarter_checksums(page, format.page_size, number);
    } else if (format.has_error_correction()) {
        put_checksum(page, checksum_of(page, format.page_size, 8, number));
    } else {
        qToLittleEndian(number, page + 4);
        qToLittleEndian(checksum_of(page, format.page_size, 4, old_checksum_start).sum, page);
    }
}

} // namespace

page_builder::page_builder(const file_format &format, const QByteArray &first_entry)
    : format(format), first_entry(first_entry), body(first_entry)
{
    body.reserve(format.page_size);
    tags.push_back({0, first_entry.size(), false});
}

int page_builder::capacity(const file_format &format)
{
    return format.page_size - format.page_header_bytes();
}

int page_builder::bytes_of_entry(const QByteArray &key, const QByteArray &data)
{
    return key_size_bytes + key.size() + data.size() + tag_bytes;
}

bool page_builder::add(const QByteArray &key, int shared_bytes, const QByteArray &data)
{
    const bool shares_key = shared_bytes > 0;
    const int own_bytes = key.size() - shared_bytes;
    const int size = (shares_key ? key_size_bytes : 0) + key_size_bytes + own_bytes + data.size();
    const int tags_then = static_cast<int>(tags.size() + 1) * tag_bytes;
    if (body.size() + size + tags_then > capacity(format)) {
        return false;
    }
    tags.push_back({body.size(), size, shares_key});
    if (shares_key) {
        append_16(body, format.has_large_pages() ? shared_bytes | key_is_shared : shared_bytes);
    }
    append_16(body, own_bytes);
    body.append(key.constData() + shared_bytes, own_bytes);
    body.append(data);
    return true;
}

QByteArray page_builder::finish(const page_position &position) const
{
    QByteArray page(format.page_size, '\0');
    write_header(page.data(), position);
    memcpy(page.data() + format.page_header_bytes(), body.constData(), static_cast<size_t>(body.size()));
    write_tags(page.data());
    put_checksums(page.data(), format, position.number);
    return page;
}

void page_builder::write_header(char *page, const page_position &position) const
{
    const quint32 format_flags =
        page_flag::new_record_format | (format.has_error_correction() ? page_flag::new_checksum_format : 0);
    const int used = body.size() + static_cast<int>(tags.size()) * tag_bytes;
    qToLittleEndian<quint64>(position.number, page + 8); // the time of the last change, counted in changes
    qToLittleEndian(position.previous, page + 16);
    qToLittleEndian(position.next, page + 20);
    qToLittleEndian(position.object, page + 24);
    qToLittleEndian(static_cast<quint16>(capacity(format) - used), page + 28);
    qToLittleEndian(static_cast<quint16>(body.size()), page + 32);
    qToLittleEndian(static_cast<quint16>(tags.size()), page + 34);
    qToLittleEndian(position.flags | format_flags, page + 36);
    if (format.has_large_pages()) {
        qToLittleEndian<quint64>(position.number, page + 64);
    }
}

void page_builder::write_tags(char *page) const
{
    char *at = page + format.page_size;
    for (const tag &entry : tags) {
        at -= tag_bytes;
        const bool flag_in_tag = entry.shares_key && !format.has_large_pages();
        qToLittleEndian(static_cast<quint16>(entry.size), at);
        qToLittleEndian(static_cast<quint16>(entry.offset | (flag_in_tag ? key_is_shared : 0)), at + 2);
    }
}

quint32 header_checksum(const QByteArray &header)
{
    return checksum_of(header.constData(), header.size(), 8, 0).sum;
}

} // namespace evidence::ese
