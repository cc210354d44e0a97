// The table emlx_list: which files of a mail store it lists and how, and which of its rows a message finds.
#include "core/result_session.h"
#include "macos/emlx_catalog.h"
#include "tests/macos/macos_run.h"

namespace {

const QString messages_tab = text("messages");
const QString anna = text("anna");
const QString ben = text("ben");
const QString inbox = text("Users/anna/Library/Mail/V4/IMAP-a/INBOX.mbox/Messages/");

constexpr operation_log log_of_test{"test_macos_emlx"};
constexpr failure_text no_texts{"not opened "};

// The table, a line a different row: how often it stands there and its columns, NULL as "-". The order of rows is the
// file system's.
QString list_in(const host_run &run, const QString &root, const char *source)
{
    const QString select =
        text("select count(*)||'x '||bookmark||' | '||file_name||' | '||file_path||' | '||source_file||' | '||"
             "ifnull(artifacts_relation_source_file,'-')||' | '||source_count_name||char(10) from emlx_list "
             "where source_count_name = '%1' group by file_path,source_file order by file_path");
    return values_of(run, select.arg(text(source))).join(QString()).replace(root, text("ROOT/"));
}

} // namespace

class test_macos_emlx : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lists_mail_files();
    void keeps_the_sources_apart();
    void mail_file_that_is_not_there();
    void finds_the_first_row();
};

// Two users: each store of V4 is listed once for each of them, each of V2 once.
void test_macos_emlx::lists_mail_files()
{
    QTemporaryDir folder;
    QTemporaryDir outside;
    evidence::macos_mail_tree tree(folder.filePath(text("root")));
    tree.add_store(anna, 4);
    tree.add_store(ben, 2);
    for (const char *name : {"11.emlx", "12.partial.emlx", "13.EMLX", "14.emlx.bak", "._11.emlx", ".hidden/15.emlx",
                             "16.emlx/17.emlx", "q\"18\".emlx"}) {
        tree.add_file(inbox + QString::fromUtf8(name), "0\n");
    }
    const QString store = tree.store_folder(anna, 4);
    const QString in_store = tree.add_file(text("Users/anna/Library/Mail/V4/19.emlx"), "0\n");
    tree.add_file(text("Users/anna/Library/Mail/V2/POP-a/1.emlx"), "0\n");
    tree.add_file(text("Users/ben/Library/Mail/V2/Mailboxes/Notes.mbox/2.emlx"), "0\n");
    evidence::write_file(outside.filePath(text("mail")), "Bcc: examiner\n");
    const auto link = [&store](const QString &target, const char *name) {
        QVERIFY(QFile::link(target, store + text("/IMAP-a/") + text(name)));
    };
    link(in_store, "20.emlx");
    link(outside.filePath(text("mail")), "21.emlx");
    link(tree.downloads_folder(anna), "22.emlx");
    link(outside.path(), "23.emlx");
    link(store, "store");
    link(text("nowhere"), "24.emlx");
    tree.finish();

    const tree_snapshot snapshot(folder.path());
    const auto run = whole_run(tree, {messages_tab}, {anna, ben});

    compare_with("emlx_list.txt", list_in(*run, tree.root(), "Source1"));
    QCOMPARE(run->log_of(text("mail_macos::extract_emlx_file_location_11")), texts({"start", "end"}));
    QCOMPARE(run->log_of(text("mail_macos::extract_emlx_file_location")), texts({"start", "end"}));
    QCOMPARE(snapshot.changes(), QString());
}

// A second source, a home folder, into the same result database.
void test_macos_emlx::keeps_the_sources_apart()
{
    QTemporaryDir folder;
    evidence::macos_mail_tree tree(folder.filePath(text("root")));
    tree.add_store(anna, 4);
    tree.add_store(anna, 2);
    tree.add_file(inbox + QLatin1String("11.emlx"), "0\n");
    tree.add_file(text("Users/anna/Library/Mail/V2/POP-a/1.emlx"), "0\n");
    tree.finish();

    const auto run = whole_run(tree, {messages_tab});
    const QString first = list_in(*run, tree.root(), "Source1");
    run->source_count = 2;
    run->source_type = text("macOS_Home_Directory");
    run->run();

    QCOMPARE(list_in(*run, tree.root(), "Source1"), first);
    QCOMPARE(list_in(*run, tree.root(), "Source2"),
             text("1x 0 | 1.emlx | /Users/anna/Library/Mail/V2/POP-a/1.emlx | /Users/anna/Library/Mail/V2/POP-a | "
                  "/Users/anna/Library/Mail/V2/POP-a | Source2\n"
                  "1x 0 | 11.emlx | ROOT/Users/anna/Library/Mail/V4/IMAP-a/INBOX.mbox/Messages/11.emlx | "
                  "ROOT/Users/anna/Library/Mail/V4/IMAP-a | ROOT/Users/anna/Library/Mail/V4/IMAP-a | Source2\n"));
}

// The list leaves the quotes out of the path, and nothing stands there.
void test_macos_emlx::mail_file_that_is_not_there()
{
    QTemporaryDir folder;
    evidence::macos_mail_tree tree(folder.filePath(text("root")));
    evidence::macos_message mail;
    mail.row_id = 11;
    tree.add_store(anna, 4).add_message(mail);
    tree.add_file(inbox + text("\"11\".emlx"), "0\n");
    tree.finish();

    const auto run = whole_run(tree, {messages_tab});

    QCOMPARE(run->log_of(text("mail_macos::get_cc_and_replytofield")),
             QStringList({text("file open -----FAILED-------SOURCE/") + inbox + text("11.emlx"),
                          text("Error :- No such file or directory")}));
}

void test_macos_emlx::finds_the_first_row()
{
    QTemporaryDir folder;
    result_session session(log_of_test, folder.filePath(text("result.sqlite")));
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
    constexpr std::pair<const char *, const char *> looked_up[] = {
        {"1", "/1.emlx"},                 // a whole mail file
        {"2", "/2.partial.emlx"},         // a partial one alone
        {"3", "/3.partial.emlx"},         // a partial one listed first
        {"4", "/4.emlx"},                 // a whole one listed first
        {"5", "/5.emlx"},                 // listed twice
        {"6", ""},                        // of the other source
        {"7", "/7.emlx"},                 // of both sources
        {"-8", "/-8.emlx"},               // a negative row id
        {"01", ""},                       // a leading zero
        {"9.partial", "/9.partial.emlx"}, // no number
        {"", "/.emlx"},                   // no row id
        {"10", ""},                       // not listed
    };
    emlx_catalog catalog(session, text("Source1"));
    for (const auto &[row_id, path] : looked_up) {
        const struct_emlx emlx = catalog.find(text(row_id), log_of_test);
        QCOMPARE(emlx.file_path, text(path));
        QCOMPARE(emlx.file_name, text(path).mid(1));
        QCOMPARE(emlx.source_file, text(*path ? "/account" : ""));
    }
}

QTEST_MAIN(test_macos_emlx)
#include "test_macos_emlx.moc"
