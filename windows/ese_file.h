/// An ESE file of the source: opened through the library, and beside it as plain pages for what the library does not
/// find. Nothing of the file is written, and what is no regular file is never opened.
#pragma once

#include "services/source_files.h"
#include "windows/ese_handles.h"
#include "windows/ese_source_handle.h"

#include <QString>

#include <optional>

class ese_file
{
public:
    enum class opening
    {
        done,
        no_handle, ///< the library gave no handle
        failed     ///< no regular file, not readable, no ESE file, damaged at its head
    };

    /// Opens the file at the path, links followed. In and out: the error, null before and behind.
    opening open(const QString &path, libesedb_error_t *&error);
    /// Closes what is open. A file left open is closed with the object.
    void close();

    /// Out: null when the file is not open.
    libesedb_file_t *handle() const { return library_file.get(); }
    /// Out: the path as it was given to open().
    const QString &path() const { return file_path; }
    /// The same file for reading its bytes, while it is open.
    const file_descriptor &bytes() const { return *source; }
    /// What the library reads the open file through.
    const ese_source_handle &stream() const { return *library_source; }

private:
    int open_in_library(libesedb_error_t **error);

    QString file_path;
    // Destroyed from the last to the first: each reads through the one above it.
    std::optional<file_descriptor> source;
    std::optional<ese_source_handle> library_source;
    ese_file_handle library_file;
};
