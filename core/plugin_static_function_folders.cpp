// Folder services of the working copies.
#include "core/plugin_static_function.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>

namespace {

constexpr QDir::Filters all_entries = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;

} // namespace

QString plugin_static_function::get_available_file(const QString &file_name, const QString &folder,
                                                   const QString &caller)
{
    QDir().mkpath(folder);
    const QString plain_name = QFileInfo(file_name).fileName();
    QString candidate = plain_name;
    for (int n = 1; !bool_cancel_extraction; ++n) {
        if (!is_file_exist_in_dir(folder, candidate, caller)) {
            return candidate;
        }
        candidate = QString::number(n) + QLatin1Char('_') + plain_name;
    }
    return QString();
}

bool plugin_static_function::is_file_exist_in_dir(const QString &folder, const QString &file_name, const QString &)
{
    const QString wanted = file_name.trimmed();
    QDirIterator entries(folder, all_entries);
    while (entries.hasNext()) {
        if (bool_cancel_extraction) {
            return false;
        }
        entries.next();
        if (entries.fileName().trimmed() == wanted) {
            return true;
        }
    }
    return false;
}

void plugin_static_function::remove_directory(const QString &path)
{
    QDir folder(path);
    if (path.isEmpty() || !folder.exists()) { // an empty path would mean the current folder
        return;
    }
    if (QFileInfo(folder.absolutePath()).isSymLink()) {
        QFile::remove(folder.absolutePath());
        return;
    }
    const QFileInfoList entries = folder.entryInfoList(all_entries, QDir::DirsFirst);
    for (const QFileInfo &entry : entries) {
        if (entry.isDir() && !entry.isSymLink()) {
            remove_directory(entry.absoluteFilePath());
        } else {
            QFile::remove(entry.absoluteFilePath());
        }
    }
    folder.rmdir(folder.absolutePath());
}
