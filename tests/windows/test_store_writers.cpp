// The tables that store.vol and the files beside it fill: rows, log lines and signals.
#include "evidence/files.h"
#include "tests/evidence/ese_tables.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/store_source.h"
#include "tests/windows/winos_run.h"

#include <QDateTime>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>

#include <sys/stat.h>

using evidence::windows_profile;
using type = evidence::ese_type;
using value = evidence::ese_value;

class test_store_writers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_two_stores();
    void columns_and_tables_that_a_store_lacks();
    void damaged_stores_data();
    void damaged_stores();
    void store_whose_records_cannot_be_counted();
    void writers_whose_database_fails_data();
    void writers_whose_database_fails();
    void files_of_received_attachments();
};

void test_store_writers::rows_of_two_stores()
{
    QTemporaryDir folder;
    write_stores(folder.path());
    const tree_snapshot before(folder.path());
    winos_run run(folder.path(), store_tables, "anna:CORP ben");
    run.run();

    for (const QString &table : words(store_tables)) {
        compare_with_expected(run.rows(table), qPrintable(table + QLatin1String(".txt")));
    }
    for (const char *writer : {"extract_appointments", "extract_sent_attachments", "extract_received_attachments",
                               "extract_messages", "extract_contacts", "extract_call_history"}) {
        QCOMPARE(run.log_of(writer), plain_log_of(writer));
    }
    // Start; appointments; sent and received attachments; messages; contacts; calls. A slow run reports in between too.
    const QList<qint64> &reported = run.record_signals;
    for (const qint64 records : {0, 2, 5, 8, 12, 14, 16}) {
        QVERIFY2(reported.contains(records), qPrintable(QString::number(records)));
    }
    QVERIFY(std::is_sorted(reported.cbegin(), reported.cend()) && reported.last() == 16);
    QCOMPARE(run.tab_signals, (QList<int>{1, 2, 3, 4})); // attachments are not counted
    QCOMPARE(before.changes(), QString());
}

void test_store_writers::columns_and_tables_that_a_store_lacks()
{
    QTemporaryDir folder;
    evidence::ese_file store(windows_profile(folder.path(), utf8("anna")).store_path());
    const value time = value::number(evidence::filetime_of(1600000000));
    store.add_table("Appointment", {{"0020001f", type::long_text}}).add_record({value::text(utf8("Review"))});
    store.add_table("Contact", {{"01bf000b", type::boolean}}).add_record({value::boolean(true)});
    store.add_table("Message", {{"0e060040", type::date_time}}).add_record({time});
    // A name of another case is another.
    store.add_table("Recipient", {{"0e060040", type::date_time}, {"3003001F", type::long_text}})
        .add_record({time, value::text(utf8("anna@example.org"))});
    store.finish();

    winos_run run(folder.path(), store_tables);
    run.run();
    compare_with_expected(run.rows(utf8("appointments")) + run.rows(utf8("contacts")) + run.rows(utf8("messages")),
                          "rows_of_few_columns.txt");
    QCOMPARE(run.row_count(utf8("all_attachments")), 0);
    QCOMPARE(run.log_of("extract_call_history"), plain_log_of("extract_call_history"));
}

using replacement = std::function<void(const QString &store, const QString &sound_store)>;
Q_DECLARE_METATYPE(replacement)

void test_store_writers::damaged_stores_data()
{
    QTest::addColumn<replacement>("write_damaged");
    const auto row = [](const char *name, const replacement &write) { QTest::newRow(name) << write; };
    row("no ESE file", [](auto &store, auto &) { evidence::write_file(store, QByteArray(100000, 'x')); });
    row("empty", [](auto &store, auto &) { evidence::write_file(store, ""); });
    row("cut off", [](auto &store, auto &sound) { evidence::write_file(store, content_of(sound).left(10000)); });
    row("a folder", [](auto &store, auto &) { evidence::make_folder(store); });
    row("a pipe", [](auto &store, auto &) { ::mkfifo(QFile::encodeName(store).constData(), 0600); });
    row("a link out of the source", [](auto &store, auto &sound) { QFile::link(sound, store); });
}

// The other profile gives its rows all the same.
void test_store_writers::damaged_stores()
{
    QFETCH(replacement, write_damaged);
    QTemporaryDir folder;
    const QString root = folder.filePath(utf8("source"));
    write_stores(root);
    const QString store = windows_profile(root, utf8("anna")).store_path();
    QVERIFY(QFile::rename(store, folder.filePath(utf8("outside.vol"))));
    write_damaged(store, folder.filePath(utf8("outside.vol")));
    const tree_snapshot before(folder.path());
    winos_run run(root, store_tables, "anna ben");
    run.run();
    QCOMPARE(run.row_count(utf8("messages")), 1);
    QCOMPARE(run.row_count(utf8("all_attachments")), 1);
    QCOMPARE(run.row_count(utf8("contacts")), 0);
    QCOMPARE(run.log_of("extract_messages"), plain_log_of("extract_messages"));
    QCOMPARE(before.changes(), QString());
}

// The pages between a root and the leaves are overwritten.
void test_store_writers::store_whose_records_cannot_be_counted()
{
    constexpr int page_size = 8192; // as the store is written
    constexpr int flags_offset = 36;
    constexpr int page_is_parent_of_leaf = 0x4;
    QTemporaryDir folder;
    const QString store = windows_profile(folder.path(), utf8("cara")).store_path();
    const std::vector<value> call{value::text(QString(page_size / 4, QLatin1Char('x')))}; // a leaf for each
    write_table(store, "CallHistory", {{"ResolvedName", type::long_text}}, std::vector<std::vector<value>>(2000, call));
    QByteArray content = content_of(store);
    for (int page = 2 * page_size; page < content.size(); page += page_size) {
        if ((content.at(page + flags_offset) & page_is_parent_of_leaf) != 0) {
            content.replace(page + flags_offset + 4, page_size / 2, QByteArray(page_size / 2, '\xff'));
        }
    }
    evidence::write_file(store, content);

    winos_run run(folder.path(), "call_history", "cara");
    run.run();
    QCOMPARE(run.row_count(utf8("call_history")), 0);
    QCOMPARE(run.log_of(QStringLiteral("specific_table::record_type_case")),
             QStringList(QStringLiteral("[record_type_case] number of records not readable ----FAILED----: file "
                                        "SOURCE/Users/cara/AppData/Local/Comms/UnistoreDB/store.vol, "
                                        "table CallHistory, record 0")));
}

void test_store_writers::writers_whose_database_fails_data()
{
    QTest::addColumn<QString>("table"); // and the tab of that name
    QTest::addColumn<QString>("open_failure");
    QTest::addColumn<QString>("insert_failure");
    const auto row = [](const char *writer, const char *table, const char *open_failure, const char *insert_failure) {
        QTest::newRow(writer) << utf8(table) << utf8(open_failure) << utf8(insert_failure);
    };
    row("extract_appointments", "appointments", "[extract_appointments]Destination Db opening -----FAILED-------- ",
        "[extract_appointments]---Insert Query ---FAILED---- in Table appointments ");
    row("extract_sent_attachments", "all_attachments",
        "[extract_sent_attachments]Destination Db opening -------FAILED-------- ",
        "[extract_sent_attachments]Insert Query ---FAILED---- in sent_attachments Table ");
    row("extract_received_attachments", "all_attachments",
        "[extract_sent_attachments]Destination Db opening ------FAILED----- ",
        "[extract_received_attachments]Insert Query ---FAILED---- in sent_attachments Table ");
    row("extract_messages", "messages", "[extract_messages]Destination Db opening  ------FAILED----- ",
        "[]Insert Query ---FAILED---- in message Table ");
    row("extract_contacts", "contacts", "[extract_contacts]Destination Db opening  ------FAILED----- ",
        "[]Insert Query ---FAILED---- in contacts Table ");
    row("extract_call_history", "call_history", "[extract_contacts]Destination Db opening  ------FAILED----- ",
        "[extract_call_history]Insert Query ---FAILED---");
    row("extract_received_attachments_files", "received_attachments_files",
        "[extract_received_attachments_files]Destination Db opening ------FAILED----- ",
        "[extract_received_attachments_files]---Insert Query ---FAILED---- ");
}

void test_store_writers::writers_whose_database_fails()
{
    QFETCH(QString, table);
    QFETCH(QString, open_failure);
    QFETCH(QString, insert_failure);
    const char *const writer = QTest::currentDataTag();
    const QString start_line = plain_log_of(writer).first();
    QTemporaryDir folder;
    write_stores(folder.path());
    windows_profile(folder.path(), utf8("ben")).add_store_file(utf8("7/offer.txt"), "x");

    winos_run unopened(folder.path(), qPrintable(table), "anna ben");
    unopened.prepare();
    QVERIFY(unopened.replace_database_by_folder());
    unopened.extract();
    QCOMPARE(unopened.log_of(writer),
             (QStringList{start_line, open_failure + unopened.database_path(), utf8("unable to open database file")}));

    winos_run unfilled(folder.path(), qPrintable(table), "anna ben");
    unfilled.prepare();
    unfilled.found_by(QLatin1String("drop table ") + table);
    unfilled.extract();
    const QStringList log = unfilled.log_of(writer);
    QVERIFY(log.size() >= 5 && (log.size() - 2) % 3 == 0); // three lines a row
    QCOMPARE(log.mid(0, 3), (QStringList{start_line, insert_failure, QLatin1String("no such table: ") + table}));
    QVERIFY(log.at(3).startsWith(QLatin1String("insert into ") + table, Qt::CaseInsensitive));
    QCOMPARE(log.last(), plain_log_of(writer).last());
    QCOMPARE(unfilled.record_signals.last(), 0);
}

void test_store_writers::files_of_received_attachments()
{
    QTemporaryDir folder;
    const QString root = folder.filePath(utf8("source"));
    windows_profile anna(root, utf8("anna"));
    const QString file = anna.add_store_file(utf8("7/a/Angebot ü"), "%PDF-1.4\n");
    set_modified(file, 1600000000);
    anna.add_store_file(utf8("3/a/body.html"), "<html>");   // no attachment
    anna.add_store_file(utf8("7/.hidden/hidden.txt"), "x"); // passed over, as the next
    anna.add_store_file(utf8("7/.hidden.txt"), "x");
    const QString beside = anna.store_files_path() + QLatin1String("7/");
    QVERIFY(::mkfifo(QFile::encodeName(beside + QLatin1String("pipe.txt")).constData(), 0600) == 0);
    evidence::write_file(folder.filePath(utf8("secret.txt")), "x");
    QVERIFY(QFile::link(folder.filePath(utf8("secret.txt")), beside + QLatin1String("secret.txt")));
    QVERIFY(QFile::link(beside + QLatin1String("a"), beside + QLatin1String("linked folder")));
    const tree_snapshot before(folder.path()); // sets the access times of all entries to one moment of its own
    const qint64 created = QFileInfo(file).birthTime().toSecsSinceEpoch();

    winos_run run(root, "received_attachments_files", "anna:CORP");
    run.run();
    QString rows = run.rows(utf8("received_attachments_files"));
    rows.replace(QStringLiteral("creation_timestamp = %1\n").arg(created),
                 QStringLiteral("creation_timestamp = OWN\n"));
    compare_with_expected(rows, "received_attachments_files.txt");
    QCOMPARE(before.changes(), QString());
}

QTEST_MAIN(test_store_writers)
#include "test_store_writers.moc"
