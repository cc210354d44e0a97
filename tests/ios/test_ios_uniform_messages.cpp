// The table messages of an iOS file tree: the two indexes in every form in which they are found, the mail files beside
// them, and what becomes of both when they are damaged or hostile.
#include "evidence/ios_file_tree.h"
#include "evidence/sample_ios_file_tree.h"
#include "tests/services/service_test.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QRegularExpression>

#include <thread>

namespace {

using evidence::ios_file_tree;
using evidence::ios_message;
using evidence::sqlite_storage;

const QString ios_scheme = "iOS_Uniform"_s;
const QString messages_tab = "messages"_s;
const QString operation = "mail_ios_uniform::extract_mail_messages"_s;
const QString starts = "Starts"_s;
const QString ends = "Ends"_s;
const QString message_data = "private/var/mobile/Library/Mail/MessageData/"_s;

// Eleven messages; what each of them shows stands in front of it. The rows to expect are in expected/messages.txt.
void write_messages(const QString &root, sqlite_storage storage)
{
    ios_file_tree tree(root, storage);
    const qint64 all_mail = tree.add_mailbox("imap://4F2B/%5BGmail%5D/%5CAllMail"_s);
    const qint64 inbox = tree.add_mailbox("imap://4F2B/Eing%C3%A4nge"_s);
    const qint64 plain = tree.add_mailbox("local"_s);
    const qint64 anna = tree.add_address("anna@example.org"_s, "Änna 😀"_s);
    const qint64 ben = tree.add_address("ben@example.org"_s, "Ben"_s);
    const qint64 ben_again = tree.add_address("ben@example.org"_s, "Benjamin"_s);

    ios_message full; // every column filled, a recipient that repeats an address, two mail files
    full.message_id = Q_INT64_C(-8232904759822345);
    full.subject = tree.add_subject("Grüße; \"quoted\""_s);
    full.sender = anna;
    full.summary = tree.add_summary("First line\nsecond line"_s);
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
    tree.add_emlx(11, "partial.emlx"_s, evidence::emlx_message());
    tree.add_file(message_data + "11/1.emlxpart"_s, "part");

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
    odd.date_last_viewed = "yesterday"_s;
    odd.read = "yes"_s;
    odd.flagged = QVariant();
    odd.mailbox = 99;
    odd.global_message_id = 13; // files that are no mail files, or hidden
    tree.add_message(odd);
    tree.add_file(message_data + "13/partial.EMLX"_s, "x");
    tree.add_file(message_data + "13/._partial.emlx"_s, "x");

    // The folders of mail files that only an id or a link leads to.
    const auto add_with_id = [&tree](const QVariant &global_message_id) {
        ios_message message;
        message.global_message_id = global_message_id;
        tree.add_message(message);
    };
    const QString folders = tree.root() + message_data;
    const QString elsewhere = root + "/../elsewhere"_s;
    evidence::make_folder(elsewhere);
    evidence::write_file(elsewhere + "/secret.emlx"_s, "x");
    add_with_id(14); // the mail file in a subfolder
    tree.add_file(message_data + "14/a/b/full.emlx"_s, "x");
    add_with_id("../../../../../../../elsewhere"_s); // leads out of the source
    add_with_id(15);
    QFile::link(elsewhere, folders + "15"_s); // a link out of the source
    add_with_id(16);
    QFile::link("14/a"_s, folders + "16"_s); // a link within the source
    add_with_id("11/../14"_s);               // comes back into the source
    add_with_id("11\0b"_s);                  // a path would end at the zero
    add_with_id(".\0b"_s);
    tree.finish();
}

} // namespace

class test_ios_uniform_messages : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void indexes_of_every_form()
    {
        for (const sqlite_storage storage : {sqlite_storage::plain, sqlite_storage::wal_checkpointed,
                                             sqlite_storage::wal_only, sqlite_storage::wal_without_shm}) {
            QTemporaryDir folder;
            const QString root = folder.filePath("source"_s);
            write_messages(root, storage);
            const tree_snapshot before(folder.path());
            host_run run(ios_scheme, root, {messages_tab});
            run.run();
            QCOMPARE(before.changes(), QString());
            QCOMPARE(difference_to_expected(run.rows(messages_tab), EXPECTED_FOLDER "/messages.txt"_s), QString());
            QCOMPARE(run.log_of(operation), (QStringList{starts, ends}));
            QCOMPARE(run.record_signals, (QList<qint64>{0, 11, 11, 11})); // start, tab, extractor, end
            QCOMPARE(run.tab_signals, QList<int>{1});
        }
    }

    void several_mail_files_give_the_last_met()
    {
        QTemporaryDir folder;
        ios_file_tree tree(folder.filePath("source"_s));
        ios_message message;
        message.global_message_id = 5;
        tree.add_message(message);
        tree.add_emlx(5, "full.emlx"_s, evidence::emlx_message());
        tree.add_emlx(5, "partial.emlx"_s, evidence::emlx_message());
        tree.finish();

        // The order is the file system's, and with it which of the two is the last.
        const QStringList listed = QDir(tree.message_folder_path(5)).entryList(QDir::Files, QDir::Unsorted);
        QCOMPARE(listed.size(), 2);
        host_run run(ios_scheme, tree.root(), {messages_tab});
        run.run();
        QCOMPARE(run.rows(messages_tab).count("emlx_file_name = \""_s + listed.last() + QLatin1Char('"')), 1);
        QCOMPARE(run.row_count(messages_tab), 1);
    }

    void damaged_indexes_data()
    {
        text_columns("index", "by", "log"); // what stands in the index's place; the lines behind the start
        const char *select_query =
            "QUERY :- SELECT message_id,sender,subject,date_sent,date_received,date_last_viewed,mailbox,read,"
            "flagged,conversation_id,summary,global_message_id,ROWID From messages";
        const auto select_failure = [&](const char *error) {
            return "select query_select -----FAILED----- TMP/Envelope Index\nERROR :- "_s + QString::fromLatin1(error) +
                   "\n"_s + QString::fromLatin1(select_query);
        };
        const auto row = [](const char *index, const char *by, const QString &log) {
            QTest::addRow("%s: %s", index, by) << QString::fromLatin1(index) << QString::fromLatin1(by) << log;
        };
        row("Protected Index", "nothing", QString());
        row("Envelope Index", "nothing", QString());
        row("Envelope Index", "a link out of the source", QString());
        row("Envelope Index", "a folder",
            "Source Db opening -----FAILED-----TMP/Envelope Index\nERROR :- unable to open database file"_s);
        row("Protected Index", "a pipe",
            "Source Db opening -----FAILED-----TMP/Protected Index\nERROR :- unable to open database file"_s);
        row("Envelope Index", "an empty file", select_failure("no such table: messages"));
        row("Envelope Index", "no database", select_failure("file is not a database"));
        row("Envelope Index", "its first page", select_failure("database disk image is malformed"));
    }

    void damaged_indexes()
    {
        QFETCH(QString, index);
        QFETCH(QString, by);
        QFETCH(QString, log);
        QTemporaryDir folder;
        ios_file_tree tree(folder.filePath("source"_s));
        tree.add_message(ios_message());
        tree.finish();
        const QString path = tree.root() + "private/var/mobile/Library/Mail/"_s + index;
        const QString outside = folder.filePath("outside"_s);
        QVERIFY(QFile::rename(path, outside));
        if (by == "a link out of the source"_s) {
            QVERIFY(QFile::link(outside, path));
        } else if (by == "a folder"_s) {
            evidence::make_folder(path);
        } else if (by == "a pipe"_s) {
            make_pipe(path);
        } else if (by != "nothing"_s) {
            evidence::write_file(path, by == "no database"_s      ? QByteArray(5000, 'x')
                                       : by == "its first page"_s ? content_of(outside).left(4096)
                                                                  : QByteArray());
        }
        const tree_snapshot before(folder.path());

        host_run run(ios_scheme, tree.root(), {messages_tab});
        run.run();
        QCOMPARE(run.log_of(operation), QStringList{starts} + log.split(QLatin1Char('\n'), Qt::SkipEmptyParts));
        QCOMPARE(run.row_count(messages_tab), 0);
        QCOMPARE(run.tab_signals, QList<int>{1});
        QCOMPARE(before.changes(), QString());
    }

    void damaged_pages_keep_the_rows_before_them()
    {
        QTemporaryDir folder;
        ios_file_tree tree(folder.filePath("source"_s));
        for (int i = 0; i < 3000; ++i) {
            tree.add_message({});
        }
        tree.finish();
        const QByteArray index = content_of(tree.envelope_index_path());
        const int half = index.size() / 2;
        evidence::write_file(tree.envelope_index_path(), index.left(half) + QByteArray(index.size() - half, 'U'));
        host_run run(ios_scheme, tree.root(), {messages_tab});
        run.run();
        const int rows = run.row_count(messages_tab);
        QVERIFY2(rows > 0 && rows < 3000, qPrintable(QString::number(rows)));
        QVERIFY(run.log_of(operation).contains("select query_select -----FAILED----- TMP/Envelope Index"_s));
    }

    void cancelled_from_another_thread()
    {
        constexpr int message_count = 6000;
        QTemporaryDir folder;
        evidence::sample_ios_file_tree_options sample;
        sample.message_count = message_count;
        evidence::write_sample_ios_file_tree(folder.path(), sample);

        host_run run(ios_scheme, folder.path(), {messages_tab});
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
        QCOMPARE(run.log_of(operation), QStringList{starts});
        QCOMPARE(run.tab_signals, QList<int>{1});

        run.prepare();
        run.extract();
        QCOMPARE(run.row_count(messages_tab), rows + message_count);
    }

    // A table that is missing, a view with rows without end, and a value of eight hundred million bytes.
    void failing_look_ups_cost_their_column()
    {
        for (const auto &[schema, error] :
             {std::pair("", "no such table: subjects"),
              {"create view subjects(subject, ROWID) as with recursive n(i) as "
               "(select 1 union all select i from n) select count(*), 1 from n",
               "no such table: main.n"},
              {"create table subjects(subject as (zeroblob(800000000)), b); insert into subjects(b) values(1)",
               "string or blob too big"}}) {
            QTemporaryDir folder;
            ios_file_tree tree(folder.filePath("source"_s));
            ios_message message;
            message.subject = 1;
            message.sender = tree.add_address("anna@example.org"_s);
            for (int i = 0; i < 2; ++i) {
                tree.add_recipients(tree.add_message(message), {1});
            }
            tree.protected_index().run("drop table subjects; "_s + QString::fromLatin1(schema));
            tree.finish();
            host_run run(ios_scheme, tree.root(), {messages_tab});
            run.run();
            const QStringList failure{"select query_select_subject -----FAILED-----TMP/Protected Index"_s,
                                      "ERROR :- "_s + QString::fromLatin1(error),
                                      "QUERY :- select subject from subjects where ROWID = ?"_s};
            QCOMPARE(run.log_of(operation), QStringList{starts} + failure + failure + QStringList{ends});
            QCOMPARE(
                run.rows(messages_tab).count("  from_str = \"anna@example.org\"\n  to_str = \"anna@example.org\"\n"_s),
                2);
        }
    }

    void log_line_cannot_be_forged()
    {
        QTemporaryDir folder;
        ios_file_tree tree(folder.filePath("source"_s));
        tree.envelope_index().run("drop table messages; pragma writable_schema=on; insert into sqlite_master "
                                  "values('table','x','x',0,'create table x(a' || char(10) || '[forged]:-- b')"_s);
        tree.finish();
        host_run run(ios_scheme, tree.root(), {messages_tab});
        run.run();
        QVERIFY(!run.log().filter("FAILED"_s).isEmpty());
        QCOMPARE(run.log().filter(QRegularExpression("^\\[forged\\]"_s)), QStringList());
    }
};

QTEST_MAIN(test_ios_uniform_messages)
#include "test_ios_uniform_messages.moc"
