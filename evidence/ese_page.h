/// Pages of an ESE database: header, entries, the tags that find them, checksums.
#pragma once

#include <QByteArray>

#include <vector>

namespace evidence::ese {

/// What the choice of page size and format revision decides.
struct file_format
{
    int page_size = 8192;
    quint32 revision = 0x11;

    /// Pages of 16 and 32 KiB have a longer header, and the flags of a tag lie in its entry.
    bool has_large_pages() const { return revision >= 0x11 && page_size >= 16384; }
    bool has_error_correction() const { return revision >= 0x0b; }
    int page_header_bytes() const { return has_large_pages() ? 80 : 40; }
};

namespace page_flag {
constexpr quint32 root = 0x0001;
constexpr quint32 leaf = 0x0002;
constexpr quint32 parent_of_leaf = 0x0004;
constexpr quint32 space_tree = 0x0020;
constexpr quint32 long_value = 0x0080;
constexpr quint32 new_record_format = 0x0800;
constexpr quint32 new_checksum_format = 0x2000;
} // namespace page_flag

/// Where a page stands; the neighbours are those of its level, 0 for none.
struct page_position
{
    quint32 number = 0;
    quint32 previous = 0;
    quint32 next = 0;
    quint32 object = 0; ///< object id of its tree
    quint32 flags = 0;  ///< page_flag, without those that the format decides
};

/// One page while it fills.
class page_builder
{
public:
    /// In: the page's first entry, which no key leads to: a root's header, elsewhere the key whose beginning the keys
    /// of the page may share.
    page_builder(const file_format &format, const QByteArray &first_entry);

    /// In: how many bytes of the key are taken from the page's first entry; 0 stores the key whole. Out: false when the
    /// page has no room for it; nothing was added then.
    bool add(const QByteArray &key, int shared_bytes, const QByteArray &data);

    int entries() const { return static_cast<int>(tags.size()) - 1; }
    const QByteArray &first() const { return first_entry; }

    /// Out: the page's bytes with checksums.
    QByteArray finish(const page_position &position) const;

    /// Bytes that a page of the format holds for entries and their tags.
    static int capacity(const file_format &format);
    /// What an entry with a whole key takes of that.
    static int bytes_of_entry(const QByteArray &key, const QByteArray &data);

private:
    struct tag
    {
        int offset;
        int size;
        bool shares_key;
    };

    void write_header(char *page, const page_position &position) const;
    void write_tags(char *page) const;

    file_format format;
    QByteArray first_entry;
    QByteArray body;
    std::vector<tag> tags;
};

/// The sum of the file header, over its bytes behind the field that holds it and the signature.
quint32 header_checksum(const QByteArray &header);

} // namespace evidence::ese
