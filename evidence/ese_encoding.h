/// The bytes of single values, as the type of their column has them.
#pragma once

#include "evidence/ese_value.h"

#include <QByteArray>

namespace evidence::ese {

/// Out: the bytes of a value of a column of that type and codepage that is neither absent nor several ones. Throws
/// evidence_error when the value does not suit the type.
QByteArray value_bytes(const ese_column &column, const ese_value &value);

/// Out: the bytes of the types that have one size, 0 for the others.
int size_of_type(ese_type type);

bool is_text(ese_type type);
/// The types whose values may be compressed or stored as long values.
bool is_long(ese_type type);

} // namespace evidence::ese
