/// Looks at the bytes of a property list before the library does: its parsers recurse for each level of nesting and
/// copy an object for each reference to it, so that a small hostile file ends the process or fills the memory.
#pragma once

#include <QByteArray>

/// Out: whether the bytes may be given to the library. False for what is nested deeper than any list of an application
/// is, for what unfolds to more than half a gigabyte, for a binary list whose references leave the file or run in a
/// circle, and for XML that is not well-formed, brings definitions of its own or would keep the library busy for
/// minutes.
bool is_safe_property_list(const QByteArray &content);

/// What every binary property list begins with.
bool is_binary_property_list(const QByteArray &content);
