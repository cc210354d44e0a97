/// Builds the mail data of one user's Windows profile below the root of a volume, piece by piece:
///
///     windows_profile anna(root, QStringLiteral("anna"));
///     anna.store().add(windows_contact{...});
///     anna.add_store_file(QStringLiteral("7/1/offer.pdf"), "%PDF-1.4");
///     anna.finish();
///
/// Everything that fails throws evidence_error.
#pragma once

#include "evidence/windows_store.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace evidence {

class windows_profile
{
public:
    /// In: the root of the volume and the name of the user's folder. Nothing is made before it is asked for.
    windows_profile(const QString &root, const QString &user, const ese_file_options &options = {});

    /// The store.vol with all its tables, made by the first call.
    windows_store &store();

    /// A file of the UniStore, its path relative to "Unistore/data/": the body files, and below "7/" the received
    /// attachments. Out: its path.
    QString add_store_file(const QString &relative_path, const QByteArray &content);
    /// A file of the mail application's package, its path relative to "LocalState/". Out: its path.
    QString add_package_file(const QString &relative_path, const QByteArray &content);

    /// Paths of the store.vol, whether it stands or not, and of the folders above the files, with a slash behind.
    QString store_path() const { return profile + QLatin1String("AppData/Local/Comms/UnistoreDB/store.vol"); }
    QString store_files_path() const { return profile + QLatin1String("AppData/Local/Comms/Unistore/data/"); }
    QString local_state_path() const;

    /// Finishes the store.vol, if there is one; nothing is added to it behind that.
    void finish();

private:
    QString profile; // with a slash behind
    ese_file_options options;
    std::optional<windows_store> store_file;
};

} // namespace evidence
