// Working copies of source files: free names, copies that leave the source as it was, and what reads and walks a source
// that may be hostile.
#include "core/plugin_static_function.h"
#include "evidence/files.h"
#include "services/plugin_helper_functions.h"
#include "services/source_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using service = plugin_static_function;

namespace {

const QString caller = QStringLiteral("void working_copies_test()");

QByteArray content_of(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

struct stat status_of(const QString &path)
{
    struct stat status = {};
    ::lstat(path.toUtf8().constData(), &status);
    return status;
}

// Content aside, all that reading could leave behind in a file.
QString traces_of(const QString &path)
{
    const struct stat status = status_of(path);
    return QStringLiteral("%1.%2 %3.%4 %5.%6 %7 %8")
        .arg(status.st_atim.tv_sec)
        .arg(status.st_atim.tv_nsec)
        .arg(status.st_mtim.tv_sec)
        .arg(status.st_mtim.tv_nsec)
        .arg(status.st_ctim.tv_sec)
        .arg(status.st_ctim.tv_nsec)
        .arg(status.st_size)
        .arg(status.st_mode, 0, 8);
}

void write_source(const QString &path, const QByteArray &content)
{
    evidence::write_file(path, content);
    // Last read before it was changed: any reading would move that time, relatime or not.
    const timespec times[] = {{1400000000, 1}, {1425205230, 2}};
    ::utimensat(AT_FDCWD, path.toUtf8().constData(), times, 0);
    ::chmod(path.toUtf8().constData(), 0400);
}

} // namespace

class working_copies_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { service::set_cancel_extraction(false); }

    void free_names();
    void free_name_when_cancelled();
    void removed_folder();
    void copy_data();
    void copy();
    void second_copy();
    void nothing_to_copy();
    void walk();
    void standing_below();

private:
    QString at(const char *name) const { return folder->filePath(QString::fromUtf8(name)); }
    void make_link(const QString &target, const char *name) { QVERIFY(QFile::link(target, at(name))); }

    std::unique_ptr<QTemporaryDir> folder;
    plugin_helper_functions helper{nullptr};
};

void working_copies_test::init()
{
    folder = std::make_unique<QTemporaryDir>();
    evidence::make_folder(at("source"));
    helper.set_adhoc_parent_path(at("copies/of mail/"));
}

void working_copies_test::free_names()
{
    const auto free_name = [this](const char *name) {
        return service::get_available_file(QString::fromUtf8(name), at("made/as needed"), caller);
    };
    QCOMPARE(free_name("/elsewhere/Envelope Index"), QStringLiteral("Envelope Index"));
    QVERIFY(QFileInfo(at("made/as needed")).isDir());
    evidence::write_file(at("made/as needed/Envelope Index "), ""); // names are compared without blanks around
    QCOMPARE(free_name("Envelope Index"), QStringLiteral("1_Envelope Index"));
    evidence::make_folder(at("made/as needed/1_Envelope Index"));
    QCOMPARE(free_name("Envelope Index"), QStringLiteral("2_Envelope Index"));
    QCOMPARE(free_name("envelope index"), QStringLiteral("envelope index"));
    evidence::write_file(at("made/as needed/.hidden"), "");
    QCOMPARE(free_name(".hidden"), QStringLiteral("1_.hidden"));
    evidence::make_folder(at("made/as needed/folder"));
    evidence::write_file(at("made/as needed/folder/deep"), "");
    QCOMPARE(free_name("deep"), QStringLiteral("deep"));

    QVERIFY(service::is_file_exist_in_dir(at("made/as needed"), QStringLiteral(" Envelope Index"), caller));
    QVERIFY(!service::is_file_exist_in_dir(at("missing"), QStringLiteral("Envelope Index"), caller));
}

void working_copies_test::free_name_when_cancelled()
{
    evidence::write_file(at("source/a"), "");
    service::set_cancel_extraction(true);
    QCOMPARE(service::get_available_file(QStringLiteral("a"), at("source"), caller), QString());
    QVERIFY(!service::is_file_exist_in_dir(at("source"), QStringLiteral("a"), caller));
}

void working_copies_test::removed_folder()
{
    evidence::make_folder(at("copies/.hidden/deeper"));
    evidence::write_file(at("copies/.hidden/deeper/.file"), "x");
    evidence::write_file(at("source/kept"), "kept");
    make_link(at("source"), "copies/link to a folder");
    make_link(at("source/kept"), "copies/link to a file");
    make_link(at("missing"), "copies/.hidden/broken link");
    make_link(at("copies"), "copies/.hidden/circle");
    QCOMPARE(::mkfifo(at("copies/pipe").toUtf8().constData(), 0600), 0);
    service::remove_directory(at("copies"));
    QVERIFY(!QFileInfo::exists(at("copies")));
    QCOMPARE(content_of(at("source/kept")), QByteArray("kept"));

    service::remove_directory(at("missing"));
    service::remove_directory(QString()); // not the current folder
    QVERIFY(QDir::current().exists());
}

void working_copies_test::copy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("beside"); // suffixes of the files beside it
    QTest::newRow("nothing beside") << QStringLiteral("Envelope Index") << QStringList();
    QTest::newRow("write-ahead file alone") << QStringLiteral("Übersicht") << QStringList{QStringLiteral("-wal")};
    QTest::newRow("both") << QStringLiteral("a b.sqlite")
                          << QStringList{QStringLiteral("-shm"), QStringLiteral("-wal")};
}

void working_copies_test::copy()
{
    QFETCH(QString, name);
    QFETCH(QStringList, beside);
    const QString source = at("source/") + name;
    beside.prepend(QString());
    QStringList traces;
    for (const QString &suffix : beside) {
        write_source(source + suffix, "content" + suffix.toUtf8() + QByteArray(3 << 20, '\0'));
        traces.append(traces_of(source + suffix));
    }
    const QString copy = helper.get_adhoc_path_for_database(source);
    QCOMPARE(copy, at("copies/of mail/") + name);
    QCOMPARE(QDir(at("copies/of mail")).entryList(QDir::Files).size(), beside.size());
    for (int i = 0; i < beside.size(); ++i) {
        QCOMPARE(traces_of(source + beside.at(i)), traces.at(i));
        QCOMPARE(status_of(copy + beside.at(i)).st_mode & 0777, 0600U); // SQLite writes to it
        QVERIFY(content_of(copy + beside.at(i)) == content_of(source + beside.at(i)));
    }
}

void working_copies_test::second_copy()
{
    write_source(at("source/db"), "first");
    QCOMPARE(helper.get_adhoc_path_for_database(at("source/db")), at("copies/of mail/db"));
    evidence::make_folder(at("source/other"));
    write_source(at("source/other/db"), "second");
    write_source(at("source/other/db-wal"), "second wal");
    QCOMPARE(helper.get_adhoc_path_for_database(at("source/other/db")), at("copies/of mail/1_db"));
    QCOMPARE(content_of(at("copies/of mail/db")), QByteArray("first"));
    QCOMPARE(content_of(at("copies/of mail/1_db")), QByteArray("second"));
    QCOMPARE(content_of(at("copies/of mail/1_db-wal")), QByteArray("second wal"));
    QVERIFY(!QFile::exists(at("copies/of mail/db-wal")));
    // A regular file has nothing beside it, whatever stands there.
    QCOMPARE(helper.get_adhoc_path_for_regular_file(at("source/other/db")), at("copies/of mail/2_db"));
    QVERIFY(!QFile::exists(at("copies/of mail/2_db-wal")));
}

void working_copies_test::nothing_to_copy()
{
    QCOMPARE(helper.get_adhoc_path_for_database(QStringLiteral("  ")), QString());
    QCOMPARE(::mkfifo(at("source/pipe").toUtf8().constData(), 0600), 0);
    QCOMPARE(::mkfifo(at("source/db-wal").toUtf8().constData(), 0600), 0);
    write_source(at("source/db"), "content");
    make_link(at("source/db"), "source/db-shm");
    for (const char *name : {"missing", "pipe", "."}) { // none is waited for, and none leaves a copy
        QVERIFY(!QFileInfo(helper.get_adhoc_path_for_database(at("source/") + QString::fromUtf8(name))).isFile());
    }
    helper.get_adhoc_path_for_database(at("source/db"));
    QCOMPARE(QDir(at("copies/of mail")).entryList(QDir::Files | QDir::System),
             QStringList{QStringLiteral("db")}); // links and pipes beside it stay behind
}

void working_copies_test::walk()
{
    for (const char *path : {"source/a/deep/er", "source/b", "source/.hidden/in", "source/ü"}) {
        evidence::make_folder(at(path));
        evidence::write_file(at(path) + QStringLiteral("/file"), "");
    }
    evidence::write_file(at("source/a/.hidden"), "");
    make_link(at("source/a"), "source/b/link");
    make_link(at("source"), "link");

    QStringList met;
    folder_walk entries(at("source"), links::refuse);
    while (entries.next()) {
        const QString path = QString::fromUtf8(entries.relative_path());
        const QString parent = evidence::folder_of(path);
        // Depth first: what was met before is the folder itself or stands below it.
        const QString before = met.isEmpty() ? QString() : met.last() + QLatin1Char('/');
        QVERIFY2(parent.isEmpty() || before.startsWith(parent + QLatin1Char('/')), qPrintable(path));
        met.append(path);
    }
    met.sort();
    QCOMPARE(met.join(QLatin1Char(' ')), QStringLiteral("a a/deep a/deep/er a/deep/er/file b b/file b/link ü ü/file"));

    QVERIFY(!folder_walk(at("link"), links::refuse).is_open());
    QVERIFY(!folder_walk(at("link/"), links::refuse).is_open());
    QVERIFY(folder_walk(at("link"), links::follow).is_open());
    QVERIFY(!folder_walk(at("source/b/file"), links::follow).is_open());
    QVERIFY(!folder_walk(at("missing"), links::follow).next());
}

void working_copies_test::standing_below()
{
    evidence::make_folder(at("source/in"));
    evidence::make_folder(at("source2"));
    evidence::write_file(at("source2/secret"), "");
    make_link(at("source2"), "source/out");
    make_link(at("source/in"), "source2/back");
    QVERIFY(stands_below(at("source"), at("source/in")));
    QVERIFY(stands_below(at("source/"), at("source2/back"))); // where it leads is what counts
    QVERIFY(stands_below(QStringLiteral("/"), at("source/in")));
    QVERIFY(!stands_below(at("source"), at("source/out/secret")));
    QVERIFY(!stands_below(at("source"), at("source/../source2/secret")));
    QVERIFY(!stands_below(at("source"), at("source2"))); // the same beginning is not the same folder
    QVERIFY(!stands_below(at("source"), at("source/missing")));
    QVERIFY(!stands_below(at("missing"), at("source")));
}

QTEST_GUILESS_MAIN(working_copies_test)
#include "working_copies_test.moc"
