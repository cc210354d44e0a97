/// Where the metadata of a file of the evidence is kept: in the extended attributes of the file itself or, where the
/// file system cannot hold them, in the AppleDouble file beside it ("._" + name). Nothing is taken from the examiner's
/// own file system.
#pragma once

#include <QByteArray>
#include <QString>

/// Out: the stored value of a metadata attribute such as "kMDItemLastUsedDate", a binary property list; null when the
/// file has none.
QByteArray stored_metadata_value(const QString &file_path, const QString &attribute);
