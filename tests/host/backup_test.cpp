// iOS device backups as mail-extract reads them: which file of the backup is taken for which of the device's, whatever
// the manifest says.

#include "evidence/files.h"
#include "evidence/property_list_file.h"
#include "evidence/sample_ios_backup.h"
#include "tests/host/samples.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

using evidence::ios_backup;
using evidence::ios_backup_layout;

namespace {

const QString decoy_name = QStringLiteral("0123456789abcdef0123456789ABCDEF01234567");

QByteArray settings_with_vip(const QString &name)
{
    using evidence::property_list_dictionary;
    const QVariantList vips{property_list_dictionary{{"displayName", name},
                                                     {"emailAddresses", QStringList{QStringLiteral("a@b.example")}}}};
    return evidence::property_list_bytes(property_list_dictionary{{"mailVips", vips}},
                                         evidence::property_list_form::xml);
}

QString vip_file(const QString &root, ios_backup_layout layout)
{
    return root + evidence::ios_backup_place(QLatin1String(evidence::ios_search_settings_path), layout);
}

void change_manifest_database(const QString &root, const char *statement)
{
    const QString path = root + QLatin1String("Manifest.db");
    sqlite3 *opened = nullptr;
    QCOMPARE(sqlite3_open(path.toUtf8().constData(), &opened), SQLITE_OK);
    const evidence::sqlite_connection connection(opened);
    QCOMPARE(sqlite3_exec(opened, statement, nullptr, nullptr, nullptr), SQLITE_OK);
}

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Out: whether the file or folder was moved out of the backup with a link left in its place.
bool move_out(const QString &path, const QString &outside)
{
    return QDir().rename(path, outside) && QFile::link(outside, path);
}

struct backup_case
{
    const char *name;
    ios_backup_layout layout;
    const char *vip; ///< of the file that is to be read; empty: none is
    bool is_warned;
    void (*spoil)(const QString &root, const QString &outside);
};

constexpr auto newer = ios_backup_layout::manifest_database;
constexpr auto older = ios_backup_layout::manifest_mbdb;
constexpr auto bare = ios_backup_layout::no_manifest;
using place = const QString &;

const backup_case cases[] = {
    {"Manifest.db", newer, "Anna", false, [](place, place) {}},
    {"Manifest.mbdb", older, "Anna", false, [](place, place) {}},
    {"no manifest, folders", bare, "Anna", false, [](place, place) {}},
    {"no manifest, flat", older, "Anna", false,
     [](place root, place) {
         for (const char *file : {"Manifest.mbdb", "Manifest.plist", "Info.plist", "Status.plist"}) {
             QVERIFY(QFile::remove(root + QLatin1String(file)));
         }
     }},
    {"Manifest.db names another file", newer, "Ben", false,
     [](place root, place) {
         change_manifest_database(root, qPrintable(QStringLiteral("UPDATE Files SET fileID = '%1'").arg(decoy_name)));
     }},
    {"Manifest.db names a missing file", newer, "Anna", true,
     [](place root, place) {
         change_manifest_database(root, "UPDATE Files SET fileID = 'ffffffffffffffffffffffffffffffffffffffff'");
     }},
    {"Manifest.db does not list the file", newer, "Anna", true,
     [](place root, place) { change_manifest_database(root, "UPDATE Files SET domain = 'homedomain'"); }},
    {"neither the manifest nor the backup has the file", newer, "", false,
     [](place root, place) {
         change_manifest_database(root, "DELETE FROM Files WHERE relativePath LIKE '%searchd%'; INSERT INTO Files "
                                        "(fileID, domain) VALUES ('', 'x')");
         QVERIFY(QFile::remove(vip_file(root, newer)));
     }},
    {"Manifest.db leads out", newer, "Anna", true,
     [](place root, place) { change_manifest_database(root, "UPDATE Files SET fileID = '../../outside'"); }},
    {"Manifest.db has no entry", newer, "Anna", true,
     [](place root, place) { change_manifest_database(root, "DELETE FROM Files"); }},
    {"Manifest.db has entries without end", newer, "Anna", true,
     [](place root, place) {
         change_manifest_database(root, "DROP TABLE Files; CREATE VIEW Files AS WITH RECURSIVE n(i) AS (SELECT 1 UNION "
                                        "ALL SELECT i + 1 FROM n) SELECT '' fileID, '' domain, '' relativePath FROM n");
     }},
    {"Manifest.db is empty", newer, "Anna", true,
     [](place root, place) { QVERIFY(write_file(root + QLatin1String("Manifest.db"), QByteArray())); }},
    {"Manifest.db is no database", newer, "Anna", true,
     [](place root, place) { QVERIFY(write_file(root + QLatin1String("Manifest.db"), QByteArray(9000, 'x'))); }},
    {"Manifest.db is a pipe", newer, "Anna", true,
     [](place root, place) {
         const QString path = root + QLatin1String("Manifest.db");
         QVERIFY(QFile::remove(path) && ::mkfifo(path.toUtf8().constData(), 0644) == 0);
     }},
    {"Manifest.db lies elsewhere", newer, "Anna", true,
     [](place root, place outside) { QVERIFY(move_out(root + QLatin1String("Manifest.db"), outside)); }},
    {"Manifest.mbdb is cut off", older, "Anna", true,
     [](place root, place) {
         const QString path = root + QLatin1String("Manifest.mbdb");
         QVERIFY(write_file(path, content_of(path).chopped(3)));
     }},
    {"Manifest.mbdb lies about a length", older, "Anna", true,
     [](place root, place) {
         QVERIFY(write_file(root + QLatin1String("Manifest.mbdb"), QByteArray("mbdb\5\0\xff\xfeHomeDomain", 18)));
     }},
    {"Manifest.mbdb has no record", older, "Anna", true,
     [](place root, place) { QVERIFY(write_file(root + QLatin1String("Manifest.mbdb"), QByteArray("mbdb\5\0", 6))); }},
    {"Manifest.mbdb does not list the file", older, "Anna", true,
     [](place root, place) {
         const QString path = root + QLatin1String("Manifest.mbdb");
         QVERIFY(write_file(path, content_of(path).replace("searchd", "Searchd")));
     }},
    {"Manifest.mbdb calls the file a folder", older, "Anna", true,
     [](place root, place) {
         const QString path = root + QLatin1String("Manifest.mbdb");
         QVERIFY(write_file(path, content_of(path).replace(QByteArray("\x81\xa4"), QByteArray("\x41\xed"))));
     }},
    {"the file lies elsewhere", newer, "", true,
     [](place root, place outside) { QVERIFY(move_out(vip_file(root, newer), outside)); }},
    {"the folder lies elsewhere", newer, "", true,
     [](place root, place outside) { QVERIFY(move_out(evidence::folder_of(vip_file(root, newer)), outside)); }},
};

} // namespace

Q_DECLARE_METATYPE(const backup_case *)

class backup_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void files_are_found_data();
    void files_are_found();
    void whole_backups_are_read_data();
    void whole_backups_are_read();
    void encrypted_backups_are_refused();

private:
    finished_program run(const QString &arguments) const { return run_program(folder.path(), arguments); }

    QTemporaryDir folder;
};

void backup_test::files_are_found_data()
{
    QTest::addColumn<const backup_case *>("given");
    for (const backup_case &each : cases) {
        QTest::newRow(each.name) << &each;
    }
}

// The backup holds Anna's file under the name that its path gives, and Ben's under one that no path gives.
void backup_test::files_are_found()
{
    QFETCH(const backup_case *, given);
    const QString root = folder.filePath(QStringLiteral("found/"));
    const QString outside = folder.filePath(QStringLiteral("outside"));
    for (const QString &older_run : {root, outside, folder.filePath(QStringLiteral("out"))}) {
        QFile::remove(older_run);
        QDir(older_run).removeRecursively();
    }
    evidence::ios_backup_options options;
    options.layout = given->layout;
    ios_backup backup(root, options);
    backup.add(evidence::ios_search_settings_path, settings_with_vip(QStringLiteral("Anna")));
    backup.finish();
    QVERIFY(write_file(root + QLatin1String("01/") + decoy_name, settings_with_vip(QStringLiteral("Ben"))));
    given->spoil(root, outside);
    const QStringList before = state_of(root);

    const finished_program program = run(QStringLiteral("run found --tabs vip_contacts --result out"));
    QVERIFY2(program.output.contains(QLatin1String("Scheme: iOS_UID (iOS Backup)")), qPrintable(program.errors));
    QCOMPARE(program.exit_code, 0);
    QCOMPARE(program.errors.count(QLatin1Char('\n')), given->is_warned ? 1 : 0);
    QCOMPARE(program.errors.startsWith(QLatin1String("mail-extract: warning: \"Manifest.")), given->is_warned);
    QCOMPARE(state_of(root), before);
    QCOMPARE(QDir(folder.filePath(QStringLiteral("out"))).entryList(QDir::AllEntries | QDir::NoDotAndDotDot),
             (QStringList{QStringLiteral("Artifacts_Result"), QStringLiteral("mail-extract.log")}));

    const QByteArray rows = run(QStringLiteral("show out vip_contacts --jsonl")).output.toUtf8();
    QCOMPARE(rows.count('\n'), *given->vip == '\0' ? 0 : 1);
    QCOMPARE(QJsonDocument::fromJson(rows).object().value(QLatin1String("vip_name")).toString(),
             QString::fromLatin1(given->vip));
}

void backup_test::whole_backups_are_read_data()
{
    QTest::addColumn<int>("layout");
    QTest::newRow("Manifest.db") << static_cast<int>(newer);
    QTest::newRow("Manifest.mbdb") << static_cast<int>(older);
    QTest::newRow("no manifest") << static_cast<int>(bare);
}

// The manifest's own rows stand in its write-ahead log alone.
void backup_test::whole_backups_are_read()
{
    QFETCH(int, layout);
    evidence::sample_ios_backup_options options;
    options.recent_count = 20;
    options.backup.layout = static_cast<ios_backup_layout>(layout);
    options.backup.storage = evidence::sqlite_storage::wal_without_shm;
    const QString name = QStringLiteral("whole%1").arg(layout);
    evidence::write_sample_ios_backup(folder.filePath(name), options);
    const QStringList before = state_of(folder.filePath(name));

    const finished_program program = run(QStringLiteral("run %1 --result %1_out").arg(name));
    QCOMPARE(program.errors, QString());
    QCOMPARE(program.exit_code, 0);
    const QStringList words = program.output.split(QRegularExpression(QStringLiteral("\\s+")));
    for (const auto &[tab, rows] :
         {std::pair("recents", 20), {"accounts", 3}, {"vip_contacts", 12}, {"preferences", 14}}) {
        const int at = words.lastIndexOf(QLatin1String(tab));
        QCOMPARE(words.value(at + 1), QString::number(rows));
    }
    QCOMPARE(state_of(folder.filePath(name)), before);
}

void backup_test::encrypted_backups_are_refused()
{
    evidence::ios_backup_options options;
    options.is_encrypted = true;
    ios_backup backup(folder.filePath(QStringLiteral("secret")), options);
    backup.add(evidence::ios_search_settings_path, settings_with_vip(QStringLiteral("Anna")));
    backup.finish();
    const finished_program program = run(QStringLiteral("run secret --result secret_out"));
    QCOMPARE(program.exit_code, 2);
    QCOMPARE(program.output, QString());
    QCOMPARE(program.errors.count(QLatin1Char('\n')), 1);
    QVERIFY2(program.errors.contains(QLatin1String("is encrypted")), qPrintable(program.errors));
    QVERIFY(!QDir(folder.filePath(QStringLiteral("secret_out"))).exists());
}

QTEST_GUILESS_MAIN(backup_test)
#include "backup_test.moc"
