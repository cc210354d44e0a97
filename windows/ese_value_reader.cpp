#include "windows/ese_value_reader.h"

#include "services/byte_text.h"
#include "windows/ese_decompression.h"
#include "windows/ese_long_values.h"
#include "windows/ese_table_layout.h"
#include "windows/ese_text.h"
#include "windows/ese_tree_guard.h"

#include <QTextCodec>
#include <QtEndian>

#include <array>
#include <cstring>
#include <utility>

namespace {

constexpr size_t size_limit = 256 << 20;
constexpr std::size_t name_buffer_size = 1024;

// Flags of a tagged value.
constexpr quint8 value_is_compressed = 0x2;
constexpr quint8 value_is_multiple = 0x8;

// Fills a value through a pair of library calls, one for its size and one for its bytes. Out: the result of the call
// that failed, or of the last one; 0 is an absent value.
template <typename SizeCall, typename DataCall>
int take_value(SizeCall size_of, DataCall bytes_of, QByteArray &value, libesedb_error_t *error)
{
    size_t size = 0;
    const int result = settled(size_of(&size, &error), error);
    if (result != 1 || size == 0) {
        return result;
    }
    if (size > size_limit) {
        return -1;
    }
    value.resize(static_cast<int>(size));
    const int taken = settled(bytes_of(reinterpret_cast<uint8_t *>(value.data()), size, &error), error);
    if (taken != 1) {
        value.clear();
    }
    return taken;
}

ese_value value_of(int result, QByteArray bytes)
{
    return {std::move(bytes), result != -1};
}

} // namespace

ese_value_reader::ese_value_reader(const ese_file &source, const QString &name, const operation_log &reading_log,
                                   const char *operation_name)
    : file(source), table_name(name), log(reading_log), operation(operation_name)
{
}

ese_value_reader::~ese_value_reader() = default;

void ese_value_reader::log_unread(const char *what, const QString &column_name) const
{
    if (!plugin_static_function::is_debug_on()) {
        return;
    }
    const QString place = QStringLiteral("%1 not readable ----FAILED----: file %2, table %3, record %4");
    QString text = QLatin1Char('[') + QLatin1String(operation) + QLatin1String("] ") +
                   place.arg(QLatin1String(what), file.path(), table_name, QString::number(record_index_int));
    if (!column_name.isNull()) {
        text += QLatin1String(", column ") + column_name;
    }
    log("", text);
}

ese_value_reader::column &ese_value_reader::column_at(int value_entry)
{
    if (value_entry >= static_cast<int>(columns.size())) {
        columns.resize(static_cast<std::size_t>(value_entry) + 1);
    }
    return columns[static_cast<std::size_t>(value_entry)];
}

const QString &ese_value_reader::column_name(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    column &described = column_at(value_entry);
    if (described.is_named) {
        return described.name;
    }
    std::array<char, name_buffer_size> name = {};
    size_t size = 0;
    const bool is_read =
        settled(libesedb_record_get_utf8_column_name_size(record, value_entry, &size, &error), error) != -1 &&
        size <= name.size() &&
        settled(libesedb_record_get_utf8_column_name(record, value_entry, reinterpret_cast<uint8_t *>(name.data()),
                                                     size, &error),
                error) != -1;
    if (is_read) {
        name.back() = '\0';
        described.name = QString::fromUtf8(name.data());
        described.is_named = true;
    }
    return described.name;
}

int ese_value_reader::column_type(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    column &described = column_at(value_entry);
    if (described.type < 0) {
        uint32_t type = 0;
        const int result = settled(libesedb_record_get_column_type(record, value_entry, &type, &error), error);
        described.type = result == -1 ? -1 : static_cast<int>(type);
    }
    return described.type;
}

quint32 ese_value_reader::codepage(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    const QByteArray name = column_name(record, value_entry, error).toUtf8();
    column &described = column_at(value_entry);
    if (!described.codepage) {
        described.codepage = table_layout().codepage(name);
    }
    return *described.codepage;
}

const ese_table_layout &ese_value_reader::table_layout()
{
    if (!layout) {
        layout = std::make_unique<ese_table_layout>(file.handle(), table_name.toUtf8());
    }
    return *layout;
}

// The bytes as they stand in the record.
ese_value ese_value_reader::stored(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    QByteArray bytes;
    const int result = take_value(
        [&](size_t *size, libesedb_error_t **slot) {
            return libesedb_record_get_value_data_size(record, value_entry, size, slot);
        },
        [&](uint8_t *data, size_t size, libesedb_error_t **slot) {
            return libesedb_record_get_value_data(record, value_entry, data, size, slot);
        },
        bytes, error);
    return value_of(result, std::move(bytes));
}

// A value is compressed in the record only where it is tagged, and there each value has flags of its own. The library
// hands the compressed bytes out as they are, and what it makes of them as a text has the wrong codepage.
ese_value ese_value_reader::stored_or_unfolded(libesedb_record_t *record, int value_entry, quint8 flags,
                                               libesedb_error_t *error)
{
    ese_value value = stored(record, value_entry, error);
    if (value.bytes.isEmpty() || (flags & value_is_compressed) == 0 || (flags & value_is_multiple) != 0) {
        return value;
    }
    const std::optional<QByteArray> bytes = ese_decompressed(value.bytes);
    return bytes ? ese_value{*bytes, true} : ese_value{QByteArray(), false};
}

// The library takes the key of an entry from the wrong place and so finds few of the long values in an ordinary file;
// for the others it gives neither a handle nor an error. So the table's tree is read here, and the library is asked
// only for a value that stands in no tree that can be read.
ese_value ese_value_reader::long_value(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    const ese_value number = stored(record, value_entry, error);
    if (!long_values) {
        uint32_t page_size = 0;
        settled(libesedb_file_get_page_size(file.handle(), &page_size, &error), error);
        long_values = std::make_unique<ese_long_values>(file.bytes(), static_cast<int>(page_size),
                                                        table_layout().long_value_root());
        const ese_table_roots roots = file.stream().catalog().roots(table_name.toLocal8Bit());
        may_ask_library = may_walk_tree(file, roots.long_values, ese_page::content_kind::long_values);
    }
    if (const std::optional<QByteArray> bytes = long_values->value(number.bytes)) {
        return {*bytes, true};
    }
    libesedb_long_value_t *handle = nullptr;
    if (may_ask_library) {
        settled(libesedb_record_get_long_value(record, value_entry, &handle, &error), error);
    }
    const ese_long_value_handle value(handle);
    QByteArray bytes;
    if (!value) {
        return {bytes, false};
    }
    const int result = take_value(
        [&](size_t *size, libesedb_error_t **slot) {
            size64_t wide_size = 0;
            const int taken = libesedb_long_value_get_data_size(handle, &wide_size, slot);
            *size = wide_size;
            return taken;
        },
        [&](uint8_t *data, size_t size, libesedb_error_t **slot) {
            return libesedb_long_value_get_data(handle, data, size, slot);
        },
        bytes, error);
    return value_of(result, std::move(bytes));
}

ese_value ese_value_reader::library_text(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    QByteArray text;
    const int result = take_value(
        [&](size_t *size, libesedb_error_t **slot) {
            return libesedb_record_get_value_utf8_string_size(record, value_entry, size, slot);
        },
        [&](uint8_t *data, size_t size, libesedb_error_t **slot) {
            return libesedb_record_get_value_utf8_string(record, value_entry, data, size, slot);
        },
        text, error);
    return value_of(result, bytes_before_zero(text));
}

ese_value ese_value_reader::whole(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                  libesedb_error_t *error)
{
    const bool may_be_long = column_type == ese_column_type::large_binary ||
                             column_type == ese_column_type::large_text ||
                             column_type == ese_column_type::super_large_value;
    if (may_be_long && settled(libesedb_record_is_long_value(record, value_entry, &error), error) != 0) {
        return long_value(record, value_entry, error);
    }
    return stored_or_unfolded(record, value_entry, flags_of(record, value_entry, error), error);
}

// The library misses the right code point by 0x3ff outside the first plane of Unicode: texts are decoded here, and the
// library is asked only for what is in another codepage or several texts in one.
ese_value ese_value_reader::decoded(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                    libesedb_error_t *error)
{
    if (is_multiple(record, value_entry, error)) {
        return library_text(record, value_entry, error);
    }
    const ese_value value = whole(record, value_entry, column_type, error);
    if (!value.is_read || value.bytes.isEmpty()) {
        return value;
    }
    if (const std::optional<QByteArray> text = ese_text_in_utf8(value.bytes, codepage(record, value_entry, error))) {
        return {*text, true};
    }
    const ese_value text = library_text(record, value_entry, error);
    if (text.is_read && settled(libesedb_record_is_long_value(record, value_entry, &error), error) == 0) {
        return text;
    }
    // The library decodes what stands in the record; a long value is left to Qt's table of codepages.
    const QByteArray codec_name = "windows-" + QByteArray::number(codepage(record, value_entry, error));
    const QTextCodec *codec = QTextCodec::codecForName(codec_name);
    return codec ? ese_value{codec->toUnicode(bytes_before_zero(value.bytes)).toUtf8(), true} : ese_value{{}, false};
}

bool ese_value_reader::is_multiple(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    return (flags_of(record, value_entry, error) & value_is_multiple) != 0;
}

quint8 ese_value_reader::flags_of(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    quint8 flags = 0;
    settled(libesedb_record_get_value_data_flags(record, value_entry, &flags, &error), error);
    return flags;
}

ese_value ese_value_reader::logged(ese_value value, libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    if (!value.is_read) {
        log_unread("value", column_name(record, value_entry, error));
    }
    return value;
}

ese_value ese_value_reader::text(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                 libesedb_error_t *error)
{
    return logged(decoded(record, value_entry, column_type, error), record, value_entry, error);
}

ese_value ese_value_reader::binary(libesedb_record_t *record, int value_entry, unsigned int column_type,
                                   libesedb_error_t *error)
{
    return logged(whole(record, value_entry, column_type, error), record, value_entry, error);
}

ese_value ese_value_reader::raw(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    return logged(stored(record, value_entry, error), record, value_entry, error);
}

// The library gives 0 for every float of 32 bits; its bytes are right.
float ese_value_reader::float_32bit(libesedb_record_t *record, int value_entry, libesedb_error_t *error)
{
    const ese_value value = raw(record, value_entry, error);
    if (value.bytes.size() != static_cast<int>(sizeof(float))) {
        if (!value.bytes.isEmpty()) {
            log_unread("value", column_name(record, value_entry, error));
        }
        return 0;
    }
    const auto bits = qFromLittleEndian<quint32>(value.bytes.constData());
    float number = 0;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}
