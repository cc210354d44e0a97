#include "macos/attachment_finder.h"

#include <QFile>
#include <QFileInfo>

attachment_finder::attachment_finder(const source_boundary &boundary, const QString &root,
                                     const std::atomic<bool> &cancel_flag)
    : source(boundary), source_root(root), is_cancelled(cancel_flag)
{
}

QString attachment_finder::find(const QString &name, const QString &folder)
{
    QString base = source_root;
    if (base.endsWith(QLatin1Char('/'))) {
        base.chop(1);
    }
    base += folder;
    while (base.endsWith(QLatin1Char('/'))) {
        base.chop(1);
    }
    if (is_cancelled || (base != walked_folder && !walk(base))) {
        return QString();
    }
    const QByteArray found = path_of_name.value(QFile::encodeName(name));
    return found.isNull() ? QString() : base + QLatin1Char('/') + QFile::decodeName(found);
}

const macos_file_facts &attachment_finder::facts_of(const QString &file, const std::function<macos_file_facts()> &read)
{
    auto known = facts_by_file.find(file);
    if (known == facts_by_file.end()) {
        known = facts_by_file.insert(file, read());
    }
    return *known;
}

// Out: false when the extraction was cancelled on the way.
bool attachment_finder::walk(const QString &base)
{
    path_of_name.clear();
    facts_by_file.clear();
    walked_folder = base;
    // A folder that is stored without a slash in front would lie beside the source root, not below it.
    // A link on the way could lead to another user's folders, or to all of them, for each message anew.
    if (!base.startsWith(source_root) || !source.contains_without_links(base)) {
        return true;
    }
    folder_walk entries(base, links::refuse, companion_files::meet);
    while (entries.next()) {
        if (is_cancelled) {
            walked_folder = QString();
            return false;
        }
        const QByteArray &path = entries.relative_path();
        const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
        if (path_of_name.contains(name)) {
            continue;
        }
        if (entries.kind() == folder_walk::entry_kind::link) {
            const QString target = base + QLatin1Char('/') + QFile::decodeName(path);
            if (!QFileInfo(target).isFile() || !source.contains(target)) {
                continue;
            }
        }
        path_of_name.insert(name, path);
    }
    return true;
}
