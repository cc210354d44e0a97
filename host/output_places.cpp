#include "host/output_places.h"

#include "core/sqlite_database.h"
#include "host/command_line.h"
#include "host/result_database.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>

#include <filesystem>

namespace {

// The nearest folder above the path, or the path itself, that exists.
QFileInfo nearest_existing(const QString &path)
{
    QFileInfo place(path);
    while (!place.exists() && !place.isRoot()) {
        place.setFile(place.path());
    }
    return place;
}

// Compares what the paths stand for, not their text, so that links, bind mounts and letter case make no difference.
bool is_same(const QString &one, const QString &other)
{
    std::error_code ignored;
    return std::filesystem::equivalent(QFile::encodeName(one).toStdString(), QFile::encodeName(other).toStdString(),
                                       ignored);
}

// Also for a path that does not exist yet.
bool is_inside(const QString &path, const QString &folder)
{
    QFileInfo place(nearest_existing(path).canonicalFilePath());
    while (!is_same(place.filePath(), folder)) {
        if (place.isRoot() || place.filePath().isEmpty()) {
            return false;
        }
        place.setFile(place.path());
    }
    return true;
}

void check_no_dangling_link(const QString &path)
{
    for (QFileInfo place(path); !place.exists() && !place.isRoot(); place.setFile(place.path())) {
        if (place.isSymLink()) {
            throw unusable_input{QStringLiteral("\"%1\" is a link that leads nowhere: give another place to write to")
                                     .arg(place.filePath())};
        }
    }
}

void check_outside_source(const QString &what, const QString &path, const QString &source)
{
    if (is_inside(path, source)) {
        throw unusable_input{
            QStringLiteral("the %1 \"%2\" lies inside the source \"%3\", where nothing may be written: "
                           "give a place outside it")
                .arg(what, path, source)};
    }
}

void check_folder_usable(const QString &folder)
{
    check_no_dangling_link(folder);
    const QFileInfo existing = nearest_existing(folder);
    if (!existing.isDir()) {
        throw unusable_input{QStringLiteral("\"%1\" cannot be used as a folder for results: \"%2\" is a file")
                                 .arg(folder, existing.filePath())};
    }
    if (!existing.isWritable() || !existing.isExecutable()) {
        throw unusable_input{QStringLiteral("no permission to write results to \"%1\": give a folder that is writable")
                                 .arg(existing.filePath())};
    }
}

void check_file_usable(const QString &what, const QString &path)
{
    check_no_dangling_link(path);
    const QFileInfo file(path);
    if (file.exists() && !file.isFile()) {
        throw unusable_input{QStringLiteral("the %1 \"%2\" is not a regular file").arg(what, path)};
    }
    if (file.exists() && !(file.isReadable() && file.isWritable())) {
        throw unusable_input{QStringLiteral("no permission to read and write the %1 \"%2\"").arg(what, path)};
    }
}

// Without this, each statement of the run would wait for the other process in vain.
void check_database_unlocked(const QString &path)
{
    sqlite_database database;
    if (QFileInfo(path).size() > 0 && (!database.open_for_writing(path) || !database.execute("BEGIN IMMEDIATE"))) {
        throw unusable_input{QStringLiteral("the result database \"%1\" cannot be written: %2. Wait for the process "
                                            "that holds it, or give another result folder")
                                 .arg(path, database.error_text())};
    }
}

void check_database_usable(const QString &path)
{
    check_file_usable(QStringLiteral("result database"), path);
    if (!is_sqlite_or_empty(path)) {
        throw unusable_input{QStringLiteral("\"%1\" is not a SQLite database: move it away, or give another result "
                                            "folder")
                                 .arg(path)};
    }
    check_database_unlocked(path);
}

void check_log_usable(const output_places &places)
{
    const QString &log = places.log_file;
    check_file_usable(QStringLiteral("log file"), log);
    if (is_inside(log, places.result_directory + QStringLiteral("/Artifacts_Result"))) {
        throw unusable_input{
            QStringLiteral("the log file \"%1\" lies among the results in \"Artifacts_Result\": give another place")
                .arg(log)};
    }
    const QString folder = QFileInfo(log).path();
    if (!QFileInfo(folder).isDir() && folder != places.result_directory) {
        throw unusable_input{
            QStringLiteral("the log file's folder \"%1\" does not exist: make it, or give another place").arg(folder)};
    }
    if (!QFileInfo::exists(log)) {
        check_folder_usable(folder);
    }
}

// Creates the folder with its parents. Out: those that were missing, outermost first; empty and nothing made on
// failure.
QStringList make_folders(const QString &folder, bool *made)
{
    QStringList missing;
    for (QFileInfo place(folder); !place.exists() && !place.isRoot(); place.setFile(place.path())) {
        missing.prepend(place.filePath());
    }
    *made = QDir().mkpath(folder);
    return missing;
}

void remove_folders(const QStringList &made)
{
    for (auto folder = made.crbegin(); folder != made.crend(); ++folder) {
        QDir().rmdir(*folder);
    }
}

} // namespace

output_places checked_output_places(const QString &result_option, const QString &log_option, const QString &source)
{
    output_places places;
    places.result_directory = QDir::cleanPath(QFileInfo(result_option).absoluteFilePath());
    places.replace_log = log_option.isEmpty();
    places.log_file = places.replace_log ? QDir(places.result_directory).filePath(QStringLiteral("mail-extract.log"))
                                         : QDir::cleanPath(QFileInfo(log_option).absoluteFilePath());
    const QString database = result_database_path(places.result_directory);
    const QString artifacts = QFileInfo(database).path();
    const QString working_copies = artifacts + QStringLiteral("/tmp");

    check_outside_source(QStringLiteral("result folder"), places.result_directory, source);
    check_outside_source(QStringLiteral("result folder"), artifacts, source);
    check_outside_source(QStringLiteral("folder of working copies"), working_copies, source);
    check_outside_source(QStringLiteral("result database"), database, source);
    check_outside_source(QStringLiteral("log file"), places.log_file, source);
    if (is_inside(source, artifacts)) {
        throw unusable_input{QStringLiteral("the source \"%1\" lies inside \"%2\", whose working copies are removed at "
                                            "the end: give another result folder")
                                 .arg(source, artifacts)};
    }
    check_folder_usable(places.result_directory);
    check_folder_usable(working_copies);
    check_database_usable(database);
    check_log_usable(places);
    return places;
}

void create_output_places(const output_places &places)
{
    bool made = false;
    const QStringList new_folders = make_folders(places.result_directory, &made);
    if (!made) {
        remove_folders(new_folders);
        throw unusable_input{
            QStringLiteral("the result folder \"%1\" cannot be made: give another place").arg(places.result_directory)};
    }
    if (places.replace_log) {
        QFile::remove(places.log_file);
    }
    QFile log(places.log_file);
    if (!log.open(QIODevice::Append)) {
        const QString reason = log.errorString();
        remove_folders(new_folders);
        throw unusable_input{QStringLiteral("the log file \"%1\" cannot be written: %2").arg(places.log_file, reason)};
    }
}
