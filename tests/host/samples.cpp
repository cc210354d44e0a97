#include "tests/host/samples.h"

#include "evidence/sample_ios_file_tree.h"
#include "evidence/sample_macos_mail_tree.h"

#include <QDateTime>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>

#include <algorithm>

#include <grp.h>
#include <unistd.h>

namespace {

constexpr const char *folders[] = {
    "bare",
    "alice/Library/Mail",
    "mac/Users/alice/Library/Mail",
    "mac/Users/bob/Library/Preferences",
    "mac/Users/Shared",
    "windows/Users/carol/AppData/Local/Comms",
    "windows/Users/Public",
    "two/Users/a/Library/Mail",
    "two/private/var/mobile/Library/Mail",
    "holds/Artifacts_Result/Mail/tmp/mac/Users/a/Library/Mail",
    "linked/Artifacts_Result/Mail",
};

struct sample_file
{
    const char *path;
    const char *content;
};

constexpr sample_file files[] = {
    {"file", "not a folder"},
    {"backup/Manifest.plist", "x"},
    {"backup/Info.plist", "x"},
    {"taken/Artifacts_Result/Mail/Mail.sqlite", "not a database, but long enough for one"},
};

constexpr sample_file links[] = {
    {"link_to_ios", "ios"},
    {"dangling", "nowhere"},
    {"mac/Users/escape", "/"},
    {"linked/Artifacts_Result/Mail/Mail.sqlite", "../../../ios/private/var/mobile/Library/Mail/Envelope Index"},
};

constexpr const char *shown_statements[] = {
    "CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), cc VARCHAR(1024), "
    "message_date_sent INTEGER, source_count_name VARCHAR(1024))",
    "CREATE TABLE recents(INT INTEGER PRIMARY KEY)",
    "INSERT INTO messages VALUES(1, 'a,\"b\"' || char(13, 10) || 'c', NULL, '1578307200', 'Source1')",
    "INSERT INTO messages VALUES(2, '', NULL, '600000000.5', 'Source2')",
    "INSERT INTO messages VALUES(3, char(27) || '[2J' || char(8238), NULL, 9e999, 'Source2')",
};

bool make_shown_database(const QString &path)
{
    bool succeeded = write_file(path, QByteArray());
    const QString connection_name = QStringLiteral("shown");
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), connection_name);
        database.setDatabaseName(path);
        succeeded = database.open() && succeeded;
        QSqlQuery query(database);
        for (const char *statement : shown_statements) {
            succeeded = query.exec(QString::fromLatin1(statement)) && succeeded;
        }
    }
    QSqlDatabase::removeDatabase(connection_name);
    return succeeded;
}

class unprivileged_process : public QProcess
{
protected:
    void setupChildProcess() override
    {
        constexpr uid_t nobody = 65534;
        if (::geteuid() == 0 && (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0)) {
            ::_exit(127);
        }
    }
};

} // namespace

bool make_samples(const QString &folder)
{
    const QDir samples(folder);
    evidence::sample_ios_file_tree_options options;
    options.message_count = sample_messages;
    evidence::write_sample_ios_file_tree(samples.filePath(QStringLiteral("ios")), options);
    evidence::sample_macos_mail_tree_options volume_options;
    volume_options.message_count = sample_messages;
    volume_options.storage = evidence::sqlite_storage::wal_only;
    evidence::write_sample_macos_mail_tree(samples.filePath(QStringLiteral("volume")), volume_options);

    return std::all_of(std::begin(folders), std::end(folders),
                       [&](const char *made) { return samples.mkpath(QString::fromLatin1(made)); }) &&
           std::all_of(std::begin(files), std::end(files),
                       [&](const sample_file &file) {
                           return write_file(samples.filePath(QString::fromLatin1(file.path)), file.content);
                       }) &&
           std::all_of(std::begin(links), std::end(links),
                       [&](const sample_file &link) {
                           return QFile::link(QString::fromLatin1(link.content),
                                              samples.filePath(QString::fromLatin1(link.path)));
                       }) &&
           make_shown_database(samples.filePath(QStringLiteral("shown/Artifacts_Result/Mail/Mail.sqlite")));
}

bool write_file(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly) &&
           file.write(content) == content.size();
}

QStringList state_of(const QString &folder)
{
    QStringList state;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QFileInfo entry(walk.next());
        state +=
            QStringLiteral("%1 %2 %3")
                .arg(entry.filePath(), QString::number(entry.size()), entry.lastModified().toString(Qt::ISODateWithMs));
    }
    state.sort();
    return state;
}

void start_program(QProcess &process, const QString &folder, const QString &arguments)
{
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral(MAIL_EXTRACT_PROGRAM), arguments.split(QLatin1Char(' '), Qt::SkipEmptyParts));
}

finished_program finish_program(QProcess &process)
{
    if (!process.waitForFinished(patience_milliseconds) || process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

finished_program run_program(const QString &folder, const QString &arguments)
{
    QProcess process;
    start_program(process, folder, arguments);
    return finish_program(process);
}

finished_program run_program_without_privileges(const QString &folder, const QString &arguments)
{
    unprivileged_process process;
    start_program(process, folder, arguments);
    return finish_program(process);
}
