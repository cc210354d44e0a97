// The table messages of an iOS file tree: the two indexes in every form in which they are found, the mail files beside
// them, and what becomes of both when they are damaged or hostile.
#include "evidence/files.h"
#include "evidence/ios_file_tree.h"
#include "evidence/sample_ios_file_tree.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <functional>
#include <thread>

#include <sys/stat.h>

using damage = std::function<void(const evidence::ios_file_tree &)>;
Q_DECLARE_METATYPE(damage)

namespace {

using evidence::ios_file_tree;
using evidence::ios_message;
using evidence::sqlite_storage;

const QString messages_tab = QStringLiteral("messages");
const QString message_data = QStringLiteral("private/var/mobile/Library/Mail/MessageData/");

// Eleven messages; what each of them shows stands in front of it. The rows to expect are in expected/messages.txt.
void write_messages(const QString &root, sqlite_storage storage)
{
    ios_file_tree tree(root, storage);
    const qint64 all_mail = tree.add_mailbox(QStringLiteral("imap://4F2B/%5BGmail%5D/%5CAllMail"));
    const qint64 inbox = tree.add_mailbox(QStringLiteral("imap://4F2B/Eing%C3%A4nge"));
    const qint64 plain = tree.add_mailbox(QStringLiteral("local"));
    const qint64 anna = tree.add_address(QStringLiteral("anna@example.org"), QStringLiteral("Änna 😀"));
    const qint64 ben = tree.add_address(QStringLiteral("ben@example.org"), QStringLiteral("Ben"));
    const qint64 ben_again = tree.add_address(QStringLiteral("ben@example.org"), QStringLiteral("Benjamin"));

    ios_message full; // every column filled, a recipient that repeats an address, two mail files
    full.message_id = Q_INT64_C(-8232904759822345);
    full.subject = tree.add_subject(QStringLiteral("Grüße; \"quoted\""));
    full.sender = anna;
    full.summary = tree.add_summary(QStringLiteral("First line\nsecond line"));
    full.date_sent = 1420000000;
    full.date_received = 1420000005;
    full.date_last_viewed = 1420000100;
    full.mailbox = all_mail;
    full.read = 1;
    full.flagged = 1;
    full.conversation_id = 77;
    full.global_message_id = 11;
    const qint64 full_row = tree.add_message(full);
    tree.add_recipients(full_row, {ben, anna, ben_again});
    tree.add_emlx(11, QStringLiteral("partial.emlx"), evidence::emlx_message());
    tree.add_file(message_data + QLatin1String("11/1.emlxpart"), "part");

    ios_message twice = full; // the same mail in another mailbox, after the full row
    twice.mailbox = inbox;
    tree.add_message(twice);

    ios_message draft; // no sender, a subject that is not there, no folder; read is neither 0 nor 1
    draft.subject = 4711;
    draft.mailbox = plain;
    draft.read = 2;
    draft.global_message_id = 12;
    tree.add_message(draft);

    ios_message odd; // numbers with a fraction, and texts where numbers belong
    odd.date_sent = 600000000.75;
    odd.date_received = 600000000.0;
    odd.date_last_viewed = QStringLiteral("yesterday");
    odd.read = QStringLiteral("yes");
    odd.flagged = QVariant();
    odd.mailbox = 99;
    odd.global_message_id = 13; // files that are no mail files, or hidden
    tree.add_message(odd);
    tree.add_file(message_data + QLatin1String("13/partial.EMLX"), "x");
    tree.add_file(message_data + QLatin1String("13/._partial.emlx"), "x");

    ios_message deep; // the mail file in a subfolder
    deep.global_message_id = 14;
    tree.add_message(deep);
    tree.add_file(message_data + QLatin1String("14/a/b/full.emlx"), "x");

    ios_message outside; // ids that lead out of the source
    outside.global_message_id = QStringLiteral("../../../../../../../elsewhere");
    tree.add_message(outside);
    QDir().mkpath(root + QLatin1String("/../elsewhere"));
    evidence::write_file(root + QLatin1String("/../elsewhere/secret.emlx"), "x");

    ios_message linked_outside; // a folder that is a link out of the source
    linked_outside.global_message_id = 15;
    tree.add_message(linked_outside);
    QFile::link(root + QLatin1String("/../elsewhere"), root + QLatin1Char('/') + message_data + QLatin1String("15"));

    ios_message linked_inside; // a folder that is a link within the source
    linked_inside.global_message_id = 16;
    tree.add_message(linked_inside);
    QFile::link(QStringLiteral("14/a"), root + QLatin1Char('/') + message_data + QLatin1String("16"));

    ios_message detour; // an id that comes back into the source
    detour.global_message_id = QStringLiteral("11/../14");
    tree.add_message(detour);

    for (const QString &id : {QStringLiteral("11\0b"), QStringLiteral(".\0b")}) { // a path would end at the zero
        ios_message cut_off;
        cut_off.global_message_id = id;
        tree.add_message(cut_off);
    }
    tree.finish();
}

void truncate(const QString &path, qint64 size)
{
    QFile::resize(path, size);
}

// Damages a page in the middle of the table messages.
void overwrite_middle_page(const QString &index_path)
{
    int page = 0;
    {
        QSqlDatabase index = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("pages"));
        index.setDatabaseName(index_path);
        index.open();
        QSqlQuery pages(
            QStringLiteral("select pageno from dbstat where name = 'messages' and pagetype = 'leaf' order by "
                           "path limit 1 offset 10"),
            index);
        page = pages.next() ? pages.value(0).toInt() : 0;
    }
    QSqlDatabase::removeDatabase(QStringLiteral("pages"));
    QVERIFY(page > 0);
    QFile file(index_path);
    QVERIFY(file.open(QIODevice::ReadWrite) && file.seek((page - 1) * 4096));
    file.write(QByteArray(4096, '\x55'));
}

void replace_by_folder(const QString &path)
{
    QFile::remove(path);
    QDir().mkpath(path);
}

} // namespace

class test_ios_uniform_messages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void indexes_of_every_form_data();
    void indexes_of_every_form();
    void several_mail_files_give_the_last_met();
    void damaged_indexes_data();
    void damaged_indexes();
    void missing_table_of_a_look_up();
    void index_with_a_damaged_page_keeps_the_rows_before_it();
    void two_sources_in_one_database();
    void cancelled_from_another_thread();
    void values_that_the_schema_makes_data();
    void values_that_the_schema_makes();
    void log_line_cannot_be_forged();
};

void test_ios_uniform_messages::indexes_of_every_form_data()
{
    QTest::addColumn<int>("storage");
    QTest::newRow("plain") << int(sqlite_storage::plain);
    QTest::newRow("checkpointed") << int(sqlite_storage::wal_checkpointed);
    QTest::newRow("rows in the write-ahead file") << int(sqlite_storage::wal_only);
    QTest::newRow("rows in the write-ahead file, no shared memory") << int(sqlite_storage::wal_without_shm);
}

void test_ios_uniform_messages::indexes_of_every_form()
{
    QFETCH(int, storage);
    QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("source"));
    write_messages(root, sqlite_storage(storage));
    const tree_snapshot before(folder.path());

    host_run run(QStringLiteral("iOS_Uniform"), root, {messages_tab});
    run.run();

    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
    const QString difference =
        difference_to_expected(run.rows(messages_tab), QStringLiteral(EXPECTED_FOLDER "/messages.txt"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages")),
             (QStringList{QStringLiteral("Starts"), QStringLiteral("Ends")}));
    QCOMPARE(run.record_signals, (QList<qint64>{0, 11, 11, 11})); // start, tab, extractor, end
    QCOMPARE(run.tab_signals, QList<int>{1});
}

void test_ios_uniform_messages::several_mail_files_give_the_last_met()
{
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    ios_message message;
    message.global_message_id = 5;
    tree.add_message(message);
    tree.add_emlx(5, QStringLiteral("full.emlx"), evidence::emlx_message());
    tree.add_emlx(5, QStringLiteral("partial.emlx"), evidence::emlx_message());
    tree.finish();

    // The order is the file system's, and with it which of the two is the last.
    const QStringList listed = QDir(tree.message_folder_path(5)).entryList(QDir::Files, QDir::Unsorted);
    QCOMPARE(listed.size(), 2);
    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {messages_tab});
    run.run();
    QVERIFY2(run.rows(messages_tab).contains(QLatin1String("emlx_file_name = \"") + listed.last() + QLatin1Char('"')),
             qPrintable(run.rows(messages_tab)));
    QCOMPARE(run.row_count(messages_tab), 1);
}

void test_ios_uniform_messages::damaged_indexes_data()
{
    QTest::addColumn<damage>("damage_tree");
    QTest::addColumn<QStringList>("log"); // of the operation; an entry that ends in "…" is the begin of a line
    const QString starts = QStringLiteral("Starts");
    const QString select_failed = QStringLiteral("select query_select -----FAILED----- TMP/Envelope Index");
    const QString select_query = QStringLiteral(
        "QUERY :- SELECT message_id,sender,subject,date_sent,date_received,date_last_viewed,mailbox,read,"
        "flagged,conversation_id,summary,global_message_id,ROWID From messages");

    QTest::newRow("Protected Index is missing")
        << damage([](const ios_file_tree &tree) { QFile::remove(tree.protected_index_path()); }) << QStringList{starts};
    QTest::newRow("Envelope Index is missing")
        << damage([](const ios_file_tree &tree) { QFile::remove(tree.envelope_index_path()); }) << QStringList{starts};
    QTest::newRow("Envelope Index is a link out of the source") << damage([](const ios_file_tree &tree) {
        QFile::rename(tree.envelope_index_path(), tree.root() + QLatin1String("../outside"));
        QFile::link(tree.root() + QLatin1String("../outside"), tree.envelope_index_path());
    }) << QStringList{starts};
    QTest::newRow("Envelope Index is a folder")
        << damage([](const ios_file_tree &tree) { replace_by_folder(tree.envelope_index_path()); })
        << QStringList{starts, QStringLiteral("Source Db opening -----FAILED-----TMP/Envelope Index"),
                       QStringLiteral("ERROR :- unable to open database file")};
    QTest::newRow("Protected Index is a pipe")
        << damage([](const ios_file_tree &tree) {
               QFile::remove(tree.protected_index_path());
               ::mkfifo(QFile::encodeName(tree.protected_index_path()).constData(), 0600);
           })
        << QStringList{starts, QStringLiteral("Source Db opening -----FAILED-----TMP/Protected Index"),
                       QStringLiteral("ERROR :- unable to open database file")};
    QTest::newRow("Envelope Index is empty")
        << damage([](const ios_file_tree &tree) { truncate(tree.envelope_index_path(), 0); })
        << QStringList{starts, select_failed, QStringLiteral("ERROR :- no such table: messages"), select_query};
    QTest::newRow("Envelope Index is no database") << damage([](const ios_file_tree &tree) {
        truncate(tree.envelope_index_path(), 0);
        evidence::write_file(tree.envelope_index_path(), QByteArray(5000, 'x'));
    }) << QStringList{starts, select_failed, QStringLiteral("ERROR :- file is not a database"), select_query};
    QTest::newRow("Envelope Index is cut off behind its first page") << damage([](const ios_file_tree &tree) {
        truncate(tree.envelope_index_path(), 4096);
    }) << QStringList{starts, select_failed, QStringLiteral("ERROR :- database disk image is malformed"), select_query};
}

void test_ios_uniform_messages::damaged_indexes()
{
    QFETCH(damage, damage_tree);
    QFETCH(QStringList, log);
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    tree.add_message(ios_message());
    tree.finish();
    damage_tree(tree);
    const tree_snapshot before(folder.path());

    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {messages_tab});
    run.run();
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages")), log);
    QCOMPARE(run.row_count(messages_tab), 0);
    QCOMPARE(run.tab_signals, QList<int>{1});
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

void test_ios_uniform_messages::missing_table_of_a_look_up()
{
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    for (const char *subject : {"one", "two"}) {
        ios_message message;
        message.subject = tree.add_subject(QString::fromLatin1(subject));
        message.sender = tree.add_address(QStringLiteral("anna@example.org"));
        tree.add_recipients(tree.add_message(message), {1});
    }
    tree.protected_index().run(QStringLiteral("drop table subjects"));
    tree.finish();

    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {messages_tab});
    run.run();
    const QStringList failure{QStringLiteral("select query_select_subject -----FAILED-----TMP/Protected Index"),
                              QStringLiteral("ERROR :- no such table: subjects"),
                              QStringLiteral("QUERY :- select subject from subjects where ROWID = ?")};
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages")),
             QStringList{QStringLiteral("Starts")} + failure + failure + QStringList{QStringLiteral("Ends")});
    QCOMPARE(run.rows(messages_tab)
                 .count(QLatin1String("  from_str = \"anna@example.org\"\n"
                                      "  to_str = \"anna@example.org\"\n")),
             2);
}

void test_ios_uniform_messages::index_with_a_damaged_page_keeps_the_rows_before_it()
{
    QTemporaryDir folder;
    evidence::sample_ios_file_tree_options sample;
    sample.message_count = 3000;
    evidence::write_sample_ios_file_tree(folder.path(), sample);
    overwrite_middle_page(folder.filePath(QStringLiteral("private/var/mobile/Library/Mail/Envelope Index")));

    host_run run(QStringLiteral("iOS_Uniform"), folder.path(), {messages_tab});
    run.run();
    const int rows = run.row_count(messages_tab);
    QVERIFY2(rows > 0 && rows < 3000, qPrintable(QString::number(rows)));
    QVERIFY(run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages"))
                .contains(QLatin1String("select query_select -----FAILED----- TMP/Envelope Index")));
}

void test_ios_uniform_messages::two_sources_in_one_database()
{
    QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("source"));
    write_messages(root, sqlite_storage::plain);
    host_run run(QStringLiteral("iOS_Uniform"), root, {messages_tab});
    run.run();
    const QString first = run.rows(messages_tab);
    run.source_count = 12;
    run.prepare();
    run.extract();
    QCOMPARE(run.row_count(messages_tab), 22);
    QCOMPARE(run.rows(messages_tab).count(QLatin1String("source_count_name = \"Source12\"")), 11);
    QVERIFY(run.rows(messages_tab).startsWith(first));
}

void test_ios_uniform_messages::cancelled_from_another_thread()
{
    constexpr int message_count = 6000;
    QTemporaryDir folder;
    evidence::sample_ios_file_tree_options sample;
    sample.message_count = message_count;
    evidence::write_sample_ios_file_tree(folder.path(), sample);

    host_run run(QStringLiteral("iOS_Uniform"), folder.path(), {messages_tab});
    run.prepare();
    std::thread host([&run] {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        run.plugin().pub_cancel_extraction();
    });
    run.extract();
    host.join();

    const int rows = run.row_count(messages_tab);
    QVERIFY2(rows < message_count, qPrintable(QString::number(rows)));
    QCOMPARE(run.record_signals.last(), rows);
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages")),
             QStringList{QStringLiteral("Starts")});
    QCOMPARE(run.tab_signals, QList<int>{1});

    run.prepare();
    run.extract();
    QCOMPARE(run.row_count(messages_tab), rows + message_count);
}

void test_ios_uniform_messages::values_that_the_schema_makes_data()
{
    QTest::addColumn<QString>("schema");
    QTest::addColumn<QString>("error");
    QTest::newRow("a view with rows without end")
        << QStringLiteral("drop table subjects; create view subjects(subject, ROWID) as with recursive n(i) as "
                          "(select 1 union all select i from n) select count(*), 1 from n")
        << QStringLiteral("no such table: main.n");
    QTest::newRow("a value of eight hundred million bytes")
        << QStringLiteral("drop table subjects; create table subjects(subject as (zeroblob(800000000)), b); "
                          "insert into subjects(b) values(1)")
        << QStringLiteral("string or blob too big");
}

void test_ios_uniform_messages::values_that_the_schema_makes()
{
    QFETCH(QString, schema);
    QFETCH(QString, error);
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    ios_message message;
    message.subject = 1;
    tree.add_message(message);
    tree.protected_index().run(schema);
    tree.finish();

    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {messages_tab});
    run.run();
    const QStringList log = run.log_of(QStringLiteral("mail_ios_uniform::extract_mail_messages"));
    QCOMPARE(log.value(1), QStringLiteral("select query_select_subject -----FAILED-----TMP/Protected Index"));
    QCOMPARE(log.value(2), QLatin1String("ERROR :- ") + error);
    QCOMPARE(run.row_count(messages_tab), 1);
}

void test_ios_uniform_messages::log_line_cannot_be_forged()
{
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    tree.envelope_index().run(
        QStringLiteral("drop table messages; pragma writable_schema=on; insert into sqlite_master "
                       "values('table','x','x',0,'create table x(a' || char(10) || '[forged]:-- b')"));
    tree.finish();
    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {messages_tab});
    run.run();
    const QString log = run.log().join(QLatin1Char('\n'));
    QVERIFY2(log.contains(QLatin1String("FAILED")), qPrintable(log));
    for (const QString &line : run.log()) {
        QVERIFY2(!line.startsWith(QLatin1String("[forged]")), qPrintable(line));
    }
}

QTEST_MAIN(test_ios_uniform_messages)
#include "test_ios_uniform_messages.moc"
