// Working copies of source files: free names, copies that leave the source as it was, and what reads and walks a source
// that may be hostile.
#include "services/plugin_helper_functions.h"
#include "services/source_files.h"
#include "tests/services/service_test.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

class test_working_copies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { service::set_cancel_extraction(false); }

    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        evidence::make_folder(at("source/other"));
        helper.set_adhoc_parent_path(at("copies/of mail/"));
    }

    void free_names()
    {
        const QString parent = at("made/as needed/");
        const auto free_name = [&parent](const QString &name) {
            return service::get_available_file(name, parent, "void caller()"_s);
        };
        QCOMPARE(free_name("/elsewhere/Envelope Index"_s), "Envelope Index"_s);
        QVERIFY(QFileInfo(parent).isDir());
        evidence::write_file(parent + "Envelope Index "_s, ""); // names are compared without blanks around
        QCOMPARE(free_name("Envelope Index"_s), "1_Envelope Index"_s);
        evidence::make_folder(parent + "1_Envelope Index/deep"_s);
        QCOMPARE(free_name("Envelope Index"_s), "2_Envelope Index"_s);
        QCOMPARE(free_name("envelope index"_s), "envelope index"_s);
        QCOMPARE(free_name("deep"_s), "deep"_s);
        evidence::write_file(parent + ".hidden"_s, "");
        QCOMPARE(free_name(".hidden"_s), "1_.hidden"_s);

        QVERIFY(service::is_file_exist_in_dir(parent, " Envelope Index"_s, QString()));
        QVERIFY(!service::is_file_exist_in_dir(at("missing"), "Envelope Index"_s, QString()));
        service::set_cancel_extraction(true);
        QVERIFY(!service::is_file_exist_in_dir(parent, "Envelope Index"_s, QString()));
        QCOMPARE(free_name("deep"_s), QString());
    }

    void removed_folder()
    {
        evidence::make_folder(at("copies/.hidden/deeper"));
        evidence::write_file(at("copies/.hidden/deeper/.file"), "x");
        evidence::write_file(at("source/kept"), "kept");
        QVERIFY(QFile::link(at("source"), at("copies/link to a folder")));
        QVERIFY(QFile::link(at("source/kept"), at("copies/link to a file")));
        QVERIFY(QFile::link(at("missing"), at("copies/.hidden/broken link")));
        QVERIFY(QFile::link(at("copies"), at("copies/.hidden/circle")));
        make_pipe(at("copies/pipe"));
        service::remove_directory(at("copies"));
        QVERIFY(!QFileInfo::exists(at("copies")));
        QVERIFY(QFile::link(at("source"), at("copies")));
        service::remove_directory(at("copies/")); // the link goes, what it leads to stays
        QVERIFY(!QFileInfo::exists(at("copies")));
        QCOMPARE(content_of(at("source/kept")), QByteArray("kept"));
    }

    void copies()
    {
        const QByteArray large(3 << 20, 'x');
        evidence::write_file(at("source/Übersicht"), large + "1");
        evidence::write_file(at("source/Übersicht-shm"), "shm");
        evidence::write_file(at("source/Übersicht-wal"), large + "wal");
        evidence::write_file(at("source/other/Übersicht"), "2");
        evidence::write_file(at("source/other/Übersicht-wal"), "2 wal");
        QVERIFY(QFile::setPermissions(at("source/other/Übersicht"), QFile::ReadOwner));
        const tree_snapshot source(at("source"));
        QCOMPARE(helper.get_adhoc_path_for_database(at("source/Übersicht")), at("copies/of mail/Übersicht"));
        QCOMPARE(helper.get_adhoc_path_for_database(at("source/other/Übersicht")), at("copies/of mail/1_Übersicht"));
        QCOMPARE(helper.get_adhoc_path_for_regular_file(at("source/Übersicht-shm")),
                 at("copies/of mail/1_Übersicht-shm"));
        QCOMPARE(source.changes(), QString());

        const QPair<const char *, QByteArray> expected[] = {
            {"Übersicht", large + "1"}, {"Übersicht-shm", "shm"},   {"Übersicht-wal", large + "wal"},
            {"1_Übersicht", "2"},       {"1_Übersicht-shm", "shm"}, {"1_Übersicht-wal", "2 wal"}};
        for (const auto &[name, content] : expected) {
            const QString copy = at("copies/of mail/") + QString::fromUtf8(name);
            QVERIFY2(content_of(copy) == content, name);
            QVERIFY2(QFile::permissions(copy) & QFile::WriteOwner, name); // SQLite writes to it
        }
        QCOMPARE(QDir(at("copies/of mail")).entryList(QDir::Files).size(), 6);
    }

    void nothing_to_copy()
    {
        QCOMPARE(helper.get_adhoc_path_for_database("  "_s), QString());
        make_pipe(at("source/pipe"));
        make_pipe(at("source/db-wal"));
        evidence::write_file(at("source/db"), "content");
        QVERIFY(QFile::link(at("source/db"), at("source/db-shm")));
        for (const char *name : {"missing", "pipe", "other"}) { // none is waited for, and none leaves a copy
            QVERIFY(!QFileInfo::exists(helper.get_adhoc_path_for_database(at("source/") + QString::fromUtf8(name))));
        }
        helper.get_adhoc_path_for_database(at("source/db")); // what stands beside it is no file of its own
        QCOMPARE(QDir(at("copies/of mail")).entryList(QDir::Files | QDir::System), QStringList{"db"_s});
    }

    // A database that cannot be copied leaves no log behind that the next one of its name would take for its own.
    void log_without_database()
    {
        evidence::make_folder(at("source/first/db"));
        evidence::write_file(at("source/first/db-wal"), "of the first");
        evidence::make_folder(at("source/second"));
        evidence::write_file(at("source/second/db"), "second");
        helper.get_adhoc_path_for_database(at("source/first/db"));
        QVERIFY(!QFileInfo::exists(at("copies/of mail/db-wal")));
        const QString second = helper.get_adhoc_path_for_database(at("source/second/db"));
        QCOMPARE(content_of(second), QByteArray("second"));
        QVERIFY(!QFileInfo::exists(second + "-wal"_s));
    }

    void holes_stay_holes()
    {
        evidence::write_file(at("source/db"), "begin");
        QVERIFY(QFile::resize(at("source/db"), Q_INT64_C(1) << 40)); // a terabyte, on no disk
        const QString copy = helper.get_adhoc_path_for_regular_file(at("source/db"));
        QCOMPARE(QFileInfo(copy).size(), Q_INT64_C(1) << 40);
        QFile begin(copy);
        QVERIFY(begin.open(QIODevice::ReadOnly));
        QCOMPARE(begin.read(6), QByteArray("begin\0", 6));
        helper.set_cancel_extraction(true);
        QVERIFY(!QFileInfo::exists(helper.get_adhoc_path_for_regular_file(at("source/db"))));
        helper.set_essentials();
    }

    void walk()
    {
        for (const char *path : {"source/a/deep/er", "source/b", "source/.hidden/in", "source/ü"}) {
            evidence::make_folder(at(path));
            evidence::write_file(at(path) + "/file"_s, "");
        }
        evidence::write_file(at("source/a/.hidden"), "");
        evidence::write_file(at("source/a/._companion"), "");
        QVERIFY(QFile::link(at("source/a"), at("source/b/link")));
        QVERIFY(QFile::link(at("source"), at("link")));

        QStringList met;
        folder_walk entries(at("source"), links::refuse);
        while (entries.next()) {
            const QString path = QString::fromUtf8(entries.relative_path());
            // Depth first: what was met before is the folder of the entry, or stands below it.
            const QString parent = path.left(path.lastIndexOf(QLatin1Char('/')) + 1);
            QVERIFY2(parent.isEmpty() || (met.last() + "/"_s).startsWith(parent), qPrintable(path));
            met.append(path);
        }
        met.sort();
        QCOMPARE(
            met.join(QLatin1Char(' ')),
            ".hidden .hidden/in .hidden/in/file a a/.hidden a/deep a/deep/er a/deep/er/file b b/file b/link other ü "
            "ü/file"_s);

        QVERIFY(!folder_walk(at("link"), links::refuse).is_open());
        QVERIFY(!folder_walk(at("link/"), links::refuse).is_open());
        QVERIFY(folder_walk(at("link"), links::follow).is_open());
        QVERIFY(!folder_walk(at("source/b/file"), links::follow).is_open());
        QVERIFY(!folder_walk(at("missing"), links::follow).next());
    }

    void standing_below()
    {
        evidence::make_folder(at("source2"));
        evidence::write_file(at("source2/secret"), "");
        QVERIFY(QFile::link(at("source2"), at("source/out")));
        QVERIFY(QFile::link(at("source/other"), at("source2/back")));
        QVERIFY(stands_below(at("source"), at("source/other")));
        QVERIFY(stands_below(at("source/"), at("source2/back"))); // where it leads is what counts
        QVERIFY(stands_below("/"_s, at("source/other")));
        QVERIFY(!stands_below(at("source"), at("source/out/secret")));
        QVERIFY(!stands_below(at("source"), at("source/../source2/secret")));
        QVERIFY(!stands_below(at("source"), at("source2"))); // the same beginning is not the same folder
        QVERIFY(!stands_below(at("source"), at("source/missing")));
        QVERIFY(!stands_below(at("missing"), at("source")));
    }

private:
    QString at(const char *name) const { return folder->filePath(QString::fromUtf8(name)); }

    std::unique_ptr<QTemporaryDir> folder;
    plugin_helper_functions helper{nullptr};
};

QTEST_GUILESS_MAIN(test_working_copies)
#include "test_working_copies.moc"
