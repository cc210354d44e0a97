#include "evidence/ese_value.h"

namespace evidence {

ese_value ese_value::bytes(const QByteArray &value)
{
    ese_value made;
    made.kind = content::bytes;
    made.raw = value;
    return made;
}

ese_value ese_value::number(qint64 value)
{
    ese_value made;
    made.kind = content::number;
    made.integer = value;
    return made;
}

ese_value ese_value::number(double value)
{
    ese_value made;
    made.kind = content::real;
    made.real = value;
    return made;
}

ese_value ese_value::boolean(bool value)
{
    constexpr qint64 true_byte = 0xff;
    return number(value ? true_byte : 0);
}

ese_value ese_value::text(const QString &value)
{
    ese_value made;
    made.kind = content::text;
    made.string = value;
    return made;
}

ese_value ese_value::several(const std::vector<ese_value> &values)
{
    ese_value made;
    made.kind = content::several;
    made.parts = values;
    return made;
}

ese_value ese_value::compressed(ese_compression way) const
{
    ese_value made = *this;
    made.compression = way;
    return made;
}

ese_value ese_value::as_long_value() const
{
    ese_value made = *this;
    made.long_value = true;
    return made;
}

} // namespace evidence
