// The table messages of a macOS mail store: both families of the index in every form, joined with mail files and
// accounts, and what becomes of an index that is damaged, foreign or odd.
#include "tests/macos/macos_run.h"

using evidence::macos_index_form;
using change = std::function<void(evidence::macos_mail_store &)>;
Q_DECLARE_METATYPE(macos_index_form)
Q_DECLARE_METATYPE(change)
using damage = std::function<void(const QString &index_path)>;
Q_DECLARE_METATYPE(damage)

namespace {

constexpr const char *later_operation = "mail_macos::extract_messages_11_12";
const QString user = text("anna");
const QString inbox_folder = text("IMAP-anna@mail.example.org/INBOX.mbox");

void write_mail_file(evidence::macos_mail_store &store, qint64 row_id, const char *suffix, const QByteArray &content)
{
    const QString name = QString::number(row_id) + QLatin1String(suffix);
    const QString path = store.add_emlx(inbox_folder, row_id, name, content);
    evidence::write_file_metadata(path, {{"kMDItemDateAdded", instant(1425205230)}},
                                  evidence::metadata_place::apple_double);
}

// Six messages; what each of them shows stands in front of it. The rows to expect are in the folder expected.
void write_messages(evidence::macos_mail_store &store)
{
    const qint64 inbox = store.add_mailbox(text("imap://anna@mail.example.org/Eing%C3%A4nge"), {10, 2, 1, 0});
    const qint64 foreign = store.add_mailbox(text("imap://4F2B/%5BGmail%5D/All%20Mail"));
    const qint64 local =
        store.add_mailbox(text("local://ON-MY-MAC/a/100%zz%41"), {QVariant(), QVariant(), QVariant(), 7});
    const qint64 broken = store.add_mailbox(text("imap:///x"));
    const qint64 ben = store.add_address(text("ben@example.org"), text(" Ben "));
    const qint64 anna = store.add_address(text("anna@example.org"));
    const qint64 eve = store.add_address(text("eve@example.org"), text("Eve"));

    evidence::macos_message full; // every column filled; a mail file that tells both addresses
    full.message_id = Q_INT64_C(-8232904759822345);
    full.in_reply_to = 4711;
    full.sender = ben;
    full.subject_prefix = text("Re: ");
    full.subject = store.add_subject(text("  Grüße \"an\" alle "));
    full.date_sent = 1420000000.75;
    full.date_received = 1420000005;
    full.date_created = 1420000006;
    full.date_last_viewed = 1420000100.0;
    full.mailbox = inbox;
    full.read = 1;
    full.flagged = 1;
    full.type = 6;
    full.conversation_id = 77;
    full.snippet = text(" \"First\" line\nsecond ");
    const qint64 full_row = store.add_message(full);
    store.add_recipients(full_row, {anna, eve});
    store.add_recipients(full_row, {ben}, evidence::macos_mail_store::recipient_cc);
    store.add_recipients(full_row, {eve}, evidence::macos_mail_store::recipient_bcc);
    store.add_attachment(full_row, text("plan.pdf"));
    store.add_attachment(full_row, text("zoë.png"));
    write_mail_file(store, full_row, ".emlx",
                    "56        \nReply-To: Anna <a@example.org>\nBcc: b@example.org\n\nText\n");

    evidence::macos_message plain; // a sender without a name; a mail file without the two headers; a local mailbox
    plain.sender = anna;
    plain.subject = store.add_subject(text("plain"));
    plain.date_received = text("12.5.1");
    plain.mailbox = local;
    const qint64 plain_row = store.add_message(plain);
    store.add_recipients(plain_row, {eve});
    write_mail_file(store, plain_row, ".partial.emlx", "12        \nSubject: x\n\n");

    evidence::macos_message odd; // nothing where its ids point to, texts where numbers belong, no mail file
    odd.message_id = QVariant();
    odd.sender = 99;
    odd.subject = text("none");
    odd.date_sent = text("yesterday");
    odd.date_received = -5;
    odd.date_created = text(" 12 ");
    odd.date_last_viewed = text("never");
    odd.mailbox = 4712;
    odd.read = 2;
    odd.snippet = text("\"\"");
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

// A change of the index by a statement.
change sql(const QByteArray &script)
{
    return [script](evidence::macos_mail_store &store) { store.index().run(QString::fromUtf8(script)); };
}

} // namespace

class test_macos_messages : public QObject
{
    Q_OBJECT

private:
    // A store with the six messages, changed before the index is closed, and a run over it.
    struct extraction
    {
        explicit extraction(int generation, const change &alter = {}, const QStringList &tabs = texts({"messages"}))
            : extraction(generation, evidence::usual_index_form(generation), alter, tabs)
        {
        }
        extraction(int generation, macos_index_form form, const change &alter = {},
                   const QStringList &tabs = texts({"messages"}))
            : store(source.tree.add_store(user, generation, form)), run(text("macOS"), source.tree.root(), tabs)
        {
            write_messages(store);
            if (alter) {
                alter(store);
            }
            source.tree.finish();
            run.users = QStringList{user};
        }

        void extract()
        {
            run.prepare();
            run_statement(run, text("insert into accounts(account_identifier,user_name) values"
                                    "('other@example.org','Other'),('anna@mail.example.org','Anna (work)')"));
            run.extract();
            run.finish();
        }

        macos_source source;
        evidence::macos_mail_store &store;
        host_run run;
    };

private Q_SLOTS:
    void joins_index_mail_files_and_accounts_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<macos_index_form>("form");
        QTest::addColumn<change>("alter");
        QTest::addColumn<QByteArray>("expected");
        const auto row = [](const char *name, int generation, macos_index_form form, const char *expected,
                            const change &alter = {}) {
            QTest::newRow(name) << generation << form << alter << QByteArray(expected);
        };
        row("V7", 7, macos_index_form::v3_to_v7, "messages_v7.txt");
        row("V7 without in_reply_to", 7, macos_index_form::v3_to_v7_without_in_reply_to, "messages_v7.txt");
        row("V7 without indexes for the look-ups", 7, macos_index_form::v3_to_v7, "messages_v7.txt",
            sql("DROP INDEX recipients_message_id_index; CREATE TABLE copy AS SELECT * FROM attachments;"
                "DROP TABLE attachments; ALTER TABLE copy RENAME TO attachments"));
        row("V8 without date_created", 8, macos_index_form::v8, "messages_v8.txt");
        row("V9 without snippet", 9, macos_index_form::v9, "messages_v9.txt");
        row("V2", 2, macos_index_form::v2, "messages_v2.txt");
    }

    void joins_index_mail_files_and_accounts()
    {
        QFETCH(int, generation);
        QFETCH(macos_index_form, form);
        QFETCH(change, alter);
        QFETCH(QByteArray, expected);
        extraction evidence_of(generation, form, alter);
        const tree_snapshot before(evidence_of.source.tree.root());
        evidence_of.extract();
        compare_with(expected.constData(), evidence_of.run.rows(text("messages")));
        QCOMPARE(before.changes(), QString());
        QCOMPARE(evidence_of.run.record_signals.last(), 6);
    }

    void earlier_index_can_lack_replies()
    {
        extraction evidence_of(2, macos_index_form::v2_without_in_reply_to);
        evidence_of.extract();
        const auto select = [&](const char *rest) { return values_of(evidence_of.run, text("select ") + text(rest)); };
        QCOMPARE(select("count(*) from messages where reply_to is null"), texts({"6"}));
        QCOMPARE(select("subject from messages where row_id = 1"), texts({"Grüße \"an\" alle"}));
        QVERIFY(!evidence_of.run.log().join(QString()).contains(QLatin1String("FAILED")));
    }

    // The log of the first message.
    void logs_each_look_up()
    {
        for (const int generation : {7, 2}) {
            extraction evidence_of(generation);
            evidence_of.extract();
            const QStringList lines =
                expected_text(text("message_look_ups_v%1.txt").arg(generation).toUtf8().constData())
                    .split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            const QStringList log = evidence_of.run.log().filter(text("mail_macos::"));
            QCOMPARE(log.mid(log.indexOf(lines.first()), lines.size()), lines);
        }
    }

    void mailbox_without_account_ends_without_a_line()
    {
        extraction evidence_of(7);
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(text("mail_macos::sub_extract_mailbox_detail_11"));
        QCOMPARE(log.count(text("start")), 6);
        QCOMPARE(log.count(text("End")), 3); // of an account, the local one, and the one that is not there
    }

    void failures_data()
    {
        QTest::addColumn<int>("generation");
        QTest::addColumn<QByteArray>("script");
        QTest::addColumn<QString>("function");
        QTest::addColumn<int>("times");
        QTest::addColumn<QStringList>("failure");
        // A paragraph each: name, generation, change of the index, operation and times; behind it the lines of the
        // failure.
        for (const QString &section : expected_text("message_failures.txt").split(text("\n\n"), Qt::SkipEmptyParts)) {
            const QStringList lines = section.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            const QStringList head = lines.first().split(text(" | "));
            QTest::newRow(head.at(0).toUtf8().constData()) << head.at(1).toInt() << head.at(2).toUtf8() << head.at(3)
                                                           << head.at(4).toInt() << QStringList(lines.mid(1));
        }
    }

    // What one look-up lacks is missing in the rows; an index that cannot be read gives none. Either way the run ends.
    void failures()
    {
        QFETCH(int, generation);
        QFETCH(QByteArray, script);
        QFETCH(QString, function);
        QFETCH(int, times);
        QFETCH(QStringList, failure);
        extraction evidence_of(generation, sql(script));
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(text("mail_macos::") + function);
        QCOMPARE(log.count(failure.first()), times);
        QCOMPARE(log.mid(log.indexOf(failure.first()), failure.size()), failure);
        QCOMPARE(evidence_of.run.row_count(text("messages")), function.startsWith(text("sub")) ? 6 : 0);
        const QString operation = text(generation == 2 ? "mail_macos::extract_messages" : later_operation);
        QCOMPARE(evidence_of.run.log_of(operation).last(), text("end"));
    }

    // No database at all, none any more from the middle on, and ids that are no numbers.
    void damaged_index_keeps_what_can_be_read_data()
    {
        QTest::addColumn<damage>("alter");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("failures");
        const auto row = [](const char *name, int rows, int failures, const damage &alter) {
            QTest::newRow(name) << alter << rows << failures;
        };
        row("empty file", 0, 1, [](const QString &path) { QFile::resize(path, 0); });
        row("text", 0, 1, [](const QString &path) { evidence::write_file(path, QByteArray(9000, 'x')); });
        row("cut off", 0, 1, [](const QString &path) { QFile::resize(path, 5000); });
        row("damaged page", -1, 1, overwrite_page_of_messages);
        row("odd row ids", 5, 0, write_index_of_odd_row_ids);
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
        const tree_snapshot before(evidence_of.source.tree.root());
        evidence_of.extract();
        const QStringList log = evidence_of.run.log_of(text(later_operation));
        QCOMPARE(log.filter(text("select from messages ---------FAILED-------TMP/")).size(), failures);
        QCOMPARE(log.last(), text("end"));
        const int written = evidence_of.run.row_count(text("messages"));
        QVERIFY2(rows < 0 ? written > 6 && written < 2006 : written == rows, qPrintable(QString::number(written)));
        QCOMPARE(before.changes(), QString());
    }

    void rows_for_attachments_do_not_count()
    {
        extraction evidence_of(7, sql("DELETE FROM attachments"), texts({"all_attachments"}));
        evidence_of.extract();
        QCOMPARE(evidence_of.run.record_signals.last(), 0);
        QVERIFY(evidence_of.run.log_of(text(later_operation)).contains(text("end")));
    }

private:
    static void write_index_of_odd_row_ids(const QString &path)
    {
        QFile::remove(path);
        evidence::sqlite_file index(path);
        index.run(text("CREATE TABLE messages(ROWID TEXT, message_id, sender, subject_prefix, subject, date_sent, "
                       "date_received, date_last_viewed, mailbox, read, flagged, size, type, conversation_id);"
                       "INSERT INTO messages(ROWID) VALUES (NULL), ('../../1'), ('1'), (x'FF00FE'), ('%');"
                       "UPDATE messages SET message_id = x'C3', mailbox = 'imap', read = '1' WHERE ROWID = '1'"));
        index.finish();
    }

    static void overwrite_page_of_messages(const QString &path)
    {
        int page = 0;
        {
            QSqlDatabase index = QSqlDatabase::addDatabase(text("QSQLITE"), text("pages"));
            index.setDatabaseName(path);
            QVERIFY(index.open());
            QSqlQuery pages(text("select pageno from dbstat where name = 'messages' and pagetype = 'leaf' "
                                 "order by path limit 1 offset 5"),
                            index);
            page = pages.next() ? pages.value(0).toInt() : 0;
        }
        QSqlDatabase::removeDatabase(text("pages"));
        QFile file(path);
        QVERIFY(page > 0 && file.open(QIODevice::ReadWrite) && file.seek((page - 1) * 4096));
        file.write(QByteArray(4096, '\x55'));
    }
};

QTEST_MAIN(test_macos_messages)
#include "test_macos_messages.moc"
