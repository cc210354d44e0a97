// iOS device backups as mail-extract reads them: which file of the backup is taken for which of the device's, whatever
// the manifest says.

#include "evidence/property_list_file.h"
#include "evidence/sample_ios_backup.h"
#include "tests/host/samples.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

#include <functional>

using evidence::ios_backup;
using evidence::ios_backup_layout;

namespace {

QByteArray settings_with_vip(const QString &name)
{
    using evidence::property_list_dictionary;
    const QVariantList vips{
        property_list_dictionary{{"displayName", name}, {"emailAddresses", QStringList{"a@b.example"_s}}}};
    return evidence::property_list_bytes(property_list_dictionary{{"mailVips", vips}},
                                         evidence::property_list_form::xml);
}

QString vip_file(const QString &root, ios_backup_layout layout)
{
    return root + evidence::ios_backup_place(QLatin1String(evidence::ios_search_settings_path), layout);
}

// What is done to a backup, in: its root and a path outside of it.
using spoiling = std::function<void(const QString &root, const QString &outside)>;

struct backup_case
{
    const char *name;
    ios_backup_layout layout;
    const char *vip; ///< of the file that is to be read; empty: none is
    bool is_warned;
    spoiling spoil;
};

spoiling manifest_database_after(const char *statement)
{
    return [=](const QString &root, auto) {
        sqlite3 *opened = nullptr;
        QCOMPARE(sqlite3_open((root + "Manifest.db"_s).toUtf8().constData(), &opened), SQLITE_OK);
        const evidence::sqlite_connection connection(opened);
        QCOMPARE(sqlite3_exec(opened, statement, nullptr, nullptr, nullptr), SQLITE_OK);
    };
}

spoiling manifest_with(const char *name, const QByteArray &content)
{
    return [=](const QString &root, auto) { write_file(root + QString::fromLatin1(name), content); };
}

spoiling manifest_mbdb_with(const QByteArray &replaced, const QByteArray &by)
{
    return [=](const QString &root, auto) {
        write_file(root + "Manifest.mbdb"_s, content_of(root + "Manifest.mbdb"_s).replace(replaced, by));
    };
}

// A link is left in the place of the file or folder.
void move_out(const QString &path, const QString &outside)
{
    QVERIFY(QDir().rename(path, outside) && QFile::link(outside, path));
}

constexpr auto newer = ios_backup_layout::manifest_database;
constexpr auto older = ios_backup_layout::manifest_mbdb;
constexpr auto bare = ios_backup_layout::no_manifest;
using place = const QString &;

const backup_case cases[] = {
    {"Manifest.db", newer, "Anna", false, {}},
    {"Manifest.mbdb", older, "Anna", false, {}},
    {"no manifest, folders", bare, "Anna", false, {}},
    {"no manifest, flat", older, "Anna", false,
     [](place root, place) {
         for (const char *file : {"Manifest.mbdb", "Manifest.plist", "Info.plist", "Status.plist"}) {
             QVERIFY(QFile::remove(root + QString::fromLatin1(file)));
         }
     }},
    {"Manifest.db names another file", newer, "Ben", false,
     manifest_database_after("UPDATE Files SET fileID = '0123456789abcdef0123456789ABCDEF01234567'")},
    {"Manifest.db names a missing file", newer, "Anna", true,
     manifest_database_after("UPDATE Files SET fileID = 'ffffffffffffffffffffffffffffffffffffffff'")},
    {"Manifest.db does not list the file", newer, "Anna", true,
     manifest_database_after("UPDATE Files SET domain = 'homedomain'")},
    {"neither the manifest nor the backup has the file", newer, "", false,
     [](place root, place outside) {
         manifest_database_after("DELETE FROM Files WHERE relativePath LIKE '%searchd%'; INSERT INTO Files "
                                 "(fileID, domain) VALUES ('', 'x')")(root, outside);
         QVERIFY(QFile::remove(vip_file(root, newer)));
     }},
    {"Manifest.db leads out", newer, "Anna", true,
     manifest_database_after("UPDATE Files SET fileID = '../../outside'")},
    {"Manifest.db has no entry", newer, "Anna", true, manifest_database_after("DELETE FROM Files")},
    {"Manifest.db has entries without end", newer, "Anna", true,
     manifest_database_after("DROP TABLE Files; CREATE VIEW Files AS WITH RECURSIVE n(i) AS (SELECT 1 UNION "
                             "ALL SELECT i + 1 FROM n) SELECT '' fileID, '' domain, '' relativePath FROM n")},
    {"Manifest.db is empty", newer, "Anna", true, manifest_with("Manifest.db", "")},
    {"Manifest.db is no database", newer, "Anna", true, manifest_with("Manifest.db", QByteArray(9000, 'x'))},
    {"Manifest.db is a pipe", newer, "Anna", true,
     [](place root, place) {
         QVERIFY(QFile::remove(root + "Manifest.db"_s));
         make_pipe(root + "Manifest.db"_s);
     }},
    {"Manifest.db lies elsewhere", newer, "Anna", true,
     [](place root, place outside) { move_out(root + "Manifest.db"_s, outside); }},
    {"Manifest.mbdb is cut off", older, "Anna", true,
     [](place root, place) { write_file(root + "Manifest.mbdb"_s, content_of(root + "Manifest.mbdb"_s).chopped(3)); }},
    {"Manifest.mbdb lies about a length", older, "Anna", true,
     manifest_with("Manifest.mbdb", QByteArray("mbdb\5\0\xff\xfeHomeDomain", 18))},
    {"Manifest.mbdb has no record", older, "Anna", true, manifest_with("Manifest.mbdb", QByteArray("mbdb\5\0", 6))},
    {"Manifest.mbdb does not list the file", older, "Anna", true, manifest_mbdb_with("searchd", "Searchd")},
    {"Manifest.mbdb calls the file a folder", older, "Anna", true, manifest_mbdb_with("\x81\xa4", "\x41\xed")},
    {"the file lies elsewhere", newer, "", true,
     [](place root, place outside) { move_out(vip_file(root, newer), outside); }},
    {"the folder lies elsewhere", newer, "", true,
     [](place root, place outside) { move_out(evidence::folder_of(vip_file(root, newer)), outside); }},
};

} // namespace

Q_DECLARE_METATYPE(const backup_case *)

class backup_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void files_are_found_data()
    {
        QTest::addColumn<const backup_case *>("given");
        for (const backup_case &each : cases) {
            QTest::newRow(each.name) << &each;
        }
    }

    // The backup holds Anna's file under the name that its path gives, and Ben's under one that no path gives.
    void files_are_found()
    {
        QFETCH(const backup_case *, given);
        const QString root = folder.filePath("found/"_s);
        const QString outside = folder.filePath("outside"_s);
        for (const QString &older_run : {root, outside, folder.filePath("out"_s)}) {
            QFile::remove(older_run);
            QDir(older_run).removeRecursively();
        }
        evidence::ios_backup_options options;
        options.layout = given->layout;
        ios_backup backup(root, options);
        backup.add(evidence::ios_search_settings_path, settings_with_vip("Anna"_s));
        backup.finish();
        write_file(root + "01/0123456789abcdef0123456789ABCDEF01234567"_s, settings_with_vip("Ben"_s));
        if (given->spoil) {
            given->spoil(root, outside);
        }
        const QStringList before = state_of(root);

        const finished_program program = run("run found --tabs vip_contacts --result out"_s);
        QVERIFY2(program.output.contains("Scheme: iOS_UID (iOS Backup)"_s), qPrintable(program.errors));
        QCOMPARE(program.errors.count(QLatin1Char('\n')), given->is_warned ? 1 : 0);
        QCOMPARE(program.errors.startsWith("mail-extract: warning: \"Manifest."_s), given->is_warned);
        QCOMPARE(state_of(root), before);
        QCOMPARE(QDir(folder.filePath("out"_s)).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
                 (QStringList{"Artifacts_Result"_s, "mail-extract.log"_s}));

        const QByteArray rows = run("show out vip_contacts --jsonl"_s).output.toUtf8();
        QCOMPARE(rows.count('\n'), *given->vip == '\0' ? 0 : 1);
        QCOMPARE(QJsonDocument::fromJson(rows).object().value("vip_name"_s).toString(),
                 QString::fromLatin1(given->vip));
    }

    // The manifest's own rows stand in its write-ahead log alone.
    void whole_backups_are_read()
    {
        for (const auto &[name, layout] : {std::pair("newer"_s, newer), {"older"_s, older}, {"bare"_s, bare}}) {
            evidence::sample_ios_backup_options options;
            options.recent_count = 20;
            options.backup.layout = layout;
            options.backup.storage = evidence::sqlite_storage::wal_without_shm;
            evidence::write_sample_ios_backup(folder.filePath(name), options);
            const QStringList before = state_of(folder.filePath(name));

            const finished_program program = run("run %1 --result %1_out"_s.arg(name));
            QCOMPARE(program.errors, QString());
            for (const char *rows : {"recents +20", "accounts +3", "vip_contacts +12", "preferences +14"}) {
                QVERIFY2(program.output.contains(QRegularExpression("\n  %1\n"_s.arg(QString::fromLatin1(rows)))),
                         rows);
            }
            QCOMPARE(state_of(folder.filePath(name)), before);
        }
    }

    void closed_files_are_told()
    {
        const QString root = folder.filePath("closed/"_s);
        ios_backup backup(root);
        backup.add(evidence::ios_search_settings_path, settings_with_vip("Anna"_s));
        backup.finish();
        constexpr QFile::Permissions everything(0x7777);
        QVERIFY(QFile::setPermissions(folder.path(), everything) && QDir(folder.path()).mkdir("open"_s));
        QVERIFY(QFile::setPermissions(folder.filePath("open"_s), everything));
        if (run_program_without_privileges(folder.path(), "--version"_s).exit_code != 0) {
            QSKIP("the program stands in a folder that is closed to other users");
        }
        const QString closed = QFileInfo(vip_file(root, newer)).path();
        QVERIFY(QFile::setPermissions(closed, QFile::Permissions()));
        const finished_program program = run_program_without_privileges(folder.path(), "run closed --result open"_s);
        QVERIFY(QFile::setPermissions(closed, everything));
        QCOMPARE(program.exit_code, 1);
        QVERIFY2(program.output.contains(closed + ": Permission denied\nIncomplete: possibly every table\n"_s),
                 qPrintable(program.output));
    }

    void encrypted_backups_are_refused()
    {
        evidence::ios_backup_options options;
        options.is_encrypted = true;
        ios_backup backup(folder.filePath("secret"_s), options);
        backup.add(evidence::ios_search_settings_path, settings_with_vip("Anna"_s));
        backup.finish();
        const finished_program program = run("run secret --result secret_out"_s, 2);
        QCOMPARE(program.output, QString());
        QCOMPARE(program.errors.count(QLatin1Char('\n')), 1);
        QVERIFY2(program.errors.contains("is encrypted"_s), qPrintable(program.errors));
        QVERIFY(!QDir(folder.filePath("secret_out"_s)).exists());
    }

private:
    finished_program run(const QString &arguments, int exit_code = 0) const
    {
        return run_program(folder.path(), arguments, exit_code);
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(backup_test)
#include "backup_test.moc"
