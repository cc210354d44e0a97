/// Finds the attachments of a message by their names. All attachments of a message lie below one folder, which is
/// walked once however many they are.
#pragma once

#include "services/source_files.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <atomic>

class attachment_finder
{
public:
    /// The boundary and the flag outlive the finder. In: the source root, ending in a slash.
    attachment_finder(const source_boundary &source, const QString &source_root, const std::atomic<bool> &cancel_flag);

    /// In: a folder relative to the source root, such as "/Users/alice/Library/…/Attachments/12". Out: the path of the
    /// first entry of this name below it, in the order of the file system, hidden ones included; empty when there is
    /// none and when the extraction is cancelled. A link counts only when it leads to a file inside the source.
    QString find(const QString &name, const QString &folder);

private:
    bool walk(const QString &base);

    const source_boundary &source;
    QString source_root;
    const std::atomic<bool> &is_cancelled;
    QString walked_folder;                      // the one that the paths are of; null for none
    QHash<QByteArray, QByteArray> path_of_name; // relative to that folder, both in the file system's bytes
};
