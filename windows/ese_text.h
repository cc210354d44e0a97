/// Text of an ESE file: bytes in the codepage of their column.
#pragma once

#include <QByteArray>

#include <optional>

/// In: the bytes of a text and the number of its codepage. Out: the text in UTF-8 up to its first zero character; none
/// where the codepage is not one of those that the files of a mail profile use (UTF-16, Windows-1252, ASCII, UTF-8).
std::optional<QByteArray> ese_text_in_utf8(const QByteArray &bytes, quint32 codepage);
