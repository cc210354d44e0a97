#include "evidence/property_list_file.h"

#include "evidence/files.h"

#include <QDateTime>

#include <cstdlib>
#include <memory>
#include <plist/plist.h>

namespace evidence {

namespace {

constexpr qint64 apple_epoch = 978307200; // 2001-01-01 in Unix seconds

struct plist_freer
{
    void operator()(void *node) const { plist_free(node); }
};
using plist_handle = std::unique_ptr<void, plist_freer>;

struct buffer_freer
{
    void operator()(char *buffer) const { std::free(buffer); } // NOLINT(*-no-malloc): libplist allocates so
};

plist_t new_node(const QVariant &value);

plist_t new_array(const QVariantList &values)
{
    plist_t array = plist_new_array();
    for (const QVariant &value : values) {
        plist_array_append_item(array, new_node(value));
    }
    return array;
}

plist_t new_dictionary(const property_list_dictionary &entries)
{
    plist_t dictionary = plist_new_dict();
    for (const property_list_entry &entry : entries) {
        plist_dict_set_item(dictionary, entry.key.toUtf8().constData(), new_node(entry.value));
    }
    return dictionary;
}

plist_t new_date(const QDateTime &instant)
{
    const qint64 milliseconds = instant.toMSecsSinceEpoch() - apple_epoch * 1000;
    return plist_new_date(static_cast<int32_t>(milliseconds / 1000), static_cast<int32_t>(milliseconds % 1000) * 1000);
}

plist_t new_data(const QByteArray &bytes)
{
    return plist_new_data(bytes.constData(), static_cast<uint64_t>(bytes.size()));
}

plist_t new_node(const QVariant &value)
{
    if (value.canConvert<property_list_dictionary>()) {
        return new_dictionary(value.value<property_list_dictionary>());
    }
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Bool:
        return plist_new_bool(value.toBool() ? 1 : 0);
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
        return plist_new_uint(value.toULongLong()); // the library writes its bits as signed
    case QMetaType::Double:
        return plist_new_real(value.toDouble());
    case QMetaType::QString:
        return plist_new_string(value.toString().toUtf8().constData());
    case QMetaType::QDateTime:
        return new_date(value.toDateTime());
    case QMetaType::QByteArray:
        return new_data(value.toByteArray());
    case QMetaType::QStringList:
    case QMetaType::QVariantList:
        return new_array(value.toList());
    default:
        throw evidence_error(
            QStringLiteral("A property list cannot hold a %1.").arg(QString::fromLatin1(value.typeName())));
    }
}

} // namespace

property_list_dictionary::operator QVariant() const
{
    return QVariant::fromValue(*this);
}

QByteArray property_list_bytes(const QVariant &root, property_list_form form)
{
    const plist_handle node(new_node(root));
    char *buffer = nullptr;
    uint32_t size = 0;
    if (form == property_list_form::xml) {
        plist_to_xml(node.get(), &buffer, &size);
    } else {
        plist_to_bin(node.get(), &buffer, &size);
    }
    const std::unique_ptr<char, buffer_freer> owner(buffer);
    return {buffer, static_cast<int>(size)};
}

void write_property_list_file(const QString &path, const QVariant &root, property_list_form form)
{
    make_folder(folder_of(path));
    write_file(path, property_list_bytes(root, form));
}

} // namespace evidence
