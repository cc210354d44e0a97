/// The kind of content of a file of the source.
#pragma once

#include <QString>

/// Out: the name of the MIME type that the file's name and, where several types share that, its content tell, such as
/// "text/html"; "application/octet-stream" when neither does, also for a file that does not open.
QString mime_type_of_source_file(const QString &path);
