/// An iOS device backup as the plug-in needs it: which of its files is which of the device's.
#pragma once

#include "core/ios_uid_backup_parser.h"
#include "host/backup_manifest.h"
#include "services/source_files.h"

#include <QString>

#include <atomic>
#include <memory>

/// Throws unusable_input where the backup says of itself that it is encrypted. In: the root, ending in a slash. A
/// "Manifest.plist" that is there but no property list is told on standard error.
void refuse_encrypted_backup(const QString &root);

class ios_backup : public ios_uid_backup_parser
{
public:
    /// In: the root, ending in a slash; a folder for working copies; a flag that ends look-ups when it is raised. A
    /// manifest that is there but cannot be believed is told on standard error, once.
    ios_backup(const QString &root, const QString &working_folder, const std::atomic<bool> &cancel_flag);

    /// The file that the manifest names or, where it names none that is there, the one whose name the path gives. What
    /// is no regular file, or lies behind a link, is not there. A manifest that does not fit the files is told on
    /// standard error, once.
    QString get_backup_file_path(QString domain_path) override;

private:
    QString path_of_name(const QByteArray &name) const;

    const QString root;
    const source_boundary boundary;
    std::unique_ptr<backup_manifest> manifest;
    QString manifest_name;
    bool is_warned = false; // of what the open manifest says
};

/// Whether the folder holds files named as a backup names them, flat or in folders of the first two digits. In: the
/// root, ending in a slash.
bool has_backup_files(const QString &root);
