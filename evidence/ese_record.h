/// Records of an ESE table: fixed values, variable ones, tagged ones, one part behind the other.
#pragma once

#include "evidence/ese_page.h"
#include "evidence/ese_value.h"

#include <QByteArray>

#include <functional>
#include <vector>

namespace evidence::ese {

/// A column with the place that its table gives it.
struct placed_column
{
    ese_column column;
    int id;            ///< from 1 fixed, from 128 variable, from 256 tagged
    quint32 size;      ///< bytes of a fixed one, else the most it may have, 0 for no limit
    int record_offset; ///< of a fixed one
};

/// What a table's records look like.
class record_layout
{
public:
    /// Stores a long value. Out: its id.
    using long_value_storage = std::function<quint32(const QByteArray &, ese_compression)>;

    record_layout(const std::vector<ese_column> &columns, const file_format &format);

    /// Out: the record, at most as large as told; what would make it larger has gone to the long values. Throws
    /// evidence_error when a value does not suit its column or the record stays too large.
    QByteArray encode(const std::vector<ese_value> &values, int largest, const long_value_storage &store) const;

    /// In the order told.
    const std::vector<placed_column> &columns() const { return placed; }

private:
    struct cell;

    static void make_long_value(cell &at);
    static int last_present(const std::vector<size_t> &part, const std::vector<cell> &cells);

    cell encode_cell(const placed_column &at, const ese_value &value) const;
    int bytes_of_flags(const cell &at) const;
    int record_size(const std::vector<cell> &cells) const;
    void move_to_long_values(std::vector<cell> &cells, int largest) const;
    void append_fixed(QByteArray &record, const std::vector<cell> &cells) const;
    void append_variable(QByteArray &record, const std::vector<cell> &cells) const;
    void append_tagged(QByteArray &record, const std::vector<cell> &cells) const;

    file_format format;
    std::vector<placed_column> placed;
    std::vector<size_t> fixed; // where in placed
    std::vector<size_t> variable;
    std::vector<size_t> tagged;
};

} // namespace evidence::ese
