/// Finds the attachments of a message by their names. All attachments of a message lie below one folder, which is
/// walked once however many they are.
#pragma once

#include "macos/file_facts.h"
#include "services/source_files.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <atomic>
#include <functional>

class attachment_finder
{
public:
    /// The boundary and the flag outlive the finder. In: the source root, ending in a slash.
    attachment_finder(const source_boundary &source, const QString &source_root, const std::atomic<bool> &cancel_flag);

    /// In: a folder relative to the source root, such as "/Users/alice/Library/…/Attachments/12". Out: the path of the
    /// first entry of this name below it, in the order of the file system, hidden ones included; empty when there is
    /// none, when one of the folders on the way is a link, and when the extraction is cancelled. A link counts only
    /// when it leads to a file inside the source.
    QString find(const QString &name, const QString &folder);

    /// The facts about a file that was found, read once for the folder in hand: a name can stand in a message a
    /// thousand times.
    const macos_file_facts &facts_of(const QString &file, const std::function<macos_file_facts()> &read);

private:
    bool walk(const QString &base);

    const source_boundary &source;
    QString source_root;
    const std::atomic<bool> &is_cancelled;
    QString walked_folder; // the one that the paths are of; null for none
    QHash<QString, macos_file_facts> facts_by_file;
    QHash<QByteArray, QByteArray> path_of_name; // relative to that folder, both in the file system's bytes
};
