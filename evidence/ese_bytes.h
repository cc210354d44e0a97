/// Numbers as the bytes of a file.
#pragma once

#include <QByteArray>
#include <QtEndian>

#include <array>

namespace evidence::ese {

template <typename number_type>
QByteArray little_endian(number_type number)
{
    std::array<char, sizeof(number_type)> field{};
    qToLittleEndian(number, field.data());
    return QByteArray(field.data(), static_cast<int>(field.size()));
}

template <typename number_type>
QByteArray big_endian(number_type number)
{
    std::array<char, sizeof(number_type)> field{};
    qToBigEndian(number, field.data());
    return QByteArray(field.data(), static_cast<int>(field.size()));
}

/// The lower 16 bits.
inline void append_16(QByteArray &bytes, int number)
{
    std::array<char, sizeof(quint16)> field{};
    qToLittleEndian(static_cast<quint16>(number), field.data());
    bytes.append(field.data(), static_cast<int>(field.size()));
}

} // namespace evidence::ese
