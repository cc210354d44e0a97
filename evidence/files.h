/// Folders and files of an evidence tree, and the one way in which writing it fails.
///
/// Paths are taken as UTF-8 whatever the locale says, as the devices write them.
#pragma once

#include <QByteArray>
#include <QString>

#include <stdexcept>

namespace evidence {

/// Thrown by everything in this library that cannot write what it was asked to; what() is one whole sentence.
class evidence_error : public std::runtime_error
{
public:
    explicit evidence_error(const QString &sentence);
};

/// Makes the folder with its parents; one that stands already is left as it is.
void make_folder(const QString &path);

/// Writes the file anew. Its folder must stand.
void write_file(const QString &path, const QByteArray &content);

/// Out: the folder that holds the path, without a slash at its end; of a path without any slash, an empty text.
QString folder_of(const QString &path);

} // namespace evidence
