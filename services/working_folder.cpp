#include "services/working_folder.h"

#include <QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

working_folder::working_folder(const QString &path)
    : folder(::open(QFile::encodeName(path).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC))
{
}

bool working_folder::fail_with(int error_code)
{
    error = qt_error_string(error_code);
    return false;
}

// Out: an empty text for a name that is none.
QByteArray working_folder::plain_name(const QString &name)
{
    const bool is_plain = name != QLatin1String(".") && name != QLatin1String("..") &&
                          !name.contains(QLatin1Char('/')) && !name.contains(QChar(0));
    return is_plain ? QFile::encodeName(name) : QByteArray();
}

bool working_folder::write(const QString &name, const QByteArray &content)
{
    const QByteArray plain = plain_name(name);
    const file_descriptor file(::openat(folder.get(), plain.constData(),
                                        O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC,
                                        S_IRUSR | S_IWUSR));
    if (!file.is_open()) {
        return fail_with(errno);
    }
    if (!write_bytes(file, content.constData(), static_cast<std::size_t>(content.size()))) {
        fail_with(errno);
        ::unlinkat(folder.get(), plain.constData(), 0);
        return false;
    }
    return true;
}

QByteArray working_folder::read(const QString &name, qint64 size_limit)
{
    const QByteArray plain = plain_name(name);
    const file_descriptor file(
        ::openat(folder.get(), plain.constData(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    struct stat status = {};
    if (!file.is_open() || ::fstat(file.get(), &status) != 0) {
        fail_with(errno);
        return QByteArray();
    }
    if (!S_ISREG(status.st_mode) || status.st_size > size_limit) {
        fail_with(S_ISREG(status.st_mode) ? EFBIG : EACCES);
        return QByteArray();
    }
    const QByteArray content = read_bytes(file, status.st_size);
    if (content.isNull()) {
        fail_with(EIO);
    }
    return content;
}

void working_folder::remove(const QString &name)
{
    ::unlinkat(folder.get(), plain_name(name).constData(), 0);
}
