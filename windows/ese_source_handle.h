/// Lets the ESE library read through a descriptor of ours. Opened by its path, an evidence file would have its access
/// time moved: the library opens it anew, without asking the system to leave that alone.
#pragma once

#include "services/source_files.h"
#include "windows/ese_catalog_guard.h"
#include "windows/ese_handles.h"
#include "windows/ese_root_view.h"

/// Where the library stands in the file.
struct ese_source_stream
{
    ese_root_view view;
    ese_catalog_guard catalog;
    off64_t place = 0;
    bool is_open = false;
    bool has_tagged_index = true; ///< how the records are made, see ese_record_guard.h
};

class ese_source_handle
{
public:
    /// The file must be open as long as the handle is used.
    explicit ese_source_handle(const file_descriptor &file);
    /// The same file, and of one of its trees only what is in the window.
    ese_source_handle(const ese_source_handle &whole, const ese_root_window &window);
    /// Only after the library has closed its file.
    ~ese_source_handle();
    ese_source_handle(const ese_source_handle &) = delete;
    ese_source_handle &operator=(const ese_source_handle &) = delete;

    /// Out: the library's result; -1 also for a file whose catalog does not hold together, and where this library does
    /// not bring along what it takes to read for it.
    int open(libesedb_file_t *file, libesedb_error_t **error);
    /// Out: whether this library can read through a descriptor at all.
    bool is_offered() const { return handle != nullptr; }
    const ese_root_view &view() const { return stream.view; }
    const ese_catalog_guard &catalog() const { return stream.catalog; }

private:
    void make_handle();

    ese_source_stream stream;
    intptr_t *handle = nullptr;
};
