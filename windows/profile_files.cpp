#include "windows/profile_files.h"

#include <QFile>
#include <QFileInfo>

namespace {

bool is_hidden(const QByteArray &relative_path)
{
    return relative_path.at(relative_path.lastIndexOf('/') + 1) == '.';
}

} // namespace

profile_files::profile_files(const source_boundary &boundary, const QString &walked_folder,
                             const std::atomic<bool> &cancel_flag)
    : source(boundary), folder(walked_folder), is_cancelled(cancel_flag),
      walk(boundary.contains(walked_folder) ? walked_folder : QString(), links::follow)
{
}

bool profile_files::next()
{
    while (!is_cancelled && walk.next()) {
        if (is_hidden(walk.relative_path())) {
            walk.skip_folder();
            continue;
        }
        if (walk.kind() == folder_walk::entry_kind::folder || walk.kind() == folder_walk::entry_kind::other) {
            continue;
        }
        current_path = folder + QFile::decodeName(walk.relative_path());
        if (is_file()) {
            return true;
        }
    }
    return false;
}

bool profile_files::is_file() const
{
    return walk.kind() == folder_walk::entry_kind::file ||
           (source.contains(current_path) && QFileInfo(current_path).isFile());
}
