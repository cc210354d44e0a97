#include "services/source_files.h"

#include "core/unreadable_sources.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
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
file_descriptor open_read_only(const QByteArray &path, int flags)
{
    const int wanted = O_RDONLY | O_CLOEXEC | O_NONBLOCK | flags;
    int descriptor = ::open(path.constData(), wanted | keep_access_time);
    if (descriptor < 0 && errno == EPERM) {
        descriptor = ::open(path.constData(), wanted);
    }
    if (descriptor < 0) {
        note_unreadable_source(path, errno, source_access::open);
    }
    return file_descriptor(descriptor);
}

int flag_of(links policy)
{
    return policy == links::refuse ? O_NOFOLLOW : 0;
}

// A path with a zero character in it is none: the system would take what stands in front of that.
QByteArray encoded(const QString &path)
{
    return path.contains(QChar(0)) ? QByteArray() : QFile::encodeName(path);
}

// Copies the parts that hold data, in blocks; what lies between them stays a hole.
bool copy_content(const file_descriptor &source, const file_descriptor &copy, const std::atomic<bool> &cancel_flag)
{
    const int from = source.get();
    const int to = copy.get();
    struct stat status = {};
    if (::fstat(from, &status) != 0 || ::ftruncate(to, status.st_size) != 0) {
        return false;
    }
    std::vector<char> block(copy_block_size);
    off_t data_end = 0;
    for (off_t at = 0; at < status.st_size;) {
        if (at == data_end) {
            at = ::lseek(from, at, SEEK_DATA);
            if (at < 0) {
                return errno == ENXIO; // nothing but a hole up to the end
            }
            data_end = ::lseek(from, at, SEEK_HOLE);
            if (data_end < 0 || ::lseek(from, at, SEEK_SET) < 0 || ::lseek(to, at, SEEK_SET) < 0) {
                return false;
            }
        }
        const auto wanted = std::min(block.size(), static_cast<std::size_t>(data_end - at));
        const qint64 count = read_block(source, block.data(), wanted);
        if (count <= 0 || cancel_flag || !write_bytes(copy, block.data(), static_cast<std::size_t>(count))) {
            return false;
        }
        at += count;
    }
    return true;
}

// Out: the path of an open file, all links followed; empty where the kernel does not tell it.
QByteArray path_of(int descriptor)
{
    const QByteArray link = "/proc/self/fd/" + QByteArray::number(descriptor);
    QByteArray target(PATH_MAX, Qt::Uninitialized);
    const ssize_t length = ::readlink(link.constData(), target.data(), static_cast<std::size_t>(target.size()));
    return length > 0 && target.at(0) == '/' ? target.left(static_cast<int>(length)) : QByteArray();
}

// The path of what stands there with all links followed; empty when nothing does. The kernel knows it of every open
// file, which is cheaper than asking for each folder of the path; where it does not tell, the folders are asked.
QByteArray canonical_path(const QString &path)
{
#ifdef O_PATH
    const QByteArray name = encoded(path);
    const file_descriptor file(::open(name.constData(), O_PATH | O_CLOEXEC));
    if (!file.is_open()) {
        note_unreadable_source(name, errno, source_access::look_up);
        return QByteArray();
    }
    const QByteArray target = path_of(file.get());
    if (!target.isEmpty()) {
        return target;
    }
#endif
    return encoded(QFileInfo(path).canonicalFilePath());
}

// In and out: what a reading call gave.
ssize_t noted(ssize_t count, int descriptor)
{
    if (count < 0) {
        const int error = errno;
        note_unreadable_source(path_of(descriptor), error, source_access::read);
    }
    return count;
}

struct folder_closer
{
    void operator()(DIR *folder) const { ::closedir(folder); }
};
using folder_handle = std::unique_ptr<DIR, folder_closer>;

folder_walk::entry_kind kind_of(DIR *folder, const dirent &item)
{
    unsigned char type = item.d_type;
    struct stat status = {};
    if (type == DT_UNKNOWN && ::fstatat(::dirfd(folder), item.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0) {
        type = IFTODT(status.st_mode);
    }
    switch (type) {
    case DT_REG:
        return folder_walk::entry_kind::file;
    case DT_DIR:
        return folder_walk::entry_kind::folder;
    case DT_LNK:
        return folder_walk::entry_kind::link;
    default:
        return folder_walk::entry_kind::other;
    }
}

bool is_self_or_parent(const char *name)
{
    return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

bool is_companion(const char *name)
{
    return std::strncmp(name, "._", 2) == 0;
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
    file_descriptor file = open_read_only(encoded(path), flag_of(policy));
    struct stat status = {};
    if (file.is_open() && (::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode))) {
        return file_descriptor();
    }
    return file;
}

file_status status_of(const QString &path)
{
    file_status found;
#ifdef STATX_BTIME
    // Asked of the system itself: on its way through local time the answer would cost several looks at the time zone.
    struct statx status = {};
    const QByteArray name = encoded(path);
    if (::statx(AT_FDCWD, name.constData(), 0, STATX_BASIC_STATS | STATX_BTIME, &status) != 0) {
        note_unreadable_source(name, errno, source_access::look_up);
        return found;
    }
    if (status.stx_mask & STATX_BTIME) { // cut towards zero
        found.created = (status.stx_btime.tv_sec * 1000 + status.stx_btime.tv_nsec / 1000000) / 1000;
    }
    if (S_ISREG(status.stx_mode)) {
        found.regular_size = static_cast<qint64>(status.stx_size);
    }
#else
    const QFileInfo info(path);
    const QDateTime birth = info.birthTime();
    if (birth.isValid()) {
        found.created = birth.toMSecsSinceEpoch() / 1000;
    }
    if (info.isFile()) {
        found.regular_size = info.size();
    }
#endif
    return found;
}

qint64 read_block(const file_descriptor &file, char *data, std::size_t size)
{
    ssize_t count = 0;
    do {
        count = ::read(file.get(), data, size);
    } while (count < 0 && errno == EINTR);
    return noted(count, file.get());
}

qint64 read_at(int descriptor, void *data, std::size_t size, qint64 place)
{
    ssize_t count = 0;
    do {
        count = ::pread(descriptor, data, size, place);
    } while (count < 0 && errno == EINTR);
    return noted(count, descriptor);
}

QByteArray read_bytes(const file_descriptor &file, qint64 size)
{
    QByteArray content(static_cast<int>(size), Qt::Uninitialized);
    int filled = 0;
    while (filled < content.size()) {
        const qint64 count =
            read_block(file, content.data() + filled, static_cast<std::size_t>(content.size() - filled));
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

bool write_bytes(const file_descriptor &file, const char *data, std::size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(file.get(), data, size);
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

bool copy_source_file(const QString &source, const QString &copy, const std::atomic<bool> &cancel_flag)
{
    const file_descriptor from = open_source_file(source);
    if (!from.is_open()) {
        return false;
    }
    const QByteArray copy_path = encoded(copy);
    const file_descriptor to(::open(copy_path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
    if (!to.is_open()) {
        return false;
    }
    if (!copy_content(from, to, cancel_flag)) {
        ::unlink(copy_path.constData()); // a part of a database may open, and lack rows
        return false;
    }
    return true;
}

QByteArray read_source_file(const QString &path, qint64 size_limit, links policy)
{
    const file_descriptor file = open_source_file(path, policy);
    struct stat status = {};
    if (!file.is_open() || ::fstat(file.get(), &status) != 0 || status.st_size > size_limit) {
        return QByteArray();
    }
    return read_bytes(file, status.st_size);
}

source_boundary::source_boundary(const QString &root_path)
    : root(QDir::cleanPath(root_path)), canonical_root(canonical_path(root_path))
{
    if (!canonical_root.isEmpty() && !canonical_root.endsWith('/')) {
        canonical_root += '/';
    }
}

bool source_boundary::contains_without_links(const QString &path) const
{
    const QString clean = QDir::cleanPath(path);
    if (!clean.startsWith(root)) {
        return false;
    }
    int behind_root = root.size();
    while (behind_root < clean.size() && clean.at(behind_root) == QLatin1Char('/')) {
        ++behind_root;
    }
    return contains(path) && canonical_path(path) == canonical_root + encoded(clean.mid(behind_root));
}

bool source_boundary::contains(const QString &path) const
{
    if (path != last_path) {
        last_path = path;
        is_last_inside = !canonical_root.isEmpty() && canonical_path(path).startsWith(canonical_root);
    }
    return is_last_inside;
}

folder_walk::folder_walk(const QString &folder, links policy, companion_files policy_of_companions)
    : companions(policy_of_companions), folder_path(encoded(folder))
{
    if (folder_path.isEmpty()) {
        return;
    }
    while (folder_path.endsWith('/')) { // a slash behind a link would follow it
        folder_path.chop(1);
    }
    is_folder_open = open_level(QByteArray(), policy);
    folder_path += '/';
}

bool folder_walk::open_level(const QByteArray &relative_path, links policy)
{
    const QByteArray path = folder_path + relative_path;
    file_descriptor descriptor = open_read_only(path.isEmpty() ? QByteArray("/") : path, O_DIRECTORY | flag_of(policy));
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
    errno = 0;
    while (const dirent *item = ::readdir(folder.get())) {
        if (!is_self_or_parent(item->d_name) && (companions == companion_files::meet || !is_companion(item->d_name))) {
            opened.entries.push_back({QByteArray(item->d_name), kind_of(folder.get(), *item)});
        }
        errno = 0;
    }
    if (errno != 0) {
        note_unreadable_source(path, errno, source_access::read);
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
        current_kind = met.kind;
        if (met.kind == entry_kind::folder) {
            pending_folder = current;
        }
        return true;
    }
    return false;
}
