/// Reading the evidence source without leaving a trace: files and folders are opened read-only and, where the system
/// lets us, without moving their access times. What is no regular file or folder (a pipe, a device) is never waited
/// for.
#pragma once

#include <QByteArray>
#include <QString>

#include <atomic>
#include <cstddef>
#include <optional>
#include <vector>

enum class links
{
    follow,
    refuse
};

/// Files that tools put beside others to hold what a file system cannot ("._" + name).
enum class companion_files
{
    pass_over,
    meet
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

/// What the file system tells of a file.
struct file_status
{
    std::optional<qint64> created;      ///< seconds since 1970; none when the file system keeps no such time
    std::optional<qint64> regular_size; ///< bytes; none for what is no regular file
};

/// Out: the status of what stands at the path, links followed; an empty one when nothing does.
file_status status_of(const QString &path);

/// Reads the next bytes of an open file. Out: how many; 0 at the end, -1 for an error.
qint64 read_block(const file_descriptor &file, char *data, std::size_t size);

/// Reads bytes of an open file from a place in it. Out: how many, fewer at the end; -1 for an error.
qint64 read_at(int descriptor, void *data, std::size_t size, qint64 place);

/// Reads as many of the next bytes of an open file as there are, up to the size. Out: null for an error.
QByteArray read_bytes(const file_descriptor &file, qint64 size);

/// Out: whether all of the bytes were written.
bool write_bytes(const file_descriptor &file, const char *data, std::size_t size);

/// Copies a regular file byte for byte, its holes as holes; the copy is the examiner's, readable and writable for its
/// owner, whatever the permissions of the source. Out: whether the whole file was copied; otherwise, also when the flag
/// was raised meanwhile, there is no copy.
bool copy_source_file(const QString &source, const QString &copy, const std::atomic<bool> &cancel_flag);

/// Out: the whole content of a regular file; null when it cannot be read or is larger than the limit (bytes).
QByteArray read_source_file(const QString &path, qint64 size_limit, links policy = links::follow);

/// The root folder of a source, which nothing that evidence names may lead out of: what lies outside belongs to the
/// examiner's machine.
class source_boundary
{
public:
    /// A root that is not there contains nothing.
    explicit source_boundary(const QString &root);

    /// Out: whether something stands at the path and, all links followed, lies below the root.
    bool contains(const QString &path) const;
    /// Out: the same, where none of the folders on the way from the root is a link, nor what stands there.
    bool contains_without_links(const QString &path) const;

private:
    QString root;
    QByteArray canonical_root; // with a slash behind; empty when there is none
    mutable QString last_path; // a file is asked for several times in a row
    mutable bool is_last_inside = false;
};

/// The same for a single path.
inline bool stands_below(const QString &root, const QString &path)
{
    return source_boundary(root).contains(path);
}

/// Walks a folder with all its subfolders, depth first, in the order in which the file system lists them: each entry is
/// met before what stands below it. Links are met but not followed.
class folder_walk
{
public:
    /// What an entry is by itself: a link stays a link, wherever it leads.
    enum class entry_kind
    {
        file,
        folder,
        link,
        other
    };

    /// A folder that does not open has no entries. The policy is for the folder itself.
    folder_walk(const QString &folder, links policy, companion_files companions = companion_files::pass_over);

    /// Out: whether the folder itself opened.
    bool is_open() const { return is_folder_open; }
    /// Steps to the next entry. Out: false behind the last one.
    bool next();
    /// The entry in hand, relative to the folder, in the file system's bytes.
    const QByteArray &relative_path() const { return current; }
    entry_kind kind() const { return current_kind; }
    /// Leaves out what stands below the folder in hand.
    void skip_folder() { pending_folder.clear(); }

private:
    struct entry
    {
        QByteArray name;
        entry_kind kind;
    };
    struct level
    {
        QByteArray relative_path; // of the folder, with a slash behind; empty for the walked folder itself
        std::vector<entry> entries;
        std::size_t at = 0;
    };

    bool open_level(const QByteArray &relative_path, links policy);

    companion_files companions;
    QByteArray folder_path; // with a slash behind
    std::vector<level> levels;
    QByteArray current;
    entry_kind current_kind = entry_kind::other;
    QByteArray pending_folder; // the folder met last, walked at the next step
    bool is_folder_open = false;
};
