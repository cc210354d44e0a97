/// The kinds of sources that trials are made with.
#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace trial {

struct scheme
{
    const char *name; ///< as mail-evidence calls the kind of tree
    const char *internal_name;
    const char *tabs;  ///< all, with commas between
    const char *users; ///< with commas between; empty for a source without accounts
    int small_size;    ///< items of a tree of which hundreds are extracted
    int large_size;    ///< items of one that takes long enough to be interrupted anywhere
    void (*write)(const QString &root, qint64 size);
};

const std::vector<scheme> &schemes();
/// Out: null for a name of none.
const scheme *scheme_named(const QString &name);
QStringList users_of(const scheme &source_scheme);
QStringList tabs_of(const scheme &source_scheme);

} // namespace trial
