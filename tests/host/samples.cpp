#include "tests/host/samples.h"

#include "evidence/sample_ios_file_tree.h"
#include "evidence/sample_macos_mail_tree.h"

#include <QDateTime>
#include <QDirIterator>

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
    {"link_to_file", "file"},
    {"dangling", "nowhere"},
    {"mac/Users/escape", "/usr"},
    {"linked/Artifacts_Result/Mail/Mail.sqlite", "../../../ios/private/var/mobile/Library/Mail/Envelope Index"},
};

constexpr const char *shown_database =
    "CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), cc VARCHAR(1024), "
    "message_date_sent INTEGER, source_count_name VARCHAR(1024));"
    "CREATE TABLE recents(INT INTEGER PRIMARY KEY);"
    "INSERT INTO messages VALUES(1, 'a,\"b\"' || char(13, 10) || 'c', NULL, '1578307200', 'Source1'),"
    "(2, '', NULL, '600000000.5', 'Source2'), (3, char(27) || '[2J' || char(8238), NULL, 9e999, 'Source2');";

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

void make_samples(const QString &folder)
{
    const auto in_folder = [&folder](const char *path) { return folder + "/"_s + QString::fromLatin1(path); };
    evidence::sample_ios_file_tree_options options;
    options.message_count = sample_messages;
    evidence::write_sample_ios_file_tree(in_folder("ios"), options);
    evidence::sample_macos_mail_tree_options volume_options;
    volume_options.message_count = sample_messages;
    volume_options.storage = evidence::sqlite_storage::wal_only;
    evidence::write_sample_macos_mail_tree(in_folder("volume"), volume_options);
    for (const char *made : folders) {
        evidence::make_folder(in_folder(made));
    }
    for (const auto &[path, content] : files) {
        write_file(in_folder(path), content);
    }
    for (const auto &[path, target] : links) {
        QVERIFY(QFile::link(QString::fromLatin1(target), in_folder(path)));
    }
    make_database(in_folder("shown"), shown_database);
}

void write_file(const QString &path, const QByteArray &content)
{
    evidence::make_folder(evidence::folder_of(path));
    evidence::write_file(path, content);
}

void make_database(const QString &result_folder, const char *script)
{
    evidence::sqlite_file database(result_folder + "/Artifacts_Result/Mail/Mail.sqlite"_s);
    database.run(QString::fromUtf8(script));
    database.finish();
}

QStringList state_of(const QString &folder)
{
    QStringList state;
    QDirIterator walk(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                      QDirIterator::Subdirectories);
    while (walk.hasNext()) {
        const QFileInfo entry(walk.next());
        state += "%1 %2 %3"_s.arg(entry.filePath(), QString::number(entry.size()),
                                  entry.lastModified().toString(Qt::ISODateWithMs));
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

finished_program run_program(const QString &folder, const QString &arguments, int exit_code)
{
    QProcess process;
    start_program(process, folder, arguments);
    const finished_program program = finish_program(process);
    if (program.exit_code != exit_code) {
        const QString told = "%1: exit code %2\n"_s.arg(arguments).arg(program.exit_code);
        QTest::qFail(qPrintable(told + program.output + program.errors), __FILE__, __LINE__);
    }
    return program;
}

finished_program run_program_without_privileges(const QString &folder, const QString &arguments)
{
    unprivileged_process process;
    start_program(process, folder, arguments);
    return finish_program(process);
}
