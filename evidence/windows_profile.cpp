#include "evidence/windows_profile.h"

#include "evidence/files.h"

namespace evidence {

namespace {

QString add_file(const QString &path, const QByteArray &content)
{
    make_folder(folder_of(path));
    write_file(path, content);
    return path;
}

} // namespace

windows_profile::windows_profile(const QString &root, const QString &user, const ese_file_options &store_options)
    : profile(root + QLatin1String(root.endsWith(QLatin1Char('/')) ? "Users/" : "/Users/") + user + QLatin1Char('/')),
      options(store_options)
{
}

windows_store &windows_profile::store()
{
    if (!store_file) {
        store_file.emplace(store_path(), windows_store_tables(), options);
    }
    return *store_file;
}

QString windows_profile::add_store_file(const QString &relative_path, const QByteArray &content)
{
    return add_file(store_files_path() + relative_path, content);
}

QString windows_profile::add_package_file(const QString &relative_path, const QByteArray &content)
{
    return add_file(local_state_path() + relative_path, content);
}

QString windows_profile::local_state_path() const
{
    return profile +
           QLatin1String("AppData/Local/Packages/microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/");
}

void windows_profile::finish()
{
    if (store_file) {
        store_file->finish();
    }
}

} // namespace evidence
