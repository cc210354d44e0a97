// The table all_attachments: the attachments of the messages of both index generations, where their files are looked
// for, and what becomes of folders that are hostile.
#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/macos/settled_rows.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <thread>

using evidence::macos_mail_store;
using evidence::macos_mail_tree;

namespace {

const QString attachments_tab = QStringLiteral("all_attachments");
const QString messages_tab = QStringLiteral("messages");
const QString box = QStringLiteral("IMAP-1/INBOX.mbox");
const QString later_operation = QStringLiteral("mail_macos::extract_allattachments_details_11_12");
const QString earlier_operation = QStringLiteral("mail_macos::extract_allattachments_details");

// Only a mail file with this line has its path in the row of a message of the later index.
const evidence::emlx_message answerable{{{"Reply-To", "list@example.org"}}, QStringLiteral("text"), {}, false, {}};

qint64 last_row_id = 0;

qint64 add_message(macos_mail_store &store, const char *subject, const QStringList &attachments)
{
    evidence::macos_message message;
    message.row_id = ++last_row_id; // of its own in each store, or the mail files would be taken for each other's
    message.message_id = 77;
    message.mailbox = store.add_mailbox(QStringLiteral("imap://anna@mail.example.org/INBOX"));
    message.sender = store.add_address(QStringLiteral("ben@example.org"));
    message.subject = store.add_subject(QString::fromUtf8(subject));
    message.date_sent = 1425205230;
    message.snippet = QStringLiteral("Hello");
    const qint64 row_id = store.add_message(message);
    store.add_recipients(row_id, {store.add_address(QStringLiteral("anna@example.org"))});
    store.add_recipients(row_id, {store.add_address(QStringLiteral("carl@example.org"))},
                         macos_mail_store::recipient_cc);
    for (const QString &attachment : attachments) {
        store.add_attachment(row_id, attachment);
    }
    return row_id;
}

// A message with a mail file that names an address to reply to.
qint64 add_mail(macos_mail_store &store, const char *subject, const QStringList &attachments)
{
    const qint64 row_id = add_message(store, subject, attachments);
    store.add_emlx(box, row_id, answerable);
    return row_id;
}

std::unique_ptr<host_run> new_run(const macos_mail_tree &tree, const QStringList &tabs)
{
    auto run = std::make_unique<host_run>(QStringLiteral("macOS"), tree.root(), tabs);
    run->users = QStringList{QStringLiteral("anna")};
    return run;
}

void run_statement(const host_run &run, const QString &statement)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QSqlQuery query(database);
        QVERIFY(query.exec(statement));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
}

// "name YES" or "name NO" of each row, in the order of the names.
QStringList found_files(const host_run &run)
{
    QStringList files;
    const QStringList rows = run.rows(attachments_tab).split(QStringLiteral("row\n"), Qt::SkipEmptyParts);
    for (const QString &row : rows) {
        const QRegularExpression form(
            QStringLiteral("  file_name = \"(.*)\"\n(?:  file_path = .*\n)?  file_exist = \"(.*)\"\n"));
        const QRegularExpressionMatch match = form.match(row);
        files.append(match.captured(1) + QLatin1Char(' ') + match.captured(2));
    }
    files.sort();
    return files;
}

} // namespace

class test_macos_attachments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        last_row_id = 0;
        folder = std::make_unique<QTemporaryDir>();
        tree = std::make_unique<macos_mail_tree>(folder->filePath(QStringLiteral("source")));
    }

    void both_generations();
    void home_folder();
    void what_leads_out_of_the_source();
    void rows_of_other_runs();
    void failures_of_the_result_database();
    void cancelled_from_another_thread();

private:
    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<macos_mail_tree> tree;
};

void test_macos_attachments::both_generations()
{
    for (const int generation : {2, 4}) {
        macos_mail_store &store = tree->add_store(QStringLiteral("anna"), generation);
        const qint64 first = add_mail(store, "All kinds",
                                      {QStringLiteral(".x"), QStringLiteral("a;b.txt"), QStringLiteral("gone.docx"),
                                       QStringLiteral("plan.pdf"), QStringLiteral("readme")});
        const QString plan =
            store.add_attachment_file(box, first, QStringLiteral("2"), QStringLiteral("plan.pdf"), "%PDF-1.4");
        evidence::write_file_metadata(
            plan,
            {{"kMDItemDateAdded", QDateTime::fromSecsSinceEpoch(1425205231, Qt::UTC)},
             {"kMDItemUsedDates", QVariantList{QDateTime::fromSecsSinceEpoch(1425168000, Qt::UTC),
                                               QDateTime::fromSecsSinceEpoch(1456790400, Qt::UTC)}}},
            evidence::metadata_place::apple_double);
        store.add_attachment_file(box, first, QStringLiteral("3"), QStringLiteral("readme"), "four");
        store.add_attachment_file(box, first, QStringLiteral("4"), QStringLiteral(".x"), "x");
        store.add_attachment_file(box, first, QStringLiteral("5"), QStringLiteral("a;b.txt"), "x");

        const qint64 without_address = add_message(store, "No address to reply to", {QStringLiteral("plan.pdf")});
        store.add_emlx(box, without_address, {{}, QStringLiteral("text"), {}, false, {}});
        store.add_attachment_file(box, without_address, QStringLiteral("2"), QStringLiteral("plan.pdf"), "second");

        const qint64 partial =
            add_message(store, "Partial", {QStringLiteral("twice.txt"), QStringLiteral("twice.txt ")});
        evidence::emlx_message partial_mail = answerable;
        partial_mail.is_partial = true;
        store.add_emlx(box, partial, partial_mail);
        store.add_attachment_file(box, partial, QStringLiteral("2"), QStringLiteral("twice.txt"), "once");
        store.add_attachment_file(box, partial, QStringLiteral("3"), QStringLiteral("twice.txt"), "once");

        add_message(store, "No mail file", {QStringLiteral("gone.pdf")});
        add_mail(store, "No attachments", {});
    }
    tree->finish();
    const tree_snapshot before(folder->path());

    const auto run = new_run(*tree, {attachments_tab});
    run->run();

    QCOMPARE(before.changes(), QString());
    // Which of the two files of one name comes first is the file system's choice.
    QString rows = settled_rows(*run, attachments_tab);
    rows.replace(QLatin1String("/3/twice.txt"), QLatin1String("/2/twice.txt"));
    const QString difference = difference_to_expected(rows, QStringLiteral(EXPECTED_FOLDER "/all_attachments.txt"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run->row_count(messages_tab), 0);
    QCOMPARE(run->record_signals.last(), run->row_count(attachments_tab));
    for (const QString &operation : {earlier_operation, later_operation}) {
        QCOMPARE(run->log_of(operation), (QStringList{QStringLiteral("starts"), QStringLiteral("ends")}));
    }
}

// The stored path of a mail file has lost the user, so nothing is found below the source root.
void test_macos_attachments::home_folder()
{
    for (const int generation : {2, 4}) {
        macos_mail_store &store = tree->add_store(QStringLiteral("anna"), generation);
        const qint64 mail = add_mail(store, "Mail", {QStringLiteral("plan.pdf")});
        store.add_attachment_file(box, mail, QStringLiteral("2"), QStringLiteral("plan.pdf"), "x");
    }
    tree->finish();

    const auto run = new_run(*tree, {attachments_tab});
    run->source_type = QStringLiteral("macOS_Home_Directory");
    run->run();

    const QString difference = difference_to_expected(settled_rows(*run, attachments_tab),
                                                      QStringLiteral(EXPECTED_FOLDER "/all_attachments_home.txt"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void test_macos_attachments::what_leads_out_of_the_source()
{
    const QString outside = folder->filePath(QStringLiteral("outside"));
    evidence::make_folder(outside);
    evidence::write_file(outside + QLatin1String("/secret.txt"), "of the examiner");
    // Beside the source root: where a folder without a slash in front would be looked for.
    evidence::make_folder(folder->filePath(QStringLiteral("sourceAttachments")));
    evidence::write_file(folder->filePath(QStringLiteral("sourceAttachments/secret.txt")), "of the examiner");

    for (const int generation : {2, 4}) {
        macos_mail_store &store = tree->add_store(QStringLiteral("anna"), generation);
        const qint64 links =
            add_mail(store, "Links",
                     {QStringLiteral("out"), QStringLiteral("in"), QStringLiteral("subfolder"),
                      QStringLiteral("secret.txt"), QStringLiteral("../1/2/in"), QStringLiteral("..")});
        const QString inside =
            store.add_attachment_file(box, links, QStringLiteral("2"), QStringLiteral("target"), "inside");
        const QString parts = evidence::folder_of(inside) + QLatin1Char('/');
        QVERIFY(QFile::link(outside + QLatin1String("/secret.txt"), parts + QLatin1String("out")));
        QVERIFY(QFile::link(inside, parts + QLatin1String("in")));
        QVERIFY(QFile::link(outside, parts + QLatin1String("subfolder")));
        QVERIFY(QFile::link(parts, parts + QLatin1String("cycle")));

        const qint64 linked_folder = add_mail(store, "Linked folder", {QStringLiteral("secret.txt")});
        const QString attachments = evidence::folder_of(evidence::folder_of(evidence::folder_of(inside)));
        QVERIFY(QFile::link(outside, attachments + QLatin1Char('/') + QString::number(linked_folder)));
        add_message(store, "No mail file", {QStringLiteral("secret.txt")});
    }
    tree->finish();

    const auto run = new_run(*tree, {attachments_tab});
    run->run();

    const QStringList files = found_files(*run);
    QCOMPARE(files.size(), 16);
    QCOMPARE(files.filter(QStringLiteral("YES")), (QStringList{QStringLiteral(" in YES"), QStringLiteral(" in YES")}));
}

// Rows of another source, and of an earlier run of the same, stand in messages already.
void test_macos_attachments::rows_of_other_runs()
{
    macos_mail_store &store = tree->add_store(QStringLiteral("anna"), 4);
    add_mail(store, "Mail", {QStringLiteral("a"), QStringLiteral("b")});
    tree->finish();

    const auto run = new_run(*tree, {messages_tab, attachments_tab});
    int rows = 0;
    for (const int source_count : {1, 2, 2}) {
        run->source_count = source_count;
        run->prepare();
        run->extract();
        rows += 2;
        QCOMPARE(run->row_count(attachments_tab), rows);
    }
    QCOMPARE(run->row_count(messages_tab), 3);
}

void test_macos_attachments::failures_of_the_result_database()
{
    for (const int generation : {2, 4}) {
        add_mail(tree->add_store(QStringLiteral("anna"), generation), "Mail", {QStringLiteral("a")});
    }
    tree->finish();

    const auto refusing = new_run(*tree, {attachments_tab});
    refusing->prepare();
    run_statement(*refusing, QStringLiteral("create trigger refuse before insert on all_attachments begin select "
                                            "raise(abort, 'no row'); end"));
    refusing->extract();
    const auto unreadable = new_run(*tree, {attachments_tab});
    unreadable->prepare();
    run_statement(*unreadable, QStringLiteral("drop table messages"));
    unreadable->extract();
    for (const QString &operation : {earlier_operation, later_operation}) {
        const QStringList insert_lines = refusing->log_of(operation);
        QCOMPARE(insert_lines.size(), 5);
        QCOMPARE(insert_lines.mid(1, 2), (QStringList{QStringLiteral("insert in allattachments --------FAILED------") +
                                                          refusing->database_path(),
                                                      QStringLiteral("Error :- no row")}));
        QVERIFY(insert_lines.at(3).startsWith(QLatin1String("Query :- insert into all_attachments(bookmark, system")));

        const QStringList select_lines = unreadable->log_of(operation);
        QCOMPARE(select_lines.size(), 4);
        QCOMPARE(select_lines.mid(1, 2), (QStringList{QStringLiteral("select from messages --------FAILED------- ") +
                                                          unreadable->database_path(),
                                                      QStringLiteral("Error :- no such table: messages")}));
    }
    QCOMPARE(refusing->record_signals.last(), 0);
    QVERIFY(unreadable->log_of(later_operation)
                .at(3)
                .endsWith(QLatin1String("where attachment_filename != \"\"AND source_count_name = 'Source1'")));
    QVERIFY(unreadable->log_of(earlier_operation)
                .at(3)
                .endsWith(QLatin1String("where attachment_filename != \"\" AND source_count_name = ?")));
}

void test_macos_attachments::cancelled_from_another_thread()
{
    constexpr int attachment_count = 50000;
    macos_mail_store &store = tree->add_store(QStringLiteral("anna"), 4);
    QStringList names;
    for (int i = 0; i < attachment_count; ++i) {
        names.append(QString::number(i));
    }
    add_mail(store, "Many", names);
    tree->finish();

    const auto run = new_run(*tree, {messages_tab, attachments_tab});
    run->prepare();
    std::thread host;
    QObject::connect(&run->plugin(), &mail::signal_tab_processed_of_plugin_overall, [&](int) {
        host = std::thread([&run] {
            std::this_thread::sleep_for(std::chrono::milliseconds(40));
            run->plugin().pub_cancel_extraction();
        });
    });
    run->extract();
    host.join();

    const int rows = run->row_count(attachments_tab);
    QVERIFY2(rows > 0 && rows < attachment_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->log_of(later_operation), QStringList{QStringLiteral("starts")});
    QCOMPARE(run->tab_signals, QList<int>{1});
}

QTEST_MAIN(test_macos_attachments)
#include "test_macos_attachments.moc"
