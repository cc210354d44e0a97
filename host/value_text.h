/// Values of the result database as text.
#pragma once

#include <QString>
#include <QVariant>

/// The value as the database prints it: reals with all their digits and a point, bytes in hexadecimal. NULL is empty.
QString value_text(const QVariant &value);

/// The text as a JSON string. What could harm a terminal is written as an escape, which means the same to every reader.
QString json_text(const QString &text);

/// The value as JSON: integers and reals as numbers, NULL as null, all else as text; a real that JSON cannot hold is
/// the text "Infinity" or "-Infinity".
QString json_value(const QVariant &value);
