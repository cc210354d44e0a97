#include "windows/ese_source_handle.h"

#include "windows/ese_record_guard.h"

#include <QtEndian>

#include <dlfcn.h>
#include <unistd.h>

// What the library reads from is an object of a library of its own. That one comes along with it but without a header;
// so its functions are looked up by name, and where they are missing there is no handle.
namespace {

using error_slot = libesedb_error_t **;
using free_call = int (*)(intptr_t **, error_slot);
using clone_call = int (*)(intptr_t **, intptr_t *, error_slot);
using open_call = int (*)(intptr_t *, int, error_slot);
using state_call = int (*)(intptr_t *, error_slot);
using read_call = ssize_t (*)(intptr_t *, uint8_t *, size_t, error_slot);
using write_call = ssize_t (*)(intptr_t *, const uint8_t *, size_t, error_slot);
using seek_call = off64_t (*)(intptr_t *, off64_t, int, error_slot);
using size_call = int (*)(intptr_t *, size64_t *, error_slot);

using initialize_function = int (*)(intptr_t **, intptr_t *, free_call, clone_call, open_call, state_call, read_call,
                                    write_call, seek_call, state_call, state_call, size_call, uint8_t, error_slot);
using open_function = int (*)(libesedb_file_t *, intptr_t *, int, error_slot);

template <typename Function>
Function function_named(const char *name)
{
    return reinterpret_cast<Function>(::dlsym(RTLD_DEFAULT, name));
}

ese_source_stream &stream_of(intptr_t *io)
{
    return *reinterpret_cast<ese_source_stream *>(io);
}

int open_stream(intptr_t *io, int, error_slot)
{
    stream_of(io).is_open = true;
    return 1;
}

int close_stream(intptr_t *io, error_slot)
{
    stream_of(io).is_open = false;
    return 0;
}

ssize_t read_stream(intptr_t *io, uint8_t *buffer, size_t size, error_slot)
{
    ese_source_stream &stream = stream_of(io);
    const ssize_t count = stream.view.read(reinterpret_cast<char *>(buffer), size, stream.place);
    if (count == static_cast<ssize_t>(size) && stream.place >= 2 * static_cast<off64_t>(size)) { // behind the headers
        cut_unsound_records(reinterpret_cast<char *>(buffer), size, stream.has_tagged_index, stream.catalog);
    }
    stream.place += count > 0 ? count : 0;
    return count;
}

int size_of_stream(intptr_t *io, size64_t *size, error_slot)
{
    const off64_t known = stream_of(io).view.size();
    *size = static_cast<size64_t>(known);
    return known < 0 ? -1 : 1;
}

off64_t seek_stream(intptr_t *io, off64_t offset, int whence, error_slot error)
{
    ese_source_stream &stream = stream_of(io);
    size64_t size = 0;
    if (whence == SEEK_END && size_of_stream(io, &size, error) != 1) {
        return -1;
    }
    const off64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? stream.place : static_cast<off64_t>(size);
    if (base + offset < 0) {
        return -1;
    }
    stream.place = base + offset;
    return stream.place;
}

int does_stream_exist(intptr_t *, error_slot)
{
    return 1;
}

int is_stream_open(intptr_t *io, error_slot)
{
    return stream_of(io).is_open ? 1 : 0;
}

bool has_tagged_index(int descriptor)
{
    constexpr off64_t revision_offset = 232; // in the head of the file
    constexpr quint32 first_with_index = 3;
    quint32 stored = 0;
    return read_at(descriptor, &stored, sizeof(stored), revision_offset) != qint64{sizeof(stored)} ||
           qFromLittleEndian(stored) >= first_with_index;
}

} // namespace

ese_source_handle::ese_source_handle(const file_descriptor &file)
    : stream{ese_root_view(file.get()), ese_catalog_guard(file)}
{
    stream.has_tagged_index = has_tagged_index(file.get());
    make_handle();
}

ese_source_handle::ese_source_handle(const ese_source_handle &whole, const ese_root_window &window)
    : stream{ese_root_view(whole.stream.view, window), whole.stream.catalog}
{
    stream.has_tagged_index = whole.stream.has_tagged_index;
    make_handle();
}

void ese_source_handle::make_handle()
{
    const auto initialize = function_named<initialize_function>("libbfio_handle_initialize");
    if (initialize && function_named<free_call>("libbfio_handle_free") &&
        function_named<open_function>("libesedb_file_open_file_io_handle") &&
        initialize(&handle, reinterpret_cast<intptr_t *>(&stream), nullptr, nullptr, open_stream, close_stream,
                   read_stream, nullptr, seek_stream, does_stream_exist, is_stream_open, size_of_stream, 0,
                   nullptr) != 1) {
        handle = nullptr;
    }
}

ese_source_handle::~ese_source_handle()
{
    if (handle) {
        function_named<free_call>("libbfio_handle_free")(&handle, nullptr);
    }
}

int ese_source_handle::open(libesedb_file_t *file, libesedb_error_t **error)
{
    const auto open = function_named<open_function>("libesedb_file_open_file_io_handle");
    return handle && open && stream.catalog.is_sound() ? open(file, handle, LIBESEDB_ACCESS_FLAG_READ, error) : -1;
}
