/// The values of an ESE database, and the words in which columns are described.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace evidence {

/// The column types by the number that the catalog keeps for them.
enum class ese_type : quint32
{
    none = 0, ///< a column that holds nothing
    boolean = 1,
    unsigned8 = 2,
    signed16 = 3,
    signed32 = 4,
    currency = 5, ///< 64 bits, signed
    float32 = 6,
    float64 = 7,
    date_time = 8, ///< 64 bits: a FILETIME, or an OLE date as float64, as the program likes
    binary = 9,    ///< up to 255 bytes
    text = 10,     ///< up to 255 bytes
    long_binary = 11,
    long_text = 12,
    super_long = 13, ///< obsolete; libesedb reads no record of a table that has one
    unsigned32 = 14,
    signed64 = 15,
    guid = 16, ///< 16 bytes
    unsigned16 = 17,
};

enum class ese_codepage : quint32
{
    utf16 = 1200, ///< little-endian
    windows_1252 = 1252,
    ascii = 20127,
};

/// The part of the record in which a column's values lie.
enum class ese_storage
{
    automatic,
    fixed,
    variable,
    tagged,
};

/// One column. Its place in the record follows from its number there: fixed ones first, then variable, then tagged.
struct ese_column
{
    QByteArray name;
    ese_type type = ese_type::signed32;
    /// For the text types; the others leave it alone.
    ese_codepage codepage = ese_codepage::utf16;
    /// Automatic: numbers fixed, binary and text variable, their long kinds tagged.
    ese_storage storage = ese_storage::automatic;
    /// Bytes of a fixed binary or text column; shorter values are filled up, text with blanks.
    int fixed_size = 255;
};

/// Only bytes that the way of compression can hold: 7-bit ASCII takes bytes below 0x80, 7-bit Unicode such code units.
enum class ese_compression
{
    none,
    seven_bit_ascii,
    seven_bit_unicode,
    lzxpress,
};

/// A value of a record. A default one is absent (NULL).
class ese_value
{
public:
    ese_value() = default;

    /// The bytes as they stand, whatever the column's type. A null QByteArray is an empty value, not an absent one.
    static ese_value bytes(const QByteArray &value);
    /// Stored in the column's size, little-endian; a FILETIME (100 nanoseconds since 1601) is one too. For a column of
    /// a float type its number.
    static ese_value number(qint64 value);
    static ese_value number(int value) { return number(static_cast<qint64>(value)); }
    static ese_value number(quint32 value) { return number(static_cast<qint64>(value)); }
    static ese_value number(double value);
    static ese_value boolean(bool value); ///< 0xff or 0x00
    /// Encoded by the column's codepage, without a terminator; a null QString is an empty text, not an absent one.
    static ese_value text(const QString &value);
    /// The values of one tagged column in one record.
    static ese_value several(const std::vector<ese_value> &values);

    /// The same value, compressed where it lies: in the record or, as a long value, segment by segment. What would not
    /// become shorter stays as it is. Only the long types can be.
    ese_value compressed(ese_compression compression) const;
    /// The same value, stored in the table's long-value tree; its column must be tagged. Values too large for their
    /// record are stored there unasked.
    ese_value as_long_value() const;

    enum class content
    {
        absent,
        bytes,
        number,
        real,
        text,
        several,
    };

    content kind = content::absent;
    QByteArray raw;
    qint64 integer = 0;
    double real = 0;
    QString string;
    std::vector<ese_value> parts;
    ese_compression compression = ese_compression::none;
    bool long_value = false;
};

} // namespace evidence
