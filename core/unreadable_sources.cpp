#include "core/unreadable_sources.h"

#include <QFile>
#include <QSet>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

unreadable_source_listener current_listener = nullptr;
QSet<QByteArray> told_paths;

bool says_absent(int error, source_access tried)
{
    if (tried == source_access::read) {
        return false;
    }
    switch (error) {
    case ENOENT:
    case ENOTDIR:
    case ELOOP:        // a link where none is followed
    case ENAMETOOLONG: // evidence may ask for names that no file can have
    case EINVAL:       // nor, on some file systems, of such characters
    case EILSEQ:
        return true;
    case ENXIO: // a socket, a device that is not there
    case ENODEV:
        return tried != source_access::attributes;
    case ENODATA: // no such attribute
    case ENOTSUP: // none at all
        return tried == source_access::attributes;
    default:
        return false;
    }
}

bool is_link(const QByteArray &path)
{
    struct stat status = {};
    return ::lstat(path.constData(), &status) == 0 && S_ISLNK(status.st_mode);
}

// Out: the topmost folder of the path that may not be entered, or what stands there when there is none; empty where
// that is known of a link's target only.
QByteArray closed_part_of(const QByteArray &path, source_access tried)
{
    for (int end = path.indexOf('/', 1); end > 0; end = path.indexOf('/', end + 1)) {
        const QByteArray folder = path.left(end);
        if (::faccessat(AT_FDCWD, folder.constData(), X_OK, AT_EACCESS) != 0 && errno == EACCES) {
            return is_link(folder) ? QByteArray() : folder;
        }
    }
    return tried == source_access::look_up || is_link(path) ? QByteArray() : path;
}

} // namespace

void tell_unreadable_sources_to(unreadable_source_listener listener)
{
    current_listener = listener;
    told_paths.clear();
}

void tell_unreadable_sources_anew()
{
    told_paths.clear();
}

void note_unreadable_source(const QByteArray &path, int error, source_access tried)
{
    if (current_listener == nullptr || says_absent(error, tried)) {
        return;
    }
    const QByteArray unreadable = error == EACCES ? closed_part_of(path, tried) : path;
    if (!unreadable.isEmpty() && !told_paths.contains(unreadable)) {
        told_paths.insert(unreadable);
        current_listener(QFile::decodeName(unreadable), QString::fromLocal8Bit(std::strerror(error)));
    }
    errno = error;
}
