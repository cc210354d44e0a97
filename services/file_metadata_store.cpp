#include "services/file_metadata_store.h"

#include "services/source_files.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <sys/xattr.h>

namespace {

const char *const metadata_prefix = "com.apple.metadata:";

// What file systems and tools put in front of the platform's attribute names.
const char *const name_prefixes[] = {"", "user.", "osx."};

// --- Extended attributes ---------------------------------------------------------------------------------------------

QByteArray extended_attribute(const QByteArray &path, const QByteArray &name)
{
    const ssize_t size = ::getxattr(path.constData(), name.constData(), nullptr, 0);
    if (size < 0) {
        return QByteArray();
    }
    QByteArray value(static_cast<int>(size), Qt::Uninitialized);
    const ssize_t count = ::getxattr(path.constData(), name.constData(), value.data(), static_cast<size_t>(size));
    return count == size ? value : QByteArray();
}

// --- AppleDouble -----------------------------------------------------------------------------------------------------

constexpr qint64 double_size_limit = Q_INT64_C(64) << 20;
constexpr quint32 double_magic = 0x00051607;
constexpr quint32 finder_info_entry = 9;
constexpr quint32 attributes_magic = 0x41545452; // "ATTR"
constexpr qint64 header_size = 26;               // magic, version, filler, entry count
constexpr qint64 entry_size = 12;                // id, offset, length
constexpr qint64 finder_info_size = 32 + 2;      // with the padding in front of the attributes
constexpr qint64 attributes_header_size = 36;
constexpr qint64 attribute_entry_size = 11; // offset, length, flags, length of the name; the name follows

// Big-endian numbers of a file that may end anywhere; behind its end they are 0.
class big_endian_bytes
{
public:
    explicit big_endian_bytes(const QByteArray &content) : bytes(content) {}

    template <typename Number>
    Number number_at(qint64 at) const
    {
        return at >= 0 && at + qint64(sizeof(Number)) <= bytes.size() ? qFromBigEndian<Number>(bytes.constData() + at)
                                                                      : Number(0);
    }

    QByteArray part(qint64 at, qint64 length) const
    {
        return at + length <= bytes.size() ? bytes.mid(static_cast<int>(at), static_cast<int>(length)) : QByteArray();
    }

private:
    const QByteArray &bytes;
};

// The attributes stand behind the Finder information, each with the place of its value in the file.
QByteArray attribute_behind(const big_endian_bytes &file, qint64 finder_info_at, const QByteArray &wanted)
{
    const qint64 attributes_at = finder_info_at + finder_info_size;
    if (file.number_at<quint32>(attributes_at) != attributes_magic) {
        return QByteArray();
    }
    const quint16 count = file.number_at<quint16>(attributes_at + attributes_header_size - 2);
    qint64 at = attributes_at + attributes_header_size;
    for (quint16 i = 0; i < count; ++i) {
        const quint8 name_length = file.number_at<quint8>(at + attribute_entry_size - 1);
        QByteArray name = file.part(at + attribute_entry_size, name_length);
        if (name.endsWith('\0')) {
            name.chop(1);
        }
        if (name == wanted) {
            return file.part(file.number_at<quint32>(at), file.number_at<quint32>(at + 4));
        }
        at += (attribute_entry_size + name_length + 3) & ~qint64(3);
    }
    return QByteArray();
}

QByteArray apple_double_attribute(const QString &file_path, const QByteArray &name)
{
    const QFileInfo file_info(file_path);
    const QByteArray content =
        read_source_file(file_info.path() + QLatin1String("/._") + file_info.fileName(), double_size_limit);
    const big_endian_bytes file(content);
    if (file.number_at<quint32>(0) != double_magic) {
        return QByteArray();
    }
    const quint16 count = file.number_at<quint16>(header_size - 2);
    for (quint16 i = 0; i < count; ++i) {
        const qint64 entry_at = header_size + i * entry_size;
        if (file.number_at<quint32>(entry_at) == finder_info_entry) {
            return attribute_behind(file, file.number_at<quint32>(entry_at + 4), name);
        }
    }
    return QByteArray();
}

} // namespace

QByteArray stored_metadata_value(const QString &file_path, const QString &attribute)
{
    const QByteArray name = metadata_prefix + attribute.toUtf8();
    const QByteArray path = QFile::encodeName(file_path);
    for (const char *prefix : name_prefixes) {
        const QByteArray value = extended_attribute(path, prefix + name);
        if (!value.isNull()) {
            return value;
        }
    }
    return apple_double_attribute(file_path, name);
}
