#include "evidence/ese_record.h"

#include "evidence/ese_bytes.h"
#include "evidence/ese_compression.h"
#include "evidence/ese_encoding.h"
#include "evidence/files.h"

#include <algorithm>

namespace evidence::ese {

namespace {

constexpr int first_fixed_id = 1;
constexpr int first_variable_id = 128;
constexpr int first_tagged_id = 256;
constexpr int most_fixed = 127;
constexpr int most_variable = 128;
constexpr int record_header_bytes = 4;
constexpr int offset_bytes = 2;
constexpr int tagged_entry_bytes = 4;

namespace tagged_flag {
constexpr int of_long_type = 0x01;
constexpr int is_compressed = 0x02;
constexpr int is_long_value = 0x04;
constexpr int is_several = 0x08;
} // namespace tagged_flag

ese_storage storage_of(const ese_column &column)
{
    if (column.storage != ese_storage::automatic) {
        return column.storage;
    }
    if (size_of_type(column.type) > 0) {
        return ese_storage::fixed;
    }
    const bool is_short =
        column.type == ese_type::none || column.type == ese_type::binary || column.type == ese_type::text;
    return is_short ? ese_storage::variable : ese_storage::tagged;
}

quint32 size_of_column(const ese_column &column, ese_storage storage)
{
    constexpr quint32 most_of_short_types = 255;
    const int size = size_of_type(column.type);
    if (size > 0) {
        return static_cast<quint32>(size);
    }
    if (storage == ese_storage::fixed) {
        return static_cast<quint32>(column.fixed_size);
    }
    return is_long(column.type) ? 0 : most_of_short_types;
}

QByteArray filled_up(const placed_column &at, const QByteArray &bytes)
{
    const int missing = static_cast<int>(at.size) - bytes.size();
    if (missing < 0) {
        throw evidence_error(QStringLiteral("The fixed column \"%1\" has %2 bytes, a value has %3.")
                                 .arg(QString::fromUtf8(at.column.name))
                                 .arg(at.size)
                                 .arg(bytes.size()));
    }
    if (!is_text(at.column.type)) {
        return bytes + QByteArray(missing, '\0');
    }
    const QByteArray blank = at.column.codepage == ese_codepage::utf16 ? QByteArray(" \0", 2) : QByteArray(" ");
    return bytes + blank.repeated(missing / blank.size()) + QByteArray(missing % blank.size(), '\0');
}

/// Where each value begins, then the values.
QByteArray several_bytes(const ese_column &column, const std::vector<ese_value> &parts)
{
    QByteArray offsets;
    QByteArray bytes;
    for (const ese_value &part : parts) {
        append_16(offsets, static_cast<int>(parts.size()) * offset_bytes + bytes.size());
        bytes += value_bytes(column, part);
    }
    return offsets + bytes;
}

} // namespace

struct record_layout::cell
{
    bool present = false;
    QByteArray whole; // before it is compressed or moved to the long values
    QByteArray bytes; // in the record
    int flags = 0;
    bool long_value = false;
    ese_compression compression = ese_compression::none;
};

record_layout::record_layout(const std::vector<ese_column> &columns, const file_format &format) : format(format)
{
    int offset = record_header_bytes;
    for (const ese_column &column : columns) {
        const ese_storage storage = storage_of(column);
        placed_column at{column, 0, size_of_column(column, storage), 0};
        if (storage == ese_storage::fixed) {
            at.id = first_fixed_id + static_cast<int>(fixed.size());
            at.record_offset = offset;
            offset += static_cast<int>(at.size);
            fixed.push_back(placed.size());
        } else if (storage == ese_storage::variable) {
            at.id = first_variable_id + static_cast<int>(variable.size());
            variable.push_back(placed.size());
        } else {
            at.id = first_tagged_id + static_cast<int>(tagged.size());
            tagged.push_back(placed.size());
        }
        placed.push_back(at);
    }
    if (fixed.size() > most_fixed || variable.size() > most_variable) {
        throw evidence_error(QStringLiteral("A table has more fixed or variable columns than a record can hold."));
    }
}

void record_layout::make_long_value(cell &at)
{
    at.long_value = true;
    at.flags = tagged_flag::of_long_type | tagged_flag::is_long_value;
    at.bytes = QByteArray(sizeof(quint32), '\0'); // the id, once it is known
}

record_layout::cell record_layout::encode_cell(const placed_column &at, const ese_value &value) const
{
    cell made;
    if (value.kind == ese_value::content::absent) {
        return made;
    }
    const bool is_tagged = at.id >= first_tagged_id;
    const bool is_several = value.kind == ese_value::content::several;
    const bool is_compressed = value.compression != ese_compression::none;
    if (((value.long_value || is_several) && !is_tagged) ||
        ((value.long_value || is_compressed) && (is_several || !is_long(at.column.type)))) {
        throw evidence_error(
            QStringLiteral("The column \"%1\" cannot hold such a value.").arg(QString::fromUtf8(at.column.name)));
    }
    made.present = true;
    made.bytes = is_several ? several_bytes(at.column, value.parts) : value_bytes(at.column, value);
    made.compression = value.compression;
    if (at.id < first_variable_id) {
        made.bytes = filled_up(at, made.bytes);
    }
    made.whole = made.bytes;
    made.flags = (is_long(at.column.type) ? tagged_flag::of_long_type : 0) | (is_several ? tagged_flag::is_several : 0);
    if (value.long_value) {
        make_long_value(made);
    } else if (is_compressed) {
        made.bytes = compressed(made.whole, value.compression);
        made.flags |= made.bytes.size() < made.whole.size() ? tagged_flag::is_compressed : 0;
    }
    return made;
}

QByteArray record_layout::encode(const std::vector<ese_value> &values, int largest,
                                 const long_value_storage &store) const
{
    if (values.size() > placed.size()) {
        throw evidence_error(QStringLiteral("A record has more values than its table columns."));
    }
    std::vector<cell> cells(placed.size());
    for (size_t index = 0; index < values.size(); ++index) {
        cells[index] = encode_cell(placed[index], values[index]);
    }
    move_to_long_values(cells, largest);
    for (cell &each : cells) {
        if (each.long_value) {
            qToLittleEndian(store(each.whole, each.compression), each.bytes.data());
        }
    }
    QByteArray record;
    append_fixed(record, cells);
    append_variable(record, cells);
    append_tagged(record, cells);
    return record;
}

int record_layout::last_present(const std::vector<size_t> &part, const std::vector<cell> &cells)
{
    const auto found =
        std::find_if(part.rbegin(), part.rend(), [&cells](size_t index) { return cells[index].present; });
    return static_cast<int>(part.rend() - found);
}

/// Large pages leave no bit to say that a tagged value has flags: there each has them.
int record_layout::bytes_of_flags(const cell &at) const
{
    return format.has_large_pages() || at.flags != 0 ? 1 : 0;
}

int record_layout::record_size(const std::vector<cell> &cells) const
{
    const int fixed_columns = last_present(fixed, cells);
    int size = record_header_bytes + (fixed_columns + 7) / 8 + last_present(variable, cells) * offset_bytes;
    for (int index = 0; index < fixed_columns; ++index) {
        size += static_cast<int>(placed[fixed[static_cast<size_t>(index)]].size);
    }
    for (const size_t index : variable) {
        size += cells[index].bytes.size();
    }
    for (const size_t index : tagged) {
        size +=
            cells[index].present ? tagged_entry_bytes + bytes_of_flags(cells[index]) + cells[index].bytes.size() : 0;
    }
    return size;
}

void record_layout::move_to_long_values(std::vector<cell> &cells, int largest) const
{
    while (record_size(cells) > largest) {
        cell *longest = nullptr;
        for (const size_t index : tagged) {
            cell &each = cells[index];
            const bool can_move = is_long(placed[index].column.type) && (each.flags & tagged_flag::is_several) == 0 &&
                                  each.bytes.size() > static_cast<int>(sizeof(quint32));
            if (can_move && (longest == nullptr || each.bytes.size() > longest->bytes.size())) {
                longest = &each;
            }
        }
        if (longest == nullptr) {
            throw evidence_error(QStringLiteral("A record of %1 bytes is larger than a page.").arg(record_size(cells)));
        }
        make_long_value(*longest);
    }
}

/// A bit for each fixed column behind them tells which are absent; bits of no column are set too.
void record_layout::append_fixed(QByteArray &record, const std::vector<cell> &cells) const
{
    const int count = last_present(fixed, cells);
    const int last_variable = first_variable_id - 1 + last_present(variable, cells);
    QByteArray absent((count + 7) / 8, '\xff');
    QByteArray bytes;
    for (int index = 0; index < count; ++index) {
        const size_t column = fixed[static_cast<size_t>(index)];
        const cell &at = cells[column];
        bytes += at.present ? at.bytes : QByteArray(static_cast<int>(placed[column].size), '\0');
        if (at.present) {
            absent[index / 8] = static_cast<char>(static_cast<uchar>(absent.at(index / 8)) & ~(1U << index % 8));
        }
    }
    record.append(static_cast<char>(count));
    record.append(static_cast<char>(last_variable));
    append_16(record, record_header_bytes + bytes.size() + absent.size());
    record += bytes + absent;
}

/// Where each value ends, then the values.
void record_layout::append_variable(QByteArray &record, const std::vector<cell> &cells) const
{
    constexpr int is_absent = 0x8000;
    const int count = last_present(variable, cells);
    QByteArray bytes;
    for (int index = 0; index < count; ++index) {
        const cell &at = cells[variable[static_cast<size_t>(index)]];
        bytes += at.bytes;
        append_16(record, bytes.size() | (at.present ? 0 : is_absent));
    }
    record += bytes;
}

/// The columns that are there and where each value begins, then the values.
void record_layout::append_tagged(QByteArray &record, const std::vector<cell> &cells) const
{
    constexpr int has_flags = 0x4000;
    const auto count =
        std::count_if(tagged.begin(), tagged.end(), [&cells](size_t index) { return cells[index].present; });
    QByteArray bytes;
    for (const size_t index : tagged) {
        const cell &at = cells[index];
        if (!at.present) {
            continue;
        }
        const int offset = static_cast<int>(count) * tagged_entry_bytes + bytes.size();
        const bool flagged = bytes_of_flags(at) > 0;
        append_16(record, placed[index].id);
        append_16(record, offset | (flagged && !format.has_large_pages() ? has_flags : 0));
        if (flagged) {
            bytes.append(static_cast<char>(at.flags));
        }
        bytes += at.bytes;
    }
    record += bytes;
}

} // namespace evidence::ese
