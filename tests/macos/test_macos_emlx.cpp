// The table emlx_list: which files of a mail store it lists and how, and which of its rows a message finds.
#include "core/result_session.h"
#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "macos/emlx_catalog.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString messages_tab = QStringLiteral("messages");
const QString anna = QStringLiteral("anna");
const QString ben = QStringLiteral("ben");
const QString inbox = QStringLiteral("Users/anna/Library/Mail/V4/IMAP-a/INBOX.mbox/Messages/");

constexpr operation_log log_of_test{"test_macos_emlx"};
constexpr failure_text no_texts{"not opened "};

void execute(const QString &database_path, const QString &statement)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("emlx"));
        database.setDatabaseName(database_path);
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(statement));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("emlx"));
}

// The table, a line a different row: how often it stands there and its columns, NULL as "-". The order of rows is the
// file system's.
QString list_in(const host_run &run, const QString &root, const QString &source)
{
    QString text;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("emlx"));
        database.setDatabaseName(run.database_path());
        database.open();
        QSqlQuery query(database);
        query.exec(
            QLatin1String(
                "select count(*)||'x '||bookmark||' | '||file_name||' | '||file_path||' | '||source_file||' | '||"
                "ifnull(artifacts_relation_source_file,'-')||' | '||source_count_name from emlx_list "
                "where source_count_name = '") +
            source + QLatin1String("' group by file_path,source_file order by file_path"));
        while (query.next()) {
            text += query.value(0).toString().replace(root, QLatin1String("ROOT/")) + QLatin1Char('\n');
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("emlx"));
    return text;
}

} // namespace

class test_macos_emlx : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists_mail_files();
    void keeps_the_sources_apart();
    void logs_what_fails();
    void finds_the_first_row_data();
    void finds_the_first_row();
};

// Two users: each store of V4 is listed once for each of them, each of V2 once.
void test_macos_emlx::lists_mail_files()
{
    QTemporaryDir folder;
    QTemporaryDir outside;
    evidence::macos_mail_tree tree(folder.filePath(QStringLiteral("root")));
    tree.add_store(anna, 4);
    tree.add_store(ben, 2);
    for (const char *name : {"11.emlx", "12.partial.emlx", "13.EMLX", "14.emlx.bak", "._11.emlx", ".hidden/15.emlx",
                             "16.emlx/17.emlx", "q\"18\".emlx"}) {
        tree.add_file(inbox + QString::fromUtf8(name), "0\n");
    }
    const QString store = tree.store_folder(anna, 4);
    const QString in_store = tree.add_file(QStringLiteral("Users/anna/Library/Mail/V4/19.emlx"), "0\n");
    tree.add_file(QStringLiteral("Users/anna/Library/Mail/V2/POP-a/1.emlx"), "0\n");
    tree.add_file(QStringLiteral("Users/ben/Library/Mail/V2/Mailboxes/Notes.mbox/2.emlx"), "0\n");
    evidence::write_file(outside.filePath(QStringLiteral("mail")), "Bcc: examiner\n");
    const auto link = [&store](const QString &target, const char *name) {
        QVERIFY(QFile::link(target, store + QLatin1String("/IMAP-a/") + QLatin1String(name)));
    };
    link(in_store, "20.emlx");
    link(outside.filePath(QStringLiteral("mail")), "21.emlx");
    link(tree.downloads_folder(anna), "22.emlx");
    link(outside.path(), "23.emlx");
    link(store, "store");
    link(QStringLiteral("nowhere"), "24.emlx");
    tree.finish();

    const tree_snapshot snapshot(folder.path());
    host_run run(QStringLiteral("macOS"), tree.root(), {messages_tab});
    run.users = QStringList{anna, ben};
    run.run();

    const QString difference = difference_to_expected(list_in(run, tree.root(), QStringLiteral("Source1")),
                                                      QStringLiteral(EXPECTED_FOLDER "/emlx_list.txt"));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run.log_of(QStringLiteral("mail_macos::extract_emlx_file_location_11")),
             QStringList({QStringLiteral("start"), QStringLiteral("end")}));
    QCOMPARE(run.log_of(QStringLiteral("mail_macos::extract_emlx_file_location")),
             QStringList({QStringLiteral("start"), QStringLiteral("end")}));
    const QString changes = snapshot.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

// A second source, a home folder, into the same result database.
void test_macos_emlx::keeps_the_sources_apart()
{
    QTemporaryDir folder;
    evidence::macos_mail_tree tree(folder.filePath(QStringLiteral("root")));
    tree.add_store(anna, 4);
    tree.add_store(anna, 2);
    tree.add_file(inbox + QLatin1String("11.emlx"), "0\n");
    tree.add_file(QStringLiteral("Users/anna/Library/Mail/V2/POP-a/1.emlx"), "0\n");
    tree.finish();

    host_run run(QStringLiteral("macOS"), tree.root(), {messages_tab});
    run.users = QStringList{anna};
    run.run();
    const QString first = list_in(run, tree.root(), QStringLiteral("Source1"));
    run.source_count = 2;
    run.source_type = QStringLiteral("macOS_Home_Directory");
    run.run();

    QCOMPARE(list_in(run, tree.root(), QStringLiteral("Source1")), first);
    QCOMPARE(
        list_in(run, tree.root(), QStringLiteral("Source2")),
        QStringLiteral("1x 0 | 1.emlx | /Users/anna/Library/Mail/V2/POP-a/1.emlx | /Users/anna/Library/Mail/V2/POP-a | "
                       "/Users/anna/Library/Mail/V2/POP-a | Source2\n"
                       "1x 0 | 11.emlx | ROOT/Users/anna/Library/Mail/V4/IMAP-a/INBOX.mbox/Messages/11.emlx | "
                       "ROOT/Users/anna/Library/Mail/V4/IMAP-a | ROOT/Users/anna/Library/Mail/V4/IMAP-a | Source2\n"));
}

void test_macos_emlx::logs_what_fails()
{
    QTemporaryDir folder;
    evidence::macos_mail_tree tree(folder.filePath(QStringLiteral("root")));
    evidence::macos_mail_store &store = tree.add_store(anna, 4);
    evidence::macos_message mail;
    mail.row_id = 11;
    mail.mailbox = store.add_mailbox(QStringLiteral("local:///Notes"));
    mail.subject = store.add_subject(QStringLiteral("Hello"));
    mail.sender = store.add_address(QStringLiteral("ben@example.org"));
    store.add_message(mail);
    const QString path = tree.add_file(inbox + QLatin1String("\"11\".emlx"), "0\n");
    tree.finish();

    // The list leaves the quotes out of the path, and nothing stands there.
    const QString reader = QStringLiteral("mail_macos::get_cc_and_replytofield");
    host_run listed(QStringLiteral("macOS"), tree.root(), {messages_tab});
    listed.users = QStringList{anna};
    listed.run();
    QCOMPARE(listed.log_of(reader),
             QStringList({QLatin1String("file open -----FAILED-------SOURCE/") + inbox + QLatin1String("11.emlx"),
                          QStringLiteral("Error :- No such file or directory")}));

    host_run unlisted(QStringLiteral("macOS"), tree.root(), {messages_tab});
    unlisted.users = QStringList{anna};
    unlisted.prepare();
    execute(unlisted.database_path(), QStringLiteral("drop table emlx_list"));
    unlisted.extract();
    unlisted.finish();
    const QString no_table = QStringLiteral("Error :- no such table: emlx_list");
    QCOMPARE(
        unlisted.log_of(QStringLiteral("mail_macos::extract_emlx_file_location_11")),
        QStringList({QStringLiteral("start"),
                     QLatin1String("insert in emlx_list ----------FAILED------- ") + unlisted.database_path(), no_table,
                     QStringLiteral("Query :- insert into emlx_list (bookmark, file_path, file_name, source_file,"
                                    "artifacts_relation_source_file,source_count_name) values(?,?,?,?, ?,?)"),
                     QStringLiteral("end")}));
    const QStringList look_up = unlisted.log_of(QStringLiteral("mail_macos::sub_extract_emlx_file_for_messages_11_12"));
    QCOMPARE(
        look_up.mid(0, 3),
        QStringList({QStringLiteral("start"),
                     QLatin1String("Execute query_emlx ------FAILED------") + unlisted.database_path(), no_table}));
    QCOMPARE(unlisted.row_count(messages_tab), 1);
}

void test_macos_emlx::finds_the_first_row_data()
{
    QTest::addColumn<QString>("row_id");
    QTest::addColumn<QString>("path");
    const auto row = [](const char *name, const char *row_id, const char *path) {
        QTest::newRow(name) << QString::fromUtf8(row_id) << QString::fromUtf8(path);
    };
    row("whole mail file", "1", "/1.emlx");
    row("partial one alone", "2", "/2.partial.emlx");
    row("partial one listed first", "3", "/3.partial.emlx");
    row("whole one listed first", "4", "/4.emlx");
    row("listed twice", "5", "/5.emlx");
    row("of the other source", "6", "");
    row("of both sources", "7", "/7.emlx");
    row("negative row id", "-8", "/-8.emlx");
    row("leading zero", "01", "");
    row("no number", "9.partial", "/9.partial.emlx");
    row("no row id", "", "/.emlx");
    row("not listed", "10", "");
}

void test_macos_emlx::finds_the_first_row()
{
    QFETCH(QString, row_id);
    QFETCH(QString, path);
    QTemporaryDir folder;
    result_session session(log_of_test, folder.filePath(QStringLiteral("result.sqlite")));
    QVERIFY(session.open(no_texts));
    QVERIFY(session.database().execute(
        "create table emlx_list(INT INTEGER PRIMARY KEY,file_name VARCHAR(1024),file_path VARCHAR(1024),"
        "source_count_name VARCHAR(1024),source_file VARCHAR(1024));"
        "insert into emlx_list(source_count_name,file_name,file_path,source_file) values"
        "('Source2','6.emlx','/other',''),('Source2','7.emlx','/other',''),('Source1','1.emlx','/1.emlx','/account'),"
        "('Source1','2.partial.emlx','/2.partial.emlx','/account'),"
        "('Source1','3.partial.emlx','/3.partial.emlx','/account'),('Source1','3.emlx','/3.emlx',''),"
        "('Source1','4.emlx','/4.emlx','/account'),('Source1','4.partial.emlx','/4.partial.emlx',''),"
        "('Source1','5.emlx','/5.emlx','/account'),('Source1','5.emlx','/second',''),"
        "('Source1','7.emlx','/7.emlx','/account'),('Source1','-8.emlx','/-8.emlx','/account'),"
        "('Source1','9.partial.emlx','/9.partial.emlx','/account'),('Source1','.emlx','/.emlx','/account'),"
        "('Source1',NULL,'/none','')"));
    emlx_catalog catalog(session, QStringLiteral("Source1"));
    const struct_emlx emlx = catalog.find(row_id, log_of_test);
    QCOMPARE(emlx.file_path, path);
    QCOMPARE(emlx.file_name, path.mid(1));
    QCOMPARE(emlx.source_file, path.isEmpty() ? QString() : QStringLiteral("/account"));
}

QTEST_MAIN(test_macos_emlx)
#include "test_macos_emlx.moc"
