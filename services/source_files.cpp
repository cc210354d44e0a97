#include "services/source_files.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <climits>
#include <memory>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

#ifdef O_NOATIME
constexpr int keep_access_time = O_NOATIME;
#else
constexpr int keep_access_time = 0;
#endif

constexpr std::size_t copy_block_size = 1 << 20;

// Only the owner of a file may read it without moving its access time; others read it as it is.
int open_read_only(const char *path, int flags)
{
    const int wanted = O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags;
    const int descriptor = ::open(path, wanted | keep_access_time);
    return descriptor < 0 && errno == EPERM ? ::open(path, wanted) : descriptor;
}

int flag_of(links policy)
{
    return policy == links::refuse ? O_NOFOLLOW : 0;
}

bool write_all(int descriptor, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, data, size);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        if (written > 0) {
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }
    return true;
}

// Out: bytes read, 0 at the end, -1 for an error.
ssize_t read_block(int descriptor, char *data, std::size_t size)
{
    ssize_t count = 0;
    do {
        count = ::read(descriptor, data, size);
    } while (count < 0 && errno == EINTR);
    return count;
}

// The path of what stands there with all links followed; empty when nothing does. The kernel knows it of every open
// file, which is cheaper than asking for each folder of the path; where it does not tell, the folders are asked.
QByteArray canonical_path(const QString &path)
{
#ifdef O_PATH
    const file_descriptor file(::open(QFile::encodeName(path).constData(), O_PATH | O_CLOEXEC));
    if (!file.is_open()) {
        return QByteArray();
    }
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(file.get());
    QByteArray target(PATH_MAX, Qt::Uninitialized);
    const ssize_t length = ::readlink(link.constData(), target.data(), static_cast<std::size_t>(target.size()));
    if (length > 0 && target.at(0) == '/') {
        return target.left(static_cast<int>(length));
    }
#endif
    return QFile::encodeName(QFileInfo(path).canonicalFilePath());
}

struct folder_closer
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using folder_handle = std::unique_ptr<DIR, folder_closer>;

bool is_folder_entry(DIR *folder, const dirent &item)
{
    if (item.d_type != DT_UNKNOWN) {
        return item.d_type == DT_DIR;
    }
    struct stat status = {};
    return ::fstatat(::dirfd(folder), item.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

} // namespace

file_descriptor::~file_descriptor()
{
    if (descriptor >= 0) {
        ::close(descriptor);
    }
}

int file_descriptor::release()
{
    return std::exchange(descriptor, -1);
}

file_descriptor open_source_file(const QString &path, links policy)
{
    file_descriptor file(open_read_only(QFile::encodeName(path).constData(), flag_of(policy)));
    struct stat status = {};
    if (file.is_open() && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        return file_descriptor();
    }
    return file;
}

bool copy_source_file(const QString &source, const QString &copy, links policy)
{
    const file_descriptor from = open_source_file(source, policy);
    if (!from.is_open()) {
        return false;
    }
    const file_descriptor to(
        ::open(QFile::encodeName(copy).constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!to.is_open()) {
        return false;
    }
    std::vector<char> block(copy_block_size);
    while (true) {
        const ssize_t count = read_block(from.get(), block.data(), block.size());
        if (count <= 0) {
            return count == 0;
        }
        if (!write_all(to.get(), block.data(), static_cast<std::size_t>(count))) {
            return false;
        }
    }
}

QByteArray read_source_file(const QString &path, qint64 size_limit)
{
    const file_descriptor file = open_source_file(path);
    struct stat status = {};
    if (!file.is_open() || ::fstat(file.get(), &status) != 0 || status.st_size > size_limit) {
        return QByteArray();
    }
    QByteArray content(static_cast<int>(status.st_size), Qt::Uninitialized);
    int filled = 0;
    while (filled < content.size()) {
        const ssize_t count =
            read_block(file.get(), content.data() + filled, static_cast<std::size_t>(content.size() - filled));
        if (count < 0) {
            return QByteArray();
        }
        if (count == 0) {
            break;
        }
        filled += static_cast<int>(count);
    }
    content.truncate(filled);
    return content;
}

source_boundary::source_boundary(const QString &root) : canonical_root(canonical_path(root))
{
    if (!canonical_root.isEmpty() && !canonical_root.endsWith('/')) {
        canonical_root += '/';
    }
}

bool source_boundary::contains(const QString &path) const
{
    return !canonical_root.isEmpty() && canonical_path(path).startsWith(canonical_root);
}

folder_walk::folder_walk(const QString &folder, links policy) : folder_path(QFile::encodeName(folder))
{
    while (folder_path.endsWith('/')) { // a slash behind a link would follow it
        folder_path.chop(1);
    }
    is_folder_open = open_level(QByteArray(), policy);
    folder_path += '/';
}

bool folder_walk::open_level(const QByteArray &relative_path, links policy)
{
    const QByteArray path = folder_path + relative_path;
    file_descriptor descriptor(open_read_only(path.isEmpty() ? "/" : path.constData(), O_DIRECTORY | flag_of(policy)));
    if (!descriptor.is_open()) {
        return false;
    }
    const folder_handle folder(::fdopendir(descriptor.get()));
    if (!folder) {
        return false;
    }
    descriptor.release(); // the handle closes it

    // The entries are taken at once, so that deep trees hold no handles open.
    level opened;
    if (!relative_path.isEmpty()) {
        opened.relative_path = relative_path + '/';
    }
    while (const dirent *item = ::readdir(folder.get())) {
        if (item->d_name[0] != '.') {
            opened.entries.push_back({QByteArray(item->d_name), is_folder_entry(folder.get(), *item)});
        }
    }
    levels.push_back(std::move(opened));
    return true;
}

bool folder_walk::next()
{
    if (!pending_folder.isNull()) {
        open_level(std::exchange(pending_folder, QByteArray()), links::refuse);
    }
    while (!levels.empty()) {
        level &top = levels.back();
        if (top.at == top.entries.size()) {
            levels.pop_back();
            continue;
        }
        const entry &met = top.entries[top.at++];
        current = top.relative_path + met.name;
        if (met.is_folder) {
            pending_folder = current;
        }
        return true;
    }
    return false;
}
