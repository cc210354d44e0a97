// "Manifest.mbdb": six bytes of magic, then a record a file without any index. All numbers are big-endian. A record:
//   text domain, path, link target, data hash, encryption key
//   2 bytes mode; 8 inode; 4 each user, group, time of change, of access, of status change; 8 size; 1 protection class
//   1 byte number of properties; for each text name, value
// A text is two bytes of length and that many bytes; the length 0xffff stands for no text.

#include "host/backup_manifest.h"
#include "services/source_files.h"

#include <algorithm>
#include <array>

namespace {

constexpr char magic[] = {'m', 'b', 'd', 'b', 5, 0};
constexpr quint32 no_text = 0xffff;
constexpr int texts_behind_path = 3;
constexpr quint32 bytes_behind_mode = 8 + 5 * 4 + 8 + 1;
constexpr quint32 mode_kind = 0xf000;
constexpr quint32 mode_regular_file = 0x8000;

struct mbdb_record
{
    QByteArray domain;
    QByteArray path;
    quint32 mode = 0;
};

/// The records of a manifest, read in blocks: what it says of its lengths is never asked memory for.
class mbdb_reader
{
public:
    explicit mbdb_reader(const QString &path) : file(open_source_file(path, links::refuse)) {}

    bool read_magic();
    /// Whether the file ends here, as it does behind its last record.
    bool is_at_end() { return at == filled && !fill(); }
    /// Out: false when the file ends within the record.
    bool read_record(mbdb_record &record);

private:
    bool fill();
    bool read_number(int bytes, quint32 &number);
    bool read_text(QByteArray &text);
    bool skip(quint32 bytes);
    bool skip_texts(quint32 count);

    file_descriptor file;
    std::array<char, 1 << 16> block;
    std::size_t at = 0;
    std::size_t filled = 0;
};

bool mbdb_reader::fill()
{
    const qint64 count = file.is_open() ? read_block(file, block.data(), block.size()) : 0;
    at = 0;
    filled = count > 0 ? static_cast<std::size_t>(count) : 0;
    return filled > 0;
}

bool mbdb_reader::read_magic()
{
    return std::all_of(std::begin(magic), std::end(magic),
                       [&](char expected) { return !is_at_end() && block[at++] == expected; });
}

bool mbdb_reader::read_number(int bytes, quint32 &number)
{
    number = 0;
    for (int i = 0; i < bytes; ++i) {
        if (is_at_end()) {
            return false;
        }
        number = number << 8U | static_cast<unsigned char>(block[at++]);
    }
    return true;
}

bool mbdb_reader::read_text(QByteArray &text)
{
    text.resize(0);
    quint32 left = 0;
    if (!read_number(2, left)) {
        return false;
    }
    left = left == no_text ? 0 : left;
    while (left > 0 && !is_at_end()) {
        const std::size_t part = std::min<std::size_t>(left, filled - at);
        text.append(block.data() + at, static_cast<int>(part));
        at += part;
        left -= static_cast<quint32>(part);
    }
    return left == 0;
}

bool mbdb_reader::skip(quint32 bytes)
{
    while (bytes > 0 && !is_at_end()) {
        const std::size_t part = std::min<std::size_t>(bytes, filled - at);
        at += part;
        bytes -= static_cast<quint32>(part);
    }
    return bytes == 0;
}

bool mbdb_reader::skip_texts(quint32 count)
{
    quint32 length = 0;
    for (; count > 0; --count) {
        if (!read_number(2, length) || (length != no_text && !skip(length))) {
            return false;
        }
    }
    return true;
}

bool mbdb_reader::read_record(mbdb_record &record)
{
    quint32 properties = 0;
    return read_text(record.domain) && read_text(record.path) && skip_texts(texts_behind_path) &&
           read_number(2, record.mode) && skip(bytes_behind_mode) && read_number(1, properties) &&
           skip_texts(2 * properties);
}

class manifest_mbdb : public backup_manifest
{
public:
    manifest_mbdb(QString path, const std::atomic<bool> &cancel_flag)
        : file_path(std::move(path)), is_cancelled(cancel_flag)
    {
    }

    bool is_whole() const;
    std::optional<QByteArray> name_of(const device_file &file) override;

private:
    const QString file_path;
    const std::atomic<bool> &is_cancelled;
};

bool manifest_mbdb::is_whole() const
{
    mbdb_reader reader(file_path);
    mbdb_record record;
    bool is_sound = reader.read_magic() && !reader.is_at_end();
    while (is_sound && !reader.is_at_end()) {
        is_sound = !is_cancelled && reader.read_record(record);
    }
    return is_sound;
}

// The manifest holds no names: they are those that the paths give. Walked anew for each look-up, which for the few that
// a run needs is cheaper than keeping millions of entries.
std::optional<QByteArray> manifest_mbdb::name_of(const device_file &file)
{
    const QByteArray domain = file.domain.toUtf8();
    const QByteArray path = file.relative_path.toUtf8();
    mbdb_reader reader(file_path);
    mbdb_record record;
    if (!reader.read_magic()) {
        return std::nullopt;
    }
    while (!reader.is_at_end()) {
        if (is_cancelled || !reader.read_record(record)) {
            return std::nullopt;
        }
        if (record.domain == domain && record.path == path && (record.mode & mode_kind) == mode_regular_file) {
            return backup_name_of(file);
        }
    }
    return QByteArray();
}

} // namespace

std::unique_ptr<backup_manifest> open_manifest_mbdb(const QString &path, const std::atomic<bool> &cancel_flag)
{
    auto manifest = std::make_unique<manifest_mbdb>(path, cancel_flag);
    return manifest->is_whole() ? std::move(manifest) : nullptr;
}
