/// The pages of an ESE file as the library is shown them. It takes the root of a tree apart anew for every record,
/// twice, with all that the root leads to; pages below the root it keeps. So a root that leads to other pages is shown
/// with one child only, and that child, a page behind the end of the file, holds what the root holds. The records,
/// their order and their number stay as they are.
#pragma once

#include <QByteArray>

#include <optional>

#include <sys/types.h>

class ese_root_view
{
public:
    /// Nothing is changed where the head of the file names no page size. The descriptor must be open as long as the
    /// view is used.
    explicit ese_root_view(int descriptor);

    /// Out: the size of the file with the pages behind its end, bytes; -1 when it cannot be told.
    off64_t size() const;
    /// As pread().
    ssize_t read(char *buffer, size_t size, off64_t place) const;

private:
    std::optional<QByteArray> page_at(off64_t place) const;

    int descriptor;
    off64_t page_size = 0; // 0: the file is shown as it is
    off64_t page_count = 0;
};
