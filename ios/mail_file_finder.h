/// Finds the mail file of a message below the MessageData folder of an iOS file tree.
#pragma once

#include "services/source_files.h"

#include <QByteArray>
#include <QHash>
#include <QString>

#include <atomic>

class mail_file_finder
{
public:
    /// In: the source root and the MessageData folder in it, both with a slash behind; the flag that ends a walk.
    mail_file_finder(const QString &source_root, const QString &message_data, const std::atomic<bool> &cancel_flag);

    /// In: the message's global id, as the index holds it. Out: the path of the ".emlx" file met last in the folder of
    /// that name and below it; empty when there is none, when the folder would lie outside the source root, and when
    /// the walk was cancelled.
    QString find(const QString &global_message_id);
    /// Whether a walk was ended by the flag.
    bool was_cancelled() const { return has_stopped; }

private:
    QByteArray find_in_named_folder(const QString &folder);
    QByteArray find_in_unusual_folder(const QString &folder);
    QByteArray last_mail_file(folder_walk &walk);

    source_boundary source;
    QString message_data;
    bool is_message_data_inside = false;
    const std::atomic<bool> &is_cancelled;
    bool has_stopped = false;
    QString last_id; // a mail of several mailboxes stands in rows next to each other, under one id
    QString last_path;
    QHash<QString, QByteArray> walked; // canonical path of a folder that no plain name led to: what was found in it
};
