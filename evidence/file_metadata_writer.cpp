#include "evidence/file_metadata_writer.h"

#include "evidence/files.h"

#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <sys/xattr.h>
#include <unistd.h>

namespace evidence {

namespace {

constexpr const char *attribute_prefix = "com.apple.metadata:";

struct stored_attribute
{
    QByteArray name;
    QByteArray value;
};

QVector<stored_attribute> stored(const property_list_dictionary &attributes)
{
    QVector<stored_attribute> result;
    for (const property_list_entry &attribute : attributes) {
        result.append({attribute_prefix + attribute.key.toUtf8(),
                       property_list_bytes(attribute.value, property_list_form::binary)});
    }
    return result;
}

void write_extended_attribute(const QString &path, const stored_attribute &attribute)
{
    const QByteArray name = "user." + attribute.name;
    if (::setxattr(path.toUtf8().constData(), name.constData(), attribute.value.constData(),
                   static_cast<size_t>(attribute.value.size()), 0) != 0) {
        throw evidence_error(QStringLiteral("The attribute %1 of %2 cannot be written: %3.")
                                 .arg(QString::fromUtf8(name), path, QString::fromLocal8Bit(std::strerror(errno))));
    }
}

// --- AppleDouble: a header, two entries, the Finder information with the attributes behind it, a resource fork
// ---------

constexpr quint32 magic = 0x00051607;
constexpr quint32 version = 0x00020000;
constexpr quint32 finder_info_entry = 9;
constexpr quint32 resource_fork_entry = 2;
constexpr int header_size = 26;
constexpr int entry_size = 12;
constexpr int finder_info_at = header_size + 2 * entry_size;
constexpr int finder_info_size = 32 + 2; // with the padding in front of the attributes
constexpr int attributes_at = finder_info_at + finder_info_size;
constexpr int attributes_header_size = 36;
constexpr int attribute_entry_size = 11; // without the name

template <typename number_type>
void append(QByteArray &bytes, number_type number)
{
    const number_type big_endian = qToBigEndian(number);
    bytes.append(reinterpret_cast<const char *>(&big_endian), sizeof big_endian);
}

int padded_entry_size(const stored_attribute &attribute)
{
    const int name_size = attribute.name.size() + 1; // with its zero byte
    return (attribute_entry_size + name_size + 3) / 4 * 4;
}

/// The entries of the attributes, whose values begin at that place of the file.
QByteArray attribute_entries(const QVector<stored_attribute> &attributes, int values_at)
{
    QByteArray entries;
    for (const stored_attribute &attribute : attributes) {
        const int end = entries.size() + padded_entry_size(attribute);
        append<quint32>(entries, static_cast<quint32>(values_at));
        append<quint32>(entries, static_cast<quint32>(attribute.value.size()));
        append<quint16>(entries, 0);
        append<quint8>(entries, static_cast<quint8>(attribute.name.size() + 1));
        entries += attribute.name;
        entries.append(end - entries.size(), '\0');
        values_at += attribute.value.size();
    }
    return entries;
}

QByteArray apple_double_bytes(const QVector<stored_attribute> &attributes)
{
    QByteArray values;
    int values_at = attributes_at + attributes_header_size;
    for (const stored_attribute &attribute : attributes) {
        values += attribute.value;
        values_at += padded_entry_size(attribute);
    }
    const int values_end = values_at + values.size();

    QByteArray bytes;
    append(bytes, magic);
    append(bytes, version);
    bytes += "Mac OS X        ";
    append<quint16>(bytes, 2);
    append(bytes, finder_info_entry);
    append<quint32>(bytes, finder_info_at);
    append<quint32>(bytes, static_cast<quint32>(values_end - finder_info_at));
    append(bytes, resource_fork_entry);
    append<quint32>(bytes, static_cast<quint32>(values_end));
    append<quint32>(bytes, 0);
    bytes.append(finder_info_size, '\0');
    bytes += "ATTR";
    append<quint32>(bytes, 0);
    append<quint32>(bytes, static_cast<quint32>(values_end));
    append<quint32>(bytes, static_cast<quint32>(values_at));
    append<quint32>(bytes, static_cast<quint32>(values.size()));
    bytes.append(12, '\0');
    append<quint16>(bytes, 0);
    append<quint16>(bytes, static_cast<quint16>(attributes.size()));
    return bytes + attribute_entries(attributes, values_at) + values;
}

} // namespace

void write_file_metadata(const QString &path, const property_list_dictionary &attributes, metadata_place place)
{
    const QVector<stored_attribute> values = stored(attributes);
    if (place == metadata_place::apple_double) {
        const int name_at = path.lastIndexOf(QLatin1Char('/')) + 1;
        write_file(path.left(name_at) + QLatin1String("._") + path.mid(name_at), apple_double_bytes(values));
        return;
    }
    for (const stored_attribute &attribute : values) {
        write_extended_attribute(path, attribute);
    }
}

bool holds_extended_attributes(const QString &folder)
{
    const QString path = folder + QLatin1String("/.attribute_trial");
    write_file(path, QByteArray());
    const QByteArray name = path.toUtf8();
    const bool holds = ::setxattr(name.constData(), "user.trial", "1", 1, 0) == 0;
    ::unlink(name.constData());
    return holds;
}

} // namespace evidence
