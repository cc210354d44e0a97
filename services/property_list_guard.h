/// Looks at the bytes of a property list before the library does: its parsers recurse for each level of nesting and
/// copy an object for each reference to it, so that a small hostile file ends the process or fills the memory.
#pragma once

#include <QByteArray>

/// Out: whether the bytes may be given to the library. False for what is nested deeper than any list of an application
/// is, for what unfolds to more than the limit (bytes), for a binary list whose references leave the file or run in a
/// circle or whose keys hold a character of code zero, at which the library ends the process, and for XML that is not
/// well-formed, brings definitions of its own or would keep the library busy for minutes.
bool is_safe_property_list(const QByteArray &content, quint64 unfolded_size_limit = Q_UINT64_C(512) << 20);

/// What every binary property list begins with.
bool is_binary_property_list(const QByteArray &content);
