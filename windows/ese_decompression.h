/// The compressions that an ESE file knows for long texts and long binary values.
#pragma once

#include <QByteArray>

#include <optional>

/// In: a compressed value, or a compressed segment of a long one; its first byte names the compression. Out: the bytes
/// as they were; none where the compression is unknown or the data do not hold what they announce. The size is bounded
/// by the input: 7-bit text grows to at most 16/7 of it, the other kind holds at most 65,535 bytes.
std::optional<QByteArray> ese_decompressed(const QByteArray &compressed);
