/// Bytes of evidence whose encoding nothing tells.
#pragma once

#include <QByteArray>
#include <QString>

/// Out: the bytes read as UTF-8 where they are valid UTF-8, else as Latin-1; empty, not null, for no bytes.
QString text_of_unknown_encoding(const QByteArray &bytes);

/// Out: the bytes before the first zero byte; all of them without one.
QByteArray bytes_before_zero(const QByteArray &bytes);
