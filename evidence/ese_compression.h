/// The ways in which an ESE database compresses the values of its long columns.
#pragma once

#include "evidence/ese_value.h"

#include <QByteArray>

namespace evidence::ese {

/// Out: the bytes compressed, behind the byte that says how; as they are when that would not make them shorter. Throws
/// evidence_error for bytes that the way cannot hold.
QByteArray compressed(const QByteArray &bytes, ese_compression way);

} // namespace evidence::ese
