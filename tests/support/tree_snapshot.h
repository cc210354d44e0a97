/// Tells whether anything below a folder was written, created, removed or read with its access time moved.
#pragma once

#include <QString>
#include <QStringList>

class tree_snapshot
{
public:
    /// Sets the access times of all entries to long ago, so that every read that moves one shows.
    explicit tree_snapshot(const QString &folder);

    /// Out: the entries that are not as they were, one a line; empty when the tree is untouched.
    QString changes() const;

private:
    QString folder;
    QStringList state;
};
