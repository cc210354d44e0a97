/// Reading the evidence source without leaving a trace: files and folders are opened read-only and, where the system
/// lets us, without moving their access times. What is no regular file or folder (a pipe, a device) is never waited
/// for.
#pragma once

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <vector>

enum class links
{
    follow,
    refuse
};

/// A file descriptor, closed when it goes out of scope; -1 is none.
class file_descriptor
{
public:
    explicit file_descriptor(int value = -1) : descriptor(value) {}
    ~file_descriptor();
    file_descriptor(file_descriptor &&other) noexcept : descriptor(other.release()) {}
    file_descriptor(const file_descriptor &) = delete;
    file_descriptor &operator=(const file_descriptor &) = delete;
    file_descriptor &operator=(file_descriptor &&) = delete;

    bool is_open() const { return descriptor >= 0; }
    int get() const { return descriptor; }
    /// Hands the descriptor over to whoever closes it from now on.
    int release();

private:
    int descriptor;
};

/// Out: the opened regular file; none when it is missing, not readable or of another kind.
file_descriptor open_source_file(const QString &path, links policy = links::follow);

/// Copies a regular file byte for byte; the copy is the examiner's, readable and writable for its owner, whatever the
/// permissions of the source. Out: whether the whole file was copied.
bool copy_source_file(const QString &source, const QString &copy, links policy = links::follow);

/// Out: the whole content of a regular file; null when it cannot be read or is larger than the limit (bytes).
QByteArray read_source_file(const QString &path, qint64 size_limit);

/// The root folder of a source, which nothing that evidence names may lead out of: what lies outside belongs to the
/// examiner's machine.
class source_boundary
{
public:
    /// A root that is not there contains nothing.
    explicit source_boundary(const QString &root);

    /// Out: whether something stands at the path and, all links followed, lies below the root.
    bool contains(const QString &path) const;

private:
    QByteArray canonical_root; // with a slash behind; empty when there is none
};

/// The same for a single path.
inline bool stands_below(const QString &root, const QString &path)
{
    return source_boundary(root).contains(path);
}

/// Walks a folder with all its subfolders, depth first, in the order in which the file system lists them: each entry is
/// met before what stands below it. Hidden entries are passed over; links are met but not followed.
class folder_walk
{
public:
    /// A folder that does not open has no entries. The policy is for the folder itself.
    folder_walk(const QString &folder, links policy);

    /// Out: whether the folder itself opened.
    bool is_open() const { return is_folder_open; }
    /// Steps to the next entry. Out: false behind the last one.
    bool next();
    /// The entry in hand, relative to the folder, in the file system's bytes.
    const QByteArray &relative_path() const { return current; }

private:
    struct entry
    {
        QByteArray name;
        bool is_folder;
    };
    struct level
    {
        QByteArray relative_path; // of the folder, with a slash behind; empty for the walked folder itself
        std::vector<entry> entries;
        std::size_t at = 0;
    };

    bool open_level(const QByteArray &relative_path, links policy);

    QByteArray folder_path; // with a slash behind
    std::vector<level> levels;
    QByteArray current;
    QByteArray pending_folder; // the folder met last, walked at the next step
    bool is_folder_open = false;
};
