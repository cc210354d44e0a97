#include "services/file_metadata_store.h"

#include "core/unreadable_sources.h"
#include "services/source_files.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <cerrno>

#include <sys/xattr.h>

namespace {

const QByteArray metadata_prefix("com.apple.metadata:");

// Bytes. File systems hold less; in an AppleDouble file all attributes can name the same megabytes, each to be parsed.
constexpr int longest_value = 256 << 10;

// What file systems and tools put in front of the platform's attribute names, in the order in which they count.
const char *const name_prefixes[] = {"", "user.", "osx."};

// --- Extended attributes ---------------------------------------------------------------------------------------------

// The names of a file's extended attributes, each with a zero byte behind. None when nothing stands at the path.
std::optional<QByteArray> extended_attribute_names(const QByteArray &path)
{
    QByteArray names(512, Qt::Uninitialized); // enough for nearly every file
    ssize_t size = ::listxattr(path.constData(), names.data(), static_cast<size_t>(names.size()));
    if (size < 0 && errno == ERANGE) {
        size = ::listxattr(path.constData(), nullptr, 0);
        names.resize(static_cast<int>(qMax<ssize_t>(size, 0)));
        size = ::listxattr(path.constData(), names.data(), static_cast<size_t>(names.size()));
    }
    if (size < 0) {
        note_unreadable_source(path, errno, source_access::attributes);
        return QFileInfo::exists(QFile::decodeName(path)) ? std::make_optional(QByteArray()) : std::nullopt;
    }
    names.truncate(static_cast<int>(size));
    return names;
}

QByteArray extended_attribute(const QByteArray &path, const QByteArray &name)
{
    const ssize_t size = ::getxattr(path.constData(), name.constData(), nullptr, 0);
    if (size < 0) {
        note_unreadable_source(path, errno, source_access::attributes);
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
template <typename Number>
Number number_at(const QByteArray &file, qint64 at)
{
    return at >= 0 && at + qint64(sizeof(Number)) <= file.size() ? qFromBigEndian<Number>(file.constData() + at)
                                                                 : Number(0);
}

// A view, since the parts of a hostile file may all be as large as the file itself. Null when it goes beyond the end.
QByteArray part_of(const QByteArray &file, qint64 at, qint64 length)
{
    return at + length <= file.size() ? QByteArray::fromRawData(file.constData() + at, static_cast<int>(length))
                                      : QByteArray();
}

} // namespace

std::optional<stored_metadata> stored_metadata::of_file(const QString &file_path)
{
    const QByteArray path = QFile::encodeName(file_path);
    const std::optional<QByteArray> names = extended_attribute_names(path);
    if (!names) {
        return std::nullopt;
    }
    stored_metadata metadata;
    if (names->contains(metadata_prefix)) {
        metadata.take_extended_attributes(path, *names);
    }
    const QFileInfo file_info(file_path);
    metadata.take_apple_double(file_info.path() + QLatin1String("/._") + file_info.fileName());
    return metadata;
}

void stored_metadata::take(const QByteArray &stored_name, const QByteArray &value)
{
    if (!stored_name.startsWith(metadata_prefix) || value.isNull() || value.size() > longest_value) {
        return;
    }
    const QByteArray attribute = stored_name.mid(metadata_prefix.size());
    if (!values.contains(attribute)) {
        values.insert(attribute, value);
    }
}

void stored_metadata::take_extended_attributes(const QByteArray &path, const QByteArray &names)
{
    const QList<QByteArray> stored_names = names.split('\0');
    for (const char *prefix : name_prefixes) {
        const QByteArray wanted = prefix + metadata_prefix;
        for (const QByteArray &name : stored_names) {
            if (name.startsWith(wanted)) {
                take(name.mid(static_cast<int>(qstrlen(prefix))), extended_attribute(path, name));
            }
        }
    }
}

void stored_metadata::take_apple_double(const QString &path)
{
    apple_double = read_source_file(path, double_size_limit, links::refuse);
    if (number_at<quint32>(apple_double, 0) != double_magic) {
        return;
    }
    const quint16 count = number_at<quint16>(apple_double, header_size - 2);
    for (quint16 i = 0; i < count; ++i) {
        const qint64 entry_at = header_size + i * entry_size;
        if (number_at<quint32>(apple_double, entry_at) == finder_info_entry) {
            take_attributes_behind(number_at<quint32>(apple_double, entry_at + 4));
            return;
        }
    }
}

// The attributes stand behind the Finder information, each with the place of its value in the file.
void stored_metadata::take_attributes_behind(qint64 finder_info_at)
{
    const qint64 attributes_at = finder_info_at + finder_info_size;
    if (number_at<quint32>(apple_double, attributes_at) != attributes_magic) {
        return;
    }
    const quint16 count = number_at<quint16>(apple_double, attributes_at + attributes_header_size - 2);
    qint64 at = attributes_at + attributes_header_size;
    for (quint16 i = 0; i < count; ++i) {
        const quint8 name_length = number_at<quint8>(apple_double, at + attribute_entry_size - 1);
        QByteArray name = part_of(apple_double, at + attribute_entry_size, name_length);
        if (name.endsWith('\0')) {
            name.chop(1);
        }
        take(name,
             part_of(apple_double, number_at<quint32>(apple_double, at), number_at<quint32>(apple_double, at + 4)));
        at += (attribute_entry_size + name_length + 3) & ~qint64(3);
    }
}
