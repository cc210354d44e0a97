// The manifests of iOS backups: "Manifest.mbdb", and every other input as "Manifest.db".
#include "host/backup_manifest.h"

#include "fuzz/fuzz_target.h"

#include <QDir>

void fuzz_one(const QByteArray &input)
{
    static const std::atomic<bool> not_cancelled{false};
    static const device_file files[] = {
        {QStringLiteral("HomeDomain"), QStringLiteral("Library/Mail/Recents")},
        {QStringLiteral("HomeDomain"), QStringLiteral("Library/SMS/sms.db")},
        {QString(), QString()},
    };
    const QString path = file_with(input);
    const std::unique_ptr<backup_manifest> manifest =
        input.startsWith("mbdb") ? open_manifest_mbdb(path, not_cancelled)
                                 : open_manifest_database(path, QDir::tempPath(), not_cancelled);
    if (!manifest) {
        return;
    }
    for (const device_file &file : files) {
        const std::optional<QByteArray> name = manifest->name_of(file);
        require(!name || name->isEmpty() || is_backup_name(*name), "a name is that of a file in a backup");
    }
}
