/// A tree of an ESE file, looked at before the library walks it: the library follows what leads to other pages wherever
/// that leads: a circle of pages until its stack ends, a page that many lead to as often, and pages of another tree,
/// which it takes for records of this one.
#pragma once

#include "windows/ese_file.h"
#include "windows/ese_page.h"

/// In: an open file; the page of a tree's root, and what the tree holds. Out: whether the library may walk the tree:
/// all pages belong to it, no way down has more than eight levels, and all ways together meet no more than four times
/// the pages of the file. Pages that are not there, or do not hold together, are left to the library. The root 0 is
/// none.
bool may_walk_tree(const ese_file &file, quint32 root, ese_page::content_kind content);
