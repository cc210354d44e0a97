/// Pages of an ESE file as they stand in it, for the trees that the library does not search: a page's header, its
/// entries and their keys. Every number of a page is looked at before it is used; a page that does not hold together
/// has no entries.
#pragma once

#include "services/source_files.h"

#include <QByteArray>

#include <array>
#include <optional>

/// An entry: its key is the prefix, which it shares with others of the page, and the rest behind it. The views are
/// valid as long as their page.
struct ese_page_entry
{
    QByteArray key;
    const char *data = nullptr;
    int size = 0; ///< of the data, bytes
    bool is_deleted = false;

    QByteArray bytes() const { return QByteArray(data, size); }
};

class ese_page
{
public:
    /// In: a whole page. Pages above 8 KiB have a longer header and keep the flags of an entry with its data.
    explicit ese_page(const QByteArray &content);

    bool is_leaf() const;
    /// Out: the number of the next page of the same level, 0 for none.
    quint32 next_page() const;
    /// Out: the number of the tree that the page belongs to.
    quint32 tree() const;
    enum class content_kind
    {
        records,
        long_values,
        other ///< what the file keeps for itself: free space, indexes
    };
    content_kind kind() const;
    /// Out: how many entries the page has.
    int count() const { return entry_count; }
    /// Out: an entry; none when its place lies outside the page.
    std::optional<ese_page_entry> entry(int index) const;

private:
    struct tag
    {
        const char *data;
        int size;
        int flags;
    };

    std::optional<tag> tag_at(int index) const;

    QByteArray content;
    bool is_small;
    int entry_count = 0;
};

/// The pages of one file by number, the last ones kept.
class ese_page_source
{
public:
    /// The file must be open as long as the source is used.
    ese_page_source(const file_descriptor &file, int page_size);

    /// Out: the page; none when the file does not hold it. It stays valid until the next but some pages are read.
    std::optional<ese_page> page(quint32 number);
    /// Out: how many pages the file has room for.
    qint64 count() const { return page_count; }

private:
    struct kept_page
    {
        quint32 number = 0;
        QByteArray content;
    };

    const file_descriptor &file;
    int page_size;
    qint64 page_count = 0;
    std::array<kept_page, 64> kept;
};
