#include "services/unreadable_sources.h"

#include <QFile>
#include <QSet>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <unistd.h>

namespace {

unreadable_source_listener current_listener = nullptr;
QSet<QByteArray> told_paths;

bool says_absent(int error)
{
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:        // a link where none is followed
    case ENAMETOOLONG: // evidence may ask for names that no file can have
    case ENXIO:        // a socket, a device that is not there
    case ENODEV:
    case ENODATA: // no such attribute
    case ENOTSUP: // no attributes at all
        return true;
    default:
        return false;
    }
}

// Out: the topmost folder of the path that may not be entered; the path itself when there is none.
QByteArray closed_part_of(const QByteArray &path)
{
    for (int end = path.indexOf('/', 1); end > 0; end = path.indexOf('/', end + 1)) {
        const QByteArray folder = path.left(end);
        if (::faccessat(AT_FDCWD, folder.constData(), X_OK, AT_EACCESS) != 0 && errno == EACCES) {
            return folder;
        }
    }
    return path;
}

} // namespace

void tell_unreadable_sources_to(unreadable_source_listener listener)
{
    current_listener = listener;
    told_paths.clear();
}

void note_unreadable_source(const QByteArray &path, int error)
{
    if (current_listener == nullptr || says_absent(error)) {
        return;
    }
    const QByteArray unreadable = error == EACCES ? closed_part_of(path) : path;
    if (!told_paths.contains(unreadable)) {
        told_paths.insert(unreadable);
        current_listener(QFile::decodeName(unreadable), QString::fromLocal8Bit(std::strerror(error)));
    }
}
