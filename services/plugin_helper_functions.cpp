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
    bool is_copied = false;
    const QString copy =
        make_working_copy(path, "QString plugin_helper_functions::get_adhoc_path_for_database(QString)", is_copied);
    if (copy.isEmpty()) {
        return copy;
    }
    // Rows may stand in the write-ahead file alone, which SQLite reads together with the shared-memory file. Beside a
    // database that could not be copied they would wait for the next one of that name, as if they were its own.
    for (const QLatin1String suffix : {QLatin1String("-shm"), QLatin1String("-wal")}) {
        QFile::remove(copy + suffix);
        if (is_copied && !QFileInfo(path + suffix).isSymLink()) { // SQLite follows none there either
            copy_source_file(path + suffix, copy + suffix, plugin_helper_cancel_bool);
        }
    }
    return copy;
}

QString plugin_helper_functions::get_adhoc_path_for_regular_file(const QString &path)
{
    bool is_copied = false;
    return make_working_copy(path, "QString plugin_helper_functions::get_adhoc_path_for_regular_file(QString)",
                             is_copied);
}

QString plugin_helper_functions::make_working_copy(const QString &path, const char *caller, bool &is_copied)
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
    is_copied = copy_source_file(path, copy, plugin_helper_cancel_bool);
    return copy;
}
