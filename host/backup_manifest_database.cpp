// "Manifest.db": a SQLite database with a row a file.

#include "core/sqlite_database.h"
#include "host/backup_manifest.h"
#include "services/source_files.h"

#include <QFileInfo>
#include <QTemporaryDir>

namespace {

constexpr const char *any_row = "SELECT 1 FROM Files LIMIT 1";
constexpr const char *name_of_path = "SELECT fileID FROM Files WHERE domain = ? AND relativePath = ?";

class manifest_database : public backup_manifest
{
public:
    explicit manifest_database(const QString &working_folder)
        : folder(working_folder + QStringLiteral("/manifest-XXXXXX"))
    {
    }

    bool open(const QString &path, const std::atomic<bool> &cancel_flag);
    std::optional<QByteArray> name_of(const device_file &file) override;

private:
    bool has_rows();

    QTemporaryDir folder; // removed last, when the database is closed
    sqlite_database database;
    sqlite_statement names;
};

// SQLite writes beside a database with a write-ahead log even when it only reads: it gets a copy.
bool manifest_database::open(const QString &path, const std::atomic<bool> &cancel_flag)
{
    const QString copy = folder.filePath(QStringLiteral("Manifest.db"));
    if (!folder.isValid() || !copy_source_file(path, copy, cancel_flag)) {
        return false;
    }
    for (const QLatin1String suffix : {QLatin1String("-shm"), QLatin1String("-wal")}) {
        if (!QFileInfo(path + suffix).isSymLink()) { // SQLite follows none there either
            copy_source_file(path + suffix, copy + suffix, cancel_flag);
        }
    }
    return database.open_for_reading(copy, cancel_flag) && has_rows() && names.prepare(database, name_of_path);
}

bool manifest_database::has_rows()
{
    sqlite_statement rows;
    return rows.prepare(database, any_row) && rows.step() == sqlite_statement::outcome::row;
}

std::optional<QByteArray> manifest_database::name_of(const device_file &file)
{
    names.bind(0, file.domain);
    names.bind(1, file.relative_path);
    bool is_listed = false;
    QByteArray name;
    auto outcome = names.step();
    for (; name.isEmpty() && outcome == sqlite_statement::outcome::row; outcome = names.step()) {
        is_listed = true;
        const QByteArray stored = names.text(0).toLatin1();
        name = is_backup_name(stored) ? stored : QByteArray();
    }
    names.reset();
    const bool is_answer = !name.isEmpty() || (outcome == sqlite_statement::outcome::done && !is_listed);
    return is_answer ? std::optional<QByteArray>(name) : std::nullopt;
}

} // namespace

std::unique_ptr<backup_manifest> open_manifest_database(const QString &path, const QString &working_folder,
                                                        const std::atomic<bool> &cancel_flag)
{
    auto manifest = std::make_unique<manifest_database>(working_folder);
    return manifest->open(path, cancel_flag) ? std::move(manifest) : nullptr;
}
