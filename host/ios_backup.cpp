#include "host/ios_backup.h"

#include "host/command_line.h"
#include "host/terminal.h"
#include "services/property_list.h"

#include <QFileInfo>

namespace {

constexpr qint64 property_list_limit = 64 << 20; // bytes
constexpr int folder_digits = 2;

constexpr const char *database_name = "Manifest.db";
constexpr const char *mbdb_name = "Manifest.mbdb";

void warn_of_manifest(const QString &file_name)
{
    print_error(QStringLiteral("warning: \"%1\" of the backup cannot be relied on, so files are looked for under the "
                               "names that their paths give")
                    .arg(file_name));
}

} // namespace

void refuse_encrypted_backup(const QString &root)
{
    const QString path = root + QStringLiteral("Manifest.plist");
    const property_list list = property_list::from_bytes(read_source_file(path, property_list_limit, links::refuse));
    if (list.is_null() && QFileInfo::exists(path)) {
        print_error(
            QStringLiteral("warning: \"Manifest.plist\" of the backup cannot be read, so it is not known whether "
                           "the backup is encrypted"));
    }
    if (list.root().object_for_key("IsEncrypted").integer_value() != 0) {
        throw unusable_input{
            QStringLiteral("the backup \"%1\" is encrypted and its files cannot be read as they stand: "
                           "give a decrypted copy")
                .arg(root.chopped(1))};
    }
}

ios_backup::ios_backup(const QString &root_path, const QString &working_folder, const std::atomic<bool> &cancel_flag)
    : root(root_path), boundary(root_path)
{
    // The newer one first: a folder that older software wrote into once holds both.
    for (const char *name : {database_name, mbdb_name}) {
        const QString file_name = QString::fromLatin1(name);
        const QFileInfo file(root + file_name);
        if (manifest || !(file.exists() || file.isSymLink())) {
            continue;
        }
        if (boundary.contains_without_links(file.filePath())) {
            manifest = name == database_name ? open_manifest_database(file.filePath(), working_folder, cancel_flag)
                                             : open_manifest_mbdb(file.filePath(), cancel_flag);
        }
        if (!manifest && !cancel_flag) {
            warn_of_manifest(file_name);
        }
        manifest_name = file_name;
    }
}

QString ios_backup::get_backup_file_path(QString domain_path)
{
    const device_file file{domain_path.section(QLatin1Char('/'), 0, 0), domain_path.section(QLatin1Char('/'), 1)};
    if (!manifest) {
        return path_of_name(backup_name_of(file));
    }
    const std::optional<QByteArray> listed = manifest->name_of(file);
    QString path = listed ? path_of_name(*listed) : QString();
    if (!path.isEmpty()) {
        return path;
    }
    path = path_of_name(backup_name_of(file));
    // A file that the manifest does not list and that is not there is one that the device did not have.
    const bool is_consistent = listed && listed->isEmpty() && path.isEmpty();
    if (!is_consistent && !is_warned) {
        is_warned = true;
        warn_of_manifest(manifest_name);
    }
    return path;
}

QString ios_backup::path_of_name(const QByteArray &name) const
{
    if (!is_backup_name(name)) {
        return QString();
    }
    for (const QByteArray &place : {name.left(folder_digits) + '/' + name, name}) {
        const QString path = root + QString::fromLatin1(place);
        if (boundary.contains_without_links(path) && status_of(path).regular_size) {
            return path;
        }
    }
    return QString();
}

bool has_backup_files(const QString &root)
{
    folder_walk walk(root, links::refuse);
    while (walk.next()) {
        const QByteArray path = walk.relative_path();
        const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
        const QByteArray folder = path.left(path.size() - name.size());
        if (walk.kind() == folder_walk::entry_kind::folder && (!folder.isEmpty() || name.size() != folder_digits)) {
            walk.skip_folder();
        }
        if (walk.kind() == folder_walk::entry_kind::file && is_backup_name(name) &&
            (folder.isEmpty() || folder == name.left(folder_digits) + '/')) {
            return true;
        }
    }
    return false;
}
