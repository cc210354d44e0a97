#include "services/percent_encoding.h"

namespace {

// Out: the value of a hexadecimal digit; -1 for any other character.
int value_of_digit(char character)
{
    if (character >= '0' && character <= '9') {
        return character - '0';
    }
    const char lower = static_cast<char>(character | 0x20);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

} // namespace

// QByteArray::fromPercentEncoding takes any two characters behind a "%" for digits.
QByteArray percent_decoded(const QByteArray &bytes)
{
    QByteArray decoded;
    decoded.reserve(bytes.size());
    for (int i = 0; i < bytes.size(); ++i) {
        const int high = bytes.at(i) == '%' && i + 2 < bytes.size() ? value_of_digit(bytes.at(i + 1)) : -1;
        const int low = high >= 0 ? value_of_digit(bytes.at(i + 2)) : -1;
        if (low < 0) {
            decoded.append(bytes.at(i));
        } else {
            decoded.append(static_cast<char>(high * 16 + low));
            i += 2;
        }
    }
    return decoded;
}
