/// A tree of an ESE file, looked at before the library walks it: the library follows what leads to other pages wherever
/// that leads, a circle of pages until its stack ends, and a page that many lead to as often.
#pragma once

#include "windows/ese_file.h"

/// In: an open file; the page of a tree's root. Out: whether the library may walk the tree: no way down has more than
/// eight levels, and all ways together meet no more than four times the pages of the file. Pages that are not there, or
/// do not hold together, are left to the library.
bool may_walk_tree(const ese_file &file, quint32 root);
