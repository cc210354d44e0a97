/// Percent escapes as they stand in URLs.
#pragma once

#include <QByteArray>

/// Out: the bytes with each "%" and two hexadecimal digits turned into the byte they name. A "%" that begins no such
/// escape stays, with what stands behind it.
QByteArray percent_decoded(const QByteArray &bytes);
