/// The list of files that an iOS device backup brings along: "Manifest.db", or in older backups "Manifest.mbdb". It is
/// evidence like the files it lists, and believed no further than it can be checked.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <memory>
#include <optional>

/// A file as the device knows it, such as {"HomeDomain", "Library/SMS/sms.db"}.
struct device_file
{
    QString domain;
    QString relative_path;
};

/// The name that a backup gives to the file: 40 hexadecimal digits, lower case.
QByteArray backup_name_of(const device_file &file);

/// Whether a text has the form of such a name.
bool is_backup_name(const QByteArray &text);

class backup_manifest
{
public:
    virtual ~backup_manifest() = default;

    /// Out: the file's name in the backup; an empty one when the manifest does not list the file; none when what it
    /// says makes no sense or it cannot be read to its end.
    virtual std::optional<QByteArray> name_of(const device_file &file) = 0;
};

/// In: the path of a regular file, which is read and, as a database, never opened in place but copied; the folder for
/// that copy, which is gone with the object; a flag that ends a look-up when it is raised and outlives the object.
/// Out: null when the file is no such manifest or lists nothing.
std::unique_ptr<backup_manifest> open_manifest_database(const QString &path, const QString &working_folder,
                                                        const std::atomic<bool> &cancel_flag);
std::unique_ptr<backup_manifest> open_manifest_mbdb(const QString &path, const std::atomic<bool> &cancel_flag);
