/// The pages of an ESE file as the library is shown them. It takes the root of a tree apart anew for every record,
/// twice, with all that the root leads to; pages below the root it keeps. So a root that leads to other pages is shown
/// with one child only, and that child, a page behind the end of the file, holds what the root holds. The records,
/// their order and their number stay as they are.
///
/// Of a large table only a part can be shown, a window: the library keeps its pages in lists that it searches for each
/// new page, so that the time for a table grows with the square of what is shown of it at once.
#pragma once

#include <QByteArray>

#include <optional>

#include <sys/types.h>

/// Some of what the root of a tree leads to, its other records are not shown.
struct ese_root_window
{
    quint32 root = 0; ///< the page of the root; 0: all trees are shown whole
    int first = 0;    ///< the first of the root's children that is shown
    int count = 0;
};

class ese_root_view
{
public:
    /// Nothing is changed where the head of the file names no page size. The descriptor must be open as long as the
    /// view is used.
    explicit ese_root_view(int descriptor);
    /// Of the one tree only what is in the window.
    ese_root_view(const ese_root_view &whole, const ese_root_window &window);

    struct root_shape
    {
        int child_count;
        bool leads_to_leaves; ///< false: to pages that lead to others in turn
    };
    /// Out: none for a page that is no root, leads to no other pages, or is shown as it is for another reason.
    std::optional<root_shape> shape_of(quint32 root) const;

    /// Out: the page of the file that a page, also one behind the end of the file, shows entries of.
    quint32 stored_page(quint32 number) const;

    /// Out: the size of the file with the pages behind its end, bytes; -1 when it cannot be told.
    off64_t size() const;
    /// As pread().
    ssize_t read(char *buffer, size_t size, off64_t place) const;

private:
    QByteArray page_at(quint32 number) const;

    int descriptor;
    ese_root_window window;
    off64_t page_size = 0; // 0: the file is shown as it is
    off64_t page_count = 0;
};
