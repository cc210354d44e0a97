#include "windows/ese_file.h"

ese_file::opening ese_file::open(const QString &path, libesedb_error_t *&error)
{
    file_path = path;
    libesedb_file_t *handle = nullptr;
    const int result = settled(libesedb_file_initialize(&handle, &error), error);
    library_file.reset(handle);
    if (result == -1 || !library_file) {
        return opening::no_handle;
    }
    source.emplace(open_source_file(path));
    if (!source->is_open() || settled(open_in_library(&error), error) != 1) {
        close();
        return opening::failed;
    }
    return opening::done;
}

// Where the library cannot read through a descriptor it opens the same file once more, by way of that.
int ese_file::open_in_library(libesedb_error_t **error)
{
    library_source.emplace(*source);
    if (library_source->is_offered()) {
        return library_source->open(library_file.get(), error);
    }
    const QByteArray path = "/proc/self/fd/" + QByteArray::number(source->get());
    return libesedb_file_open(library_file.get(), path.constData(), LIBESEDB_ACCESS_FLAG_READ, error);
}

void ese_file::close()
{
    library_file.reset();
    library_source.reset();
    source.reset();
}
