// The table messages of a macOS mail store: both families of the index in every form, joined with mail files and
// accounts, and what becomes of an index that is damaged, foreign or odd.
#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QDateTime>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using evidence::macos_index_form;
using change = std::function<void(evidence::macos_mail_store &)>;
Q_DECLARE_METATYPE(macos_index_form)
Q_DECLARE_METATYPE(change)
using damage = std::function<void(const QString &index_path)>;
Q_DECLARE_METATYPE(damage)

namespace {

const QString user = QStringLiteral("anna");
const QString inbox_folder = QStringLiteral("IMAP-anna@mail.example.org/INBOX.mbox");

QDateTime instant(const char *text)
{
    return QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
}

void write_mail_file(evidence::macos_mail_store &store, qint64 row_id, const char *suffix, const QByteArray &content)
{
    const QString name = QString::number(row_id) + QLatin1String(suffix);
    const QString path = store.add_emlx(inbox_folder, row_id, name, content);
    evidence::write_file_metadata(path, {{"kMDItemDateAdded", instant("2015-03-01T10:20:30Z")}},
                                  evidence::metadata_place::apple_double);
}

// Six messages; what each of them shows stands in front of it. The rows to expect are in the folder expected.
void write_messages(evidence::macos_mail_store &store)
{
    const qint64 inbox = store.add_mailbox(QStringLiteral("imap://anna@mail.example.org/Eing%C3%A4nge"), {10, 2, 1, 0});
    const qint64 foreign = store.add_mailbox(QStringLiteral("imap://4F2B/%5BGmail%5D/All%20Mail"));
    const qint64 local =
        store.add_mailbox(QStringLiteral("local://ON-MY-MAC/a/100%zz%41"), {QVariant(), QVariant(), QVariant(), 7});
    const qint64 broken = store.add_mailbox(QStringLiteral("imap:///x"));
    const qint64 ben = store.add_address(QStringLiteral("ben@example.org"), QStringLiteral(" Ben "));
    const qint64 anna = store.add_address(QStringLiteral("anna@example.org"));
    const qint64 eve = store.add_address(QStringLiteral("eve@example.org"), QStringLiteral("Eve"));

    evidence::macos_message full; // every column filled; a mail file that tells both addresses
    full.message_id = Q_INT64_C(-8232904759822345);
    full.in_reply_to = 4711;
    full.sender = ben;
    full.subject_prefix = QStringLiteral("Re: ");
    full.subject = store.add_subject(QStringLiteral("  Grüße \"an\" alle "));
    full.date_sent = 1420000000.75;
    full.date_received = 1420000005;
    full.date_created = 1420000006;
    full.date_last_viewed = 1420000100.0;
    full.mailbox = inbox;
    full.read = 1;
    full.flagged = 1;
    full.type = 6;
    full.conversation_id = 77;
    full.snippet = QStringLiteral(" \"First\" line\nsecond ");
    const qint64 full_row = store.add_message(full);
    store.add_recipients(full_row, {anna, eve});
    store.add_recipients(full_row, {ben}, evidence::macos_mail_store::recipient_cc);
    store.add_recipients(full_row, {eve}, evidence::macos_mail_store::recipient_bcc);
    store.add_attachment(full_row, QStringLiteral("plan.pdf"));
    store.add_attachment(full_row, QStringLiteral("zoë.png"));
    write_mail_file(store, full_row, ".emlx",
                    "56        \nReply-To: Anna <a@example.org>\nBcc: b@example.org\n\nText\n");

    evidence::macos_message plain; // a sender without a name; a mail file without the two headers; a local mailbox
    plain.sender = anna;
    plain.subject = store.add_subject(QStringLiteral("plain"));
    plain.date_received = QStringLiteral("12.5.1");
    plain.mailbox = local;
    const qint64 plain_row = store.add_message(plain);
    store.add_recipients(plain_row, {eve});
    write_mail_file(store, plain_row, ".partial.emlx", "12        \nSubject: x\n\n");

    evidence::macos_message odd; // nothing where its ids point to, texts where numbers belong, no mail file
    odd.message_id = QVariant();
    odd.sender = 99;
    odd.subject = QStringLiteral("none");
    odd.date_sent = QStringLiteral("yesterday");
    odd.date_received = -5;
    odd.date_created = QStringLiteral(" 12 ");
    odd.date_last_viewed = QStringLiteral("never");
    odd.mailbox = 4712;
    odd.read = 2;
    odd.snippet = QStringLiteral("\"\"");
    const qint64 odd_row = store.add_message(odd);
    store.add_recipient(odd_row, QVariant(), 0, 0);
    store.add_recipient(odd_row, 77, 0, 1);
    store.add_recipient(odd_row, ben, QVariant(), 2);
    store.add_attachment(odd_row, QVariant());

    evidence::macos_message of_no_account; // a mailbox of an account that has no row
    of_no_account.mailbox = foreign;
    of_no_account.read = QVariant();
    store.add_message(of_no_account);

    evidence::macos_message of_no_host; // a URL without an account, met twice
    of_no_host.mailbox = broken;
    store.add_message(of_no_host);
    store.add_message(of_no_host);
}

void with_result_database(const host_run &run, const std::function<void(QSqlQuery &)> &use)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QSqlQuery query(database);
        use(query);
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
}

void add_accounts(const host_run &run)
{
    with_result_database(run, [](QSqlQuery &query) {
        QVERIFY(query.exec(QStringLiteral("insert into accounts(account_identifier,user_name) values"
                                          "('other@example.org','Other'),('anna@mail.example.org','Anna (work)')")));
    });
}

QStringList column_of(const host_run &run, const char *column)
{
    QStringList values;
    with_result_database(run, [&](QSqlQuery &query) {
        QVERIFY(query.exec(QStringLiteral("select %1 from messages order by INT").arg(QLatin1String(column))));
        while (query.next()) {
            values.append(query.value(0).toString());
        }
    });
    return values;
}

QString expected_file(const char *name)
{
    return QStringLiteral(EXPECTED_FOLDER "/") + QLatin1String(name);
}

} // namespace

class test_macos_messages : public QObject
{
    Q_OBJECT

private:
    // A store with the six messages, changed before the index is closed, and a run over it.
    struct extraction
    {
        explicit extraction(int generation, const change &alter = {},
                            const QStringList &tabs = {QStringLiteral("messages")})
            : extraction(generation, evidence::usual_index_form(generation), alter, tabs)
        {
        }

        extraction(int generation, macos_index_form form, const change &alter = {},
                   const QStringList &tabs = {QStringLiteral("messages")})
            : tree(folder.path() + QLatin1String("/source")), store(tree.add_store(user, generation, form)),
              run(QStringLiteral("macOS"), folder.path() + QLatin1String("/source"), tabs)
        {
            write_messages(store);
            if (alter) {
                alter(store);
            }
            tree.finish();
            run.users = QStringList{user};
        }

        void extract()
        {
            run.prepare();
            add_accounts(run);
            run.extract();
            run.finish();
        }

        QTemporaryDir folder;
        evidence::macos_mail_tree tree;
        evidence::macos_mail_store &store;
        host_run run;
    };

private Q_SLOTS:
    void joins_index_mail_files_and_accounts_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<macos_index_form>("form");
        QTest::addColumn<change>("alter");
        QTest::addColumn<QString>("expected");
        const auto drop_indexes = [](evidence::macos_mail_store &store) {
            store.index().run(QStringLiteral("DROP INDEX recipients_message_id_index;"
                                             "CREATE TABLE copy AS SELECT * FROM attachments; DROP TABLE attachments;"
                                             "ALTER TABLE copy RENAME TO attachments"));
        };
        QTest::newRow("V7") << 7 << macos_index_form::v3_to_v7 << change() << expected_file("messages_v7.txt");
        QTest::newRow("V7 without in_reply_to")
            << 7 << macos_index_form::v3_to_v7_without_in_reply_to << change() << expected_file("messages_v7.txt");
        QTest::newRow("V7 without indexes for the look-ups")
            << 7 << macos_index_form::v3_to_v7 << change(drop_indexes) << expected_file("messages_v7.txt");
        QTest::newRow("V8 without date_created")
            << 8 << macos_index_form::v8 << change() << expected_file("messages_v8.txt");
        QTest::newRow("V9 without snippet")
            << 9 << macos_index_form::v9 << change() << expected_file("messages_v9.txt");
        QTest::newRow("V2") << 2 << macos_index_form::v2 << change() << expected_file("messages_v2.txt");
    }

    void joins_index_mail_files_and_accounts()
    {
        QFETCH(int, generation);
        QFETCH(macos_index_form, form);
        QFETCH(change, alter);
        QFETCH(QString, expected);
        extraction evidence_of(generation, form, alter);
        const tree_snapshot before(evidence_of.tree.root());
        evidence_of.extract();
        const QString difference = difference_to_expected(evidence_of.run.rows(QStringLiteral("messages")), expected);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
        QCOMPARE(before.changes(), QString());
        QCOMPARE(evidence_of.run.record_signals.last(), 6);
    }

    void earlier_index_can_lack_replies()
    {
        extraction evidence_of(2, macos_index_form::v2_without_in_reply_to);
        evidence_of.extract();
        QCOMPARE(column_of(evidence_of.run, "reply_to is null").join(QString()), QStringLiteral("111111"));
        QCOMPARE(column_of(evidence_of.run, "subject").first(), QStringLiteral("Grüße \"an\" alle"));
        QVERIFY(!evidence_of.run.log().join(QString()).contains(QLatin1String("FAILED")));
    }

    void home_folder_source_keeps_two_paths()
    {
        extraction evidence_of(7);
        evidence_of.run.source_type = QStringLiteral("macOS_Home_Directory");
        evidence_of.extract();
        const QString index = QStringLiteral("/Library/Mail/V7/MailData/Envelope Index");
        const QString mail_file =
            QStringLiteral("/Library/Mail/V7/IMAP-anna@mail.example.org/INBOX.mbox/0D5A7E1C-41B6-4E0F-9C33-5B1D2F6A8E70"
                           "/Data/Messages/1.emlx");
        const QString home = QStringLiteral("/Users/anna");
        const QString separator = QStringLiteral(";++::++;");
        QCOMPARE(column_of(evidence_of.run, "source_file").mid(0, 2),
                 QStringList({index + separator + mail_file, index}));
        QCOMPARE(column_of(evidence_of.run, "artifacts_relation_source_file").mid(0, 2),
                 QStringList({home + index + separator + home + mail_file, home + index}));
        QCOMPARE(column_of(evidence_of.run, "emlx_file_path").first(), mail_file);
    }

    void logs_each_look_up_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<QStringList>("lines");
        QTest::newRow("later") << 7
                               << QStringList{QStringLiteral("extract_messages_11_12: starts"),
                                              QStringLiteral("sub_extract_sender_address_11: start"),
                                              QStringLiteral("sub_extract_sender_address_11: end"),
                                              QStringLiteral("sub_extract_emlx_file_for_messages_11_12: start"),
                                              QStringLiteral("sub_extract_emlx_file_for_messages_11_12: end"),
                                              QStringLiteral("sub_extract_mailbox_detail_11: start"),
                                              QStringLiteral("sub_extract_mailbox_detail_11: End"),
                                              QStringLiteral("sub_extract_attachmented_filenames_11: start"),
                                              QStringLiteral("sub_extract_attachmented_filenames_11: end"),
                                              QStringLiteral("sub_extract_receiver_address_11: start"),
                                              QStringLiteral("sub_extract_receiver_address_11: end")};
        QTest::newRow("earlier") << 2
                                 << QStringList{QStringLiteral("extract_messages: starts"),
                                                QStringLiteral("sub_extract_sender_address: start"),
                                                QStringLiteral("sub_extract_sender_address: end"),
                                                QStringLiteral("sub_extract_emlx_file_for_messages: start"),
                                                QStringLiteral("sub_extract_emlx_file_for_messages: end"),
                                                QStringLiteral("sub_extract_mailbox_url: start"),
                                                QStringLiteral("sub_extract_mailbox_url: End"),
                                                QStringLiteral("sub_extract_receiver_address: start"),
                                                QStringLiteral("sub_extract_receiver_address: end"),
                                                QStringLiteral("sub_extract_attachmented_filenames: start"),
                                                QStringLiteral("sub_extract_attachmented_filenames: end")};
    }

    void logs_each_look_up()
    {
        QFETCH(int, generation);
        QFETCH(QStringList, lines);
        extraction evidence_of(generation);
        evidence_of.extract();
        const QStringList log = evidence_of.run.log()
                                    .filter(QStringLiteral("mail_macos::"))
                                    .replaceInStrings(QStringLiteral("mail_macos::"), QString());
        QCOMPARE(log.mid(log.indexOf(lines.first()), lines.size()), lines);
    }

    void mailbox_without_account_ends_without_a_line()
    {
        extraction evidence_of(7);
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(QStringLiteral("mail_macos::sub_extract_mailbox_detail_11"));
        QCOMPARE(log.count(QStringLiteral("start")), 6);
        QCOMPARE(log.count(QStringLiteral("End")), 3); // of an account, the local one, and the one that is not there
    }

    void failures_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<change>("alter");
        QTest::addColumn<QString>("function");
        QTest::addColumn<QStringList>("failure");
        QTest::addColumn<int>("times");
        const auto sql = [](const char *script) {
            return change([script](evidence::macos_mail_store &store) { store.index().run(QLatin1String(script)); });
        };
        const auto lines = [](std::initializer_list<const char *> texts) {
            QStringList list;
            for (const char *text : texts) {
                list.append(QString::fromUtf8(text));
            }
            return list;
        };
        QTest::newRow("unknown schema")
            << 9 << sql("DROP TABLE messages; CREATE TABLE messages(x)") << QStringLiteral("extract_messages_11_12")
            << lines({"select from messages ---------FAILED-------TMP/Envelope Index",
                      "Error :- no such column: message_id",
                      "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_last_viewed,"
                      "mailbox,read,flagged,size,type,conversation_id,ROWID from messages"})
            << 1;
        QTest::newRow("unknown schema of V2")
            << 2 << sql("DROP TABLE messages") << QStringLiteral("extract_messages")
            << lines({"select from messages ---------FAILED-------TMP/Envelope Index",
                      "Error :- no such table: messages",
                      "select message_id, sender,subject_prefix,subject, date_sent,date_received,date_created,"
                      "date_last_viewed,mailbox,read,flagged,size,type,conversation_id,snippet,ROWID from messages"})
            << 1;
        QTest::newRow("no addresses") << 7 << sql("DROP TABLE addresses")
                                      << QStringLiteral("sub_extract_sender_address_11")
                                      << lines({"Execute query_address -------FAILED-------TMP/Envelope Index",
                                                "Error :- no such table: addresses",
                                                "select address,comment from addresses where ROWID = ?"})
                                      << 6;
        QTest::newRow("no addresses of recipients")
            << 7 << sql("DROP TABLE addresses") << QStringLiteral("sub_extract_receiver_address_11")
            << lines({"Execute query_recipient ------FAILED------TMP/Envelope Index",
                      "Error :- no such table: addresses", "select address from addresses where ROWID = ?"})
            << 7;
        QTest::newRow("no subjects") << 2 << sql("DROP TABLE subjects") << QStringLiteral("sub_extract_subject_text")
                                     << lines({"Execute query_subject -------FAILED--------TMP/Envelope Index",
                                               "Error :- no such table: subjects",
                                               "select subject from subjects where ROWID = ?"})
                                     << 6;
        QTest::newRow("no mailboxes")
            << 7 << sql("DROP TABLE mailboxes") << QStringLiteral("sub_extract_mailbox_detail_11")
            << lines(
                   {"Execute query_mailbox ------FAILED------TMP/Envelope Index", "Error :- no such table: mailboxes",
                    "select url,total_count, unread_count, unseen_count, deleted_count from mailboxes where ROWID = ?"})
            << 6;
        QTest::newRow("no mailboxes of V2")
            << 2 << sql("DROP TABLE mailboxes") << QStringLiteral("sub_extract_mailbox_url")
            << lines({"Execute query_mailbox ------FAILED------TMP/Envelope Index", "Error :- no such table: mailboxes",
                      "select url from mailboxes where ROWID = ?"})
            << 6;
        QTest::newRow("no recipients") << 9 << sql("DROP TABLE recipients")
                                       << QStringLiteral("sub_extract_receiver_address_11")
                                       << lines({"Execute query_recipient_id ------FAILED------TMP/Envelope Index",
                                                 "Error :- no such table: recipients",
                                                 "select address,type from recipients where message = ?"})
                                       << 6;
        QTest::newRow("attachments without names")
            << 9 << sql("DROP TABLE attachments; CREATE TABLE attachments(message, title)")
            << QStringLiteral("sub_extract_attachmented_filenames_11")
            << lines({"Execute query_attachment -22------FAILED--------TMP/Envelope Index",
                      "Error :- no such column: name", "select name from attachments where message = ?"})
            << 6;
        QTest::newRow("no attachments of V2")
            << 2 << sql("DROP TABLE attachments") << QStringLiteral("sub_extract_attachmented_filenames")
            << lines({"Execute query_attachment -11------FAILED--------TMP/Envelope Index",
                      "Error :- no such table: attachments", "select name,type from attachments where message_id = ?"})
            << 6;
    }

    // What one look-up lacks is missing in the rows; an index that cannot be read gives none. Either way the run ends.
    void failures()
    {
        QFETCH(int, generation);
        QFETCH(change, alter);
        QFETCH(QString, function);
        QFETCH(QStringList, failure);
        QFETCH(int, times);
        extraction evidence_of(generation, alter);
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(QLatin1String("mail_macos::") + function);
        QCOMPARE(log.count(failure.first()), times);
        QCOMPARE(log.mid(log.indexOf(failure.first()), failure.size()), failure);
        QCOMPARE(evidence_of.run.row_count(QStringLiteral("messages")),
                 function.startsWith(QLatin1String("sub")) ? 6 : 0);
        const QString operation = generation == 2 ? QStringLiteral("mail_macos::extract_messages")
                                                  : QStringLiteral("mail_macos::extract_messages_11_12");
        QCOMPARE(evidence_of.run.log_of(operation).last(), QStringLiteral("end"));
    }

    void result_database_that_does_not_open_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<QString>("function");
        QTest::addColumn<QStringList>("expected");
        const QString headline = QStringLiteral("open destination DB-------FAILED------");
        const QString error = QStringLiteral("Error :- unable to open database file");
        QTest::newRow("later") << 7 << QStringLiteral("mail_macos::extract_messages_11_12")
                               << QStringList{QStringLiteral("starts"), headline + QLatin1String("PATH"), error};
        QTest::newRow("earlier") << 2 << QStringLiteral("mail_macos::extract_messages")
                                 << QStringList{QStringLiteral("starts"), headline, error, QStringLiteral("PATH")};
    }

    void result_database_that_does_not_open()
    {
        QFETCH(int, generation);
        QFETCH(QString, function);
        QFETCH(QStringList, expected);
        extraction evidence_of(generation);
        evidence_of.run.prepare();
        const QString path = evidence_of.run.database_path();
        QVERIFY(QFile::remove(path));
        evidence::make_folder(path);
        evidence_of.run.extract();
        QCOMPARE(evidence_of.run.log_of(function).replaceInStrings(path, QStringLiteral("PATH")), expected);
    }

    // No database at all, none any more from the middle on, and ids that are no numbers.
    void damaged_index_keeps_what_can_be_read_data()
    {
        QTest::addColumn<damage>("alter");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("failures");
        QTest::newRow("empty file") << damage([](const QString &path) { QFile::resize(path, 0); }) << 0 << 1;
        QTest::newRow("text") << damage([](const QString &path) { evidence::write_file(path, QByteArray(9000, 'x')); })
                              << 0 << 1;
        QTest::newRow("cut off") << damage([](const QString &path) { QFile::resize(path, 5000); }) << 0 << 1;
        QTest::newRow("damaged page") << damage([](const QString &path) { overwrite_page_of_messages(path); }) << -1
                                      << 1;
        QTest::newRow("odd row ids") << damage([](const QString &path) {
            QFile::remove(path);
            evidence::sqlite_file index(path);
            index.run(QStringLiteral(
                "CREATE TABLE messages(ROWID TEXT, message_id, sender, subject_prefix, subject, date_sent, "
                "date_received, date_last_viewed, mailbox, read, flagged, size, type, conversation_id);"
                "INSERT INTO messages(ROWID) VALUES (NULL), ('../../1'), ('1'), (x'FF00FE'), ('%');"
                "UPDATE messages SET message_id = x'C3', mailbox = 'imap', read = '1' WHERE ROWID = '1'"));
            index.finish();
        }) << 5 << 0;
    }

    void damaged_index_keeps_what_can_be_read()
    {
        QFETCH(damage, alter);
        QFETCH(int, rows);
        QFETCH(int, failures);
        extraction evidence_of(9, [](evidence::macos_mail_store &store) {
            for (int i = 0; i < 2000; ++i) {
                evidence::macos_message message;
                message.subject = i;
                store.add_message(message);
            }
        });
        alter(evidence_of.store.index_path());
        const tree_snapshot before(evidence_of.tree.root());
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(QStringLiteral("mail_macos::extract_messages_11_12"));
        QCOMPARE(log.filter(QStringLiteral("select from messages ---------FAILED-------TMP/")).size(), failures);
        QCOMPARE(log.last(), QStringLiteral("end"));
        const int written = evidence_of.run.row_count(QStringLiteral("messages"));
        QVERIFY2(rows < 0 ? written > 6 && written < 2006 : written == rows, qPrintable(QString::number(written)));
        QCOMPARE(before.changes(), QString());
    }

    void rows_for_attachments_do_not_count()
    {
        extraction evidence_of(
            7, [](evidence::macos_mail_store &store) { store.index().run(QStringLiteral("DELETE FROM attachments")); },
            {QStringLiteral("all_attachments")});
        evidence_of.extract();
        QCOMPARE(evidence_of.run.record_signals.last(), 0);
        QVERIFY(evidence_of.run.log_of(QStringLiteral("mail_macos::extract_messages_11_12"))
                    .contains(QLatin1String("end")));
    }

private:
    static void overwrite_page_of_messages(const QString &path)
    {
        int page = 0;
        {
            QSqlDatabase index = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("pages"));
            index.setDatabaseName(path);
            QVERIFY(index.open());
            QSqlQuery pages(QStringLiteral("select pageno from dbstat where name = 'messages' and pagetype = 'leaf' "
                                           "order by path limit 1 offset 5"),
                            index);
            page = pages.next() ? pages.value(0).toInt() : 0;
        }
        QSqlDatabase::removeDatabase(QStringLiteral("pages"));
        QFile file(path);
        QVERIFY(page > 0 && file.open(QIODevice::ReadWrite) && file.seek((page - 1) * 4096));
        file.write(QByteArray(4096, '\x55'));
    }
};

QTEST_MAIN(test_macos_messages)
#include "test_macos_messages.moc"
