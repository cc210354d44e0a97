/// Files of the examiner's own in the working-copy folder, under names that evidence has a say in.
#pragma once

#include "services/source_files.h"

#include <QByteArray>
#include <QString>

/// A name that is no plain file name (a "/" in it, "..", longer than the file system takes) names no file: it cannot
/// lead out of the folder, nor can a link that stands there under the name.
class working_folder
{
public:
    /// A folder that does not open holds no files and takes none.
    explicit working_folder(const QString &path);

    /// Writes a file anew. Out: whether it stands there whole; if not, no part of it does.
    bool write(const QString &name, const QByteArray &content);
    /// Out: the whole content, null when the file does not open or is larger than the limit (bytes).
    QByteArray read(const QString &name, qint64 size_limit);
    void remove(const QString &name);

    /// What the system says of the last failure.
    QString error_text() const { return error; }

private:
    QByteArray plain_name(const QString &name);
    bool fail_with(int error_code);

    file_descriptor folder;
    QString error;
};
