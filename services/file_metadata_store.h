/// Where the metadata of a file of the evidence is kept: in the extended attributes of the file itself or, where the
/// file system cannot hold them, in the AppleDouble file beside it ("._" + name). Nothing is taken from the examiner's
/// own file system.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <optional>

/// The stored metadata of one file, read at once.
class stored_metadata
{
public:
    /// None when nothing stands at the path.
    static std::optional<stored_metadata> of_file(const QString &file_path);

    bool is_empty() const { return values.isEmpty(); }
    /// The stored value of an attribute such as "kMDItemLastUsedDate", a binary property list; null when the file has
    /// none. Valid as long as this object.
    QByteArray value(const QString &attribute) const { return values.value(attribute.toUtf8()); }

private:
    void take_extended_attributes(const QByteArray &path, const QByteArray &names);
    void take_apple_double(const QString &path);
    void take_attributes_behind(qint64 finder_info_at);
    void take(const QByteArray &stored_name, const QByteArray &value);

    QHash<QByteArray, QByteArray> values; // those of the AppleDouble file are views of its content
    QByteArray apple_double;
};
