/// Writes the folder of an iOS device backup, file by file:
///
///     ios_backup backup(folder);
///     recents_database recents(backup.add("HomeDomain/Library/Mail/Recents"));
///     ...
///     recents.finish();
///     backup.finish();
///
/// A file is named by its domain path: the domain, a slash, the path in it. Everything that fails throws
/// evidence_error.
#pragma once

#include "evidence/sqlite_file.h"

#include <QByteArray>
#include <QString>
#include <QVector>

namespace evidence {

enum class ios_backup_layout
{
    manifest_database, ///< "Manifest.db", the files in folders of the first two digits of their names
    manifest_mbdb,     ///< "Manifest.mbdb", all files side by side, as older software wrote it
    no_manifest,       ///< the files alone, in folders
};

struct ios_backup_options
{
    ios_backup_layout layout = ios_backup_layout::manifest_database;
    bool is_encrypted = false;                      ///< what Manifest.plist says; the files stay readable
    sqlite_storage storage = sqlite_storage::plain; ///< of Manifest.db
};

/// Out: the name that a backup gives to a file, which is the SHA-1 of domain, "-" and path.
QString ios_backup_name(const QString &domain_path);

/// Out: where the file lies in the layout, relative to the root.
QString ios_backup_place(const QString &domain_path, ios_backup_layout layout);

class ios_backup
{
public:
    /// The root is made.
    explicit ios_backup(const QString &root, const ios_backup_options &options = {});

    /// Puts the file into the manifest and makes its folder. Out: the path at which to write it; what is never written
    /// is an entry whose file is not there.
    QString add(const char *domain_path);
    QString add(const char *domain_path, const QByteArray &content);
    /// An entry of any content, as in a manifest that someone tampered with. The older manifest holds no names.
    void add_entry(const QString &domain, const QString &relative_path, const QString &name);

    /// Ends in a slash.
    QString root() const { return root_path; }

    /// Writes the manifest, unless the layout has none, and the property lists beside it.
    void finish();

private:
    struct entry
    {
        QString domain;
        QString relative_path;
        QString name;
    };

    void write_manifest_database() const;
    void write_manifest_mbdb() const;
    void write_property_lists() const;

    QString root_path;
    ios_backup_options options;
    QVector<entry> entries;
};

} // namespace evidence
