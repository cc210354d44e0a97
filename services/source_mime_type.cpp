#include "services/source_mime_type.h"

#include "services/source_files.h"

#include <QFile>
#include <QMimeDatabase>

QString mime_type_of_source_file(const QString &path)
{
    // Asked by path alone, the database would open the file itself: with its access time moved.
    file_descriptor descriptor = open_source_file(path);
    QFile content;
    if (descriptor.is_open()) {
        content.open(descriptor.release(), QIODevice::ReadOnly, QFileDevice::AutoCloseHandle);
    }
    return QMimeDatabase().mimeTypeForFileNameAndData(path, &content).name();
}
