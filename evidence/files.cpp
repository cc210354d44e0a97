#include "evidence/files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <filesystem>
#include <unistd.h>

namespace evidence {

namespace {

QString reason(int error_number)
{
    return QString::fromLocal8Bit(std::strerror(error_number));
}

bool write_all(int descriptor, const char *bytes, size_t size)
{
    while (size > 0) {
        const ssize_t written = ::write(descriptor, bytes, size);
        if (written < 0 && errno != EINTR) {
            return false;
        }
        if (written > 0) {
            bytes += written;
            size -= static_cast<size_t>(written);
        }
    }
    return true;
}

} // namespace

evidence_error::evidence_error(const QString &sentence) : std::runtime_error(sentence.toStdString()) {}

void make_folder(const QString &path)
{
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::u8path(path.toStdString()), failure);
    if (failure) {
        throw evidence_error(QStringLiteral("The folder %1 cannot be made: %2.").arg(path, reason(failure.value())));
    }
}

void write_file(const QString &path, const QByteArray &content)
{
    const int descriptor =
        ::open(path.toUtf8().constData(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644); // NOLINT(*-vararg)
    bool is_written =
        descriptor >= 0 && write_all(descriptor, content.constData(), static_cast<size_t>(content.size()));
    int error_number = errno;
    if (descriptor >= 0 && ::close(descriptor) != 0 && is_written) {
        is_written = false;
        error_number = errno;
    }
    if (!is_written) {
        throw evidence_error(QStringLiteral("The file %1 cannot be written: %2.").arg(path, reason(error_number)));
    }
}

QString folder_of(const QString &path)
{
    return path.section(QLatin1Char('/'), 0, -2);
}

} // namespace evidence
