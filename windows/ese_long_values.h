/// The long values of one table, read from their tree page by page. A value stands there in segments: under its number
/// as a big-endian key its size, under number and big-endian offset its bytes.
#pragma once

#include "windows/ese_page.h"

#include <QByteArray>

#include <optional>

class ese_long_values
{
public:
    /// In: the file, its page size in bytes and the page of the tree's root; 0 for a table without such a tree. The
    /// file must be open as long as the reader is used.
    ese_long_values(const file_descriptor &file, int page_size, quint32 root_page);

    /// In: the value's number as it stands in the record, 4 or 8 bytes. Out: the whole value; none when the tree does
    /// not hold all of it, when it is larger than 256 MiB, compressed in a way that is not known, or encrypted; none
    /// also behind a sum of values that no file of this size can hold.
    std::optional<QByteArray> value(const QByteArray &number);

private:
    struct position
    {
        quint32 page = 0;
        int index = 0;
    };

    std::optional<QByteArray> value_with_key(const QByteArray &key);
    std::optional<position> first_not_before(const QByteArray &key);
    std::optional<ese_page> tree_page(quint32 number);
    bool step_to_entry(position &at, ese_page_entry &entry);

    ese_page_source pages;
    int page_size;
    quint32 root_page;
    quint32 tree = 0;
    qint64 budget = 0; // bytes of values, and of pages passed over, still to be read
};
