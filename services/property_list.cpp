#include "services/property_list.h"

#include "services/property_list_guard.h"
#include "services/source_files.h"

#include <QLocale>
#include <QtEndian>

#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include <plist/plist.h>

namespace {

constexpr qint64 file_size_limit = Q_INT64_C(64) << 20;
constexpr double seconds_from_1970_to_2001 = 978307200.0;

struct c_memory
{
    void operator()(void *memory) const { std::free(memory); }
};
using c_text = std::unique_ptr<char, c_memory>;
using c_iterator = std::unique_ptr<void, c_memory>;

// The library gives texts as UTF-8; those of a binary list that calls itself ASCII come as they stand.
QString text_of(const char *bytes, int size)
{
    const QString text = QString::fromUtf8(bytes, size);
    return text.contains(QChar::ReplacementCharacter) && !QByteArray(bytes, size).contains("\xef\xbf\xbd")
               ? QString::fromLatin1(bytes, size)
               : text;
}

// What the library writes between the tags of a scalar. It tells there what its getter does not: whether an integer of
// 64 bits is negative.
QByteArray written_form_of(plist_t node)
{
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(node, &xml, &length);
    const c_text owner(xml);
    const QByteArray document = QByteArray::fromRawData(xml, static_cast<int>(length));
    const int end = document.lastIndexOf("</", document.lastIndexOf("</plist>") - 1);
    const int begin = document.lastIndexOf('>', end) + 1;
    return end < begin ? QByteArray() : QByteArray(document.constData() + begin, end - begin);
}

// Integers with the topmost bit set are negative ones or large unsigned ones; the getter gives the same for both.
QString integer_text_of(plist_t node)
{
    uint64_t value = 0;
    plist_get_uint_val(node, &value);
    return value >> 63 ? QString::fromLatin1(written_form_of(node)) : QString::number(value);
}

// A date in seconds since 2001. The getter cuts it to 32 bits and loses the sign of its fraction, the written form of
// XML loses the fraction; in the binary form it stands whole, behind the header and the kind of the one object.
double seconds_since_2001_of(plist_t node)
{
    constexpr int date_at = 8 + 1;
    char *binary = nullptr;
    uint32_t length = 0;
    plist_to_bin(node, &binary, &length);
    const c_text owner(binary);
    if (length < date_at + sizeof(quint64)) {
        return 0.0;
    }
    const quint64 bits = qFromBigEndian<quint64>(binary + date_at);
    double seconds = 0.0;
    std::memcpy(&seconds, &bits, sizeof seconds);
    return seconds;
}

} // namespace

void property_list::tree_deleter::operator()(void *node) const
{
    plist_free(node);
}

property_list property_list::from_file(const QString &path)
{
    return from_bytes(read_source_file(path, file_size_limit));
}

property_list property_list::from_bytes(const QByteArray &content, quint64 unfolded_size_limit)
{
    property_list list;
    if (!content.isEmpty() && is_safe_property_list(content, unfolded_size_limit)) {
        plist_t tree = nullptr;
        plist_from_memory(content.constData(), static_cast<uint32_t>(content.size()), &tree);
        list.tree.reset(tree);
    }
    return list;
}

QByteArray property_list::as_xml(quint64 size_limit) const
{
    char *xml = nullptr;
    uint32_t length = 0;
    if (tree) {
        plist_to_xml(tree.get(), &xml, &length);
    }
    const c_text owner(xml);
    return xml && length <= size_limit ? QByteArray(xml, static_cast<int>(length)) : QByteArray();
}

property_list_value::kind property_list_value::get_kind() const
{
    switch (plist_get_node_type(node)) {
    case PLIST_DICT:
        return kind::dictionary;
    case PLIST_ARRAY:
        return kind::array;
    case PLIST_STRING:
        return kind::string;
    case PLIST_BOOLEAN:
    case PLIST_UINT:
    case PLIST_REAL:
        return kind::number;
    case PLIST_DATE:
        return kind::date;
    case PLIST_DATA:
        return kind::data;
    case PLIST_NONE:
        return kind::none;
    default:
        return kind::other;
    }
}

bool property_list_value::is_boolean() const
{
    return plist_get_node_type(node) == PLIST_BOOLEAN;
}

bool property_list_value::is_real() const
{
    return plist_get_node_type(node) == PLIST_REAL;
}

property_list_value property_list_value::object_for_key(const QString &key) const
{
    return object_for_key(key.toUtf8().constData());
}

property_list_value property_list_value::object_for_key(const char *utf8_key) const
{
    return is_dictionary() ? property_list_value(plist_dict_get_item(node, utf8_key)) : property_list_value();
}

QStringList property_list_value::all_keys() const
{
    QStringList keys;
    for (const auto &entry : entries()) {
        keys.append(entry.first);
    }
    return keys;
}

std::vector<std::pair<QString, property_list_value>> property_list_value::entries() const
{
    std::vector<std::pair<QString, property_list_value>> entries;
    if (!is_dictionary()) {
        return entries;
    }
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(node, &iterator);
    const c_iterator owner(iterator);
    while (true) {
        char *key = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(node, iterator, &key, &value);
        const c_text key_owner(key);
        if (!value) {
            return entries;
        }
        entries.emplace_back(QString::fromUtf8(key), property_list_value(value));
    }
}

int property_list_value::count() const
{
    return is_array() ? static_cast<int>(plist_array_get_size(node)) : 0;
}

property_list_value property_list_value::object_at(int index) const
{
    return index >= 0 && index < count() ? property_list_value(plist_array_get_item(node, static_cast<uint32_t>(index)))
                                         : property_list_value();
}

std::vector<property_list_value> property_list_value::elements() const
{
    std::vector<property_list_value> values;
    if (!is_array()) {
        return values;
    }
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(node, &iterator);
    const c_iterator owner(iterator);
    while (true) {
        plist_t value = nullptr;
        plist_array_next_item(node, iterator, &value);
        if (!value) {
            return values;
        }
        values.push_back(property_list_value(value));
    }
}

QString property_list_value::text() const
{
    if (!is_string()) {
        return QString();
    }
    uint64_t length = 0;
    const char *bytes = plist_get_string_ptr(node, &length);
    return text_of(bytes, static_cast<int>(length));
}

double property_list_value::double_value() const
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return plist_bool_val_is_true(node) ? 1.0 : 0.0;
    case PLIST_UINT:
        return integer_text_of(node).toDouble();
    case PLIST_REAL: {
        double value = 0.0;
        plist_get_real_val(node, &value);
        return value;
    }
    default:
        return 0.0;
    }
}

qint64 property_list_value::integer_value() const
{
    if (plist_get_node_type(node) == PLIST_UINT) {
        bool fits = false;
        const qint64 value = integer_text_of(node).toLongLong(&fits);
        return fits ? value : std::numeric_limits<qint64>::max();
    }
    const double value = double_value();
    constexpr double limit = 9223372036854775808.0; // two to the 63rd
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= limit) {
        return std::numeric_limits<qint64>::max();
    }
    return value < -limit ? std::numeric_limits<qint64>::min() : static_cast<qint64>(value);
}

QString property_list_value::string_value() const
{
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return plist_bool_val_is_true(node) ? QStringLiteral("1") : QStringLiteral("0");
    case PLIST_UINT:
        return integer_text_of(node);
    case PLIST_REAL:
        return QString::number(double_value(), 'g', QLocale::FloatingPointShortest);
    default:
        return QString();
    }
}

double property_list_value::time_interval_since_1970() const
{
    return is_date() ? seconds_since_2001_of(node) + seconds_from_1970_to_2001 : 0.0;
}

QByteArray property_list_value::data() const
{
    if (get_kind() != kind::data) {
        return QByteArray();
    }
    uint64_t length = 0;
    const char *bytes = plist_get_data_ptr(node, &length);
    return QByteArray(bytes, static_cast<int>(length));
}
