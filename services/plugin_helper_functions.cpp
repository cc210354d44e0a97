// Working copies of source files.
#include "services/plugin_helper_functions.h"

#include "core/plugin_static_function.h"
#include "services/source_files.h"

#include <QFileInfo>

plugin_helper_functions::plugin_helper_functions(QWidget *)
{
    initialize_image_extension_list();
    initialize_audio_extension_list();
    initialize_video_extension_list();
}

QString plugin_helper_functions::get_adhoc_path_for_database(const QString &path)
{
    const QString copy =
        make_working_copy(path, "QString plugin_helper_functions::get_adhoc_path_for_database(QString)");
    if (copy.isEmpty()) {
        return copy;
    }
    // Rows may stand in the write-ahead file alone, which SQLite reads together with the shared-memory file.
    for (const QLatin1String suffix : {QLatin1String("-shm"), QLatin1String("-wal")}) {
        if (QFileInfo::exists(path + suffix)) {
            copy_source_file(path + suffix, copy + suffix, links::refuse);
        }
    }
    return copy;
}

QString plugin_helper_functions::get_adhoc_path_for_regular_file(const QString &path)
{
    return make_working_copy(path, "QString plugin_helper_functions::get_adhoc_path_for_regular_file(QString)");
}

QString plugin_helper_functions::make_working_copy(const QString &path, const char *caller)
{
    if (path.trimmed().isEmpty()) {
        return QString();
    }
    const QString name = plugin_static_function::get_available_file(
        QFileInfo(path).fileName(), adhoc_parent_path_QString, QString::fromLatin1(caller));
    const QString copy = adhoc_parent_path_QString + name;
    if (QFileInfo(copy).isFile()) {
        QFile::remove(copy);
    }
    copy_source_file(path, copy);
    return copy;
}
