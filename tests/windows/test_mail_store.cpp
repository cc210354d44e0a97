// The mail application's own store: rows of its three tables and of the mail files that its messages name, what is
// logged on the way, and what ends the walk.
#include "evidence/ese_file.h"
#include "evidence/files.h"
#include "evidence/windows_mail_store.h"
#include "evidence/windows_profile.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <sys/stat.h>
#include <thread>

namespace {

using type = evidence::ese_type;
using value = evidence::ese_value;

const QString anna = QStringLiteral("anna:CORP");
const QString parse = QStringLiteral("mail_winos::edb_data_parse");
const QString container = QStringLiteral("mail_winos::container_func");
const QString start_line = QStringLiteral("[edb_data_parse]  ---starts---");
const QString table_end = QStringLiteral("[edb_data_parse]-------END OF A TABLE------");
const QString end_line = QStringLiteral("[edb_data_parse]  ---ends--- ");
const QString local_state =
    QStringLiteral("/AppData/Local/Packages/microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/");

// The rows of a table, a line a row, "|" between the values; NULL, numbers and texts look different. In: the columns,
// or expressions of them, with ";" between.
QString rows_of(const host_run &run, const QString &root, const char *table, const char *columns)
{
    QStringList quoted;
    for (const QByteArray &column : QByteArray(columns).split(';')) {
        quoted.append(QLatin1String("quote(") + QString::fromUtf8(column) + QLatin1Char(')'));
    }
    const QString statement = QStringLiteral("select %1 from %2 order by source_file, INT");
    QString text;
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("rows"));
        database.setDatabaseName(run.database_path());
        database.open();
        QSqlQuery query(statement.arg(quoted.join(QLatin1String("||'|'||")), QLatin1String(table)), database);
        while (query.next()) {
            text += query.value(0).toString() + QLatin1Char('\n');
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("rows"));
    const QString state = QLatin1String("/Users/anna") + local_state;
    return text.replace(root + state, QLatin1String("ROOT/")).replace(state, QLatin1String("STATE/"));
}

evidence::ese_column column(const char *name, type column_type)
{
    evidence::ese_column described;
    described.name = name;
    described.type = column_type;
    return described;
}

void write_table(const QString &path, const char *name, const std::vector<evidence::ese_column> &columns,
                 const std::vector<std::vector<value>> &records)
{
    evidence::ese_file file(path);
    evidence::ese_table table = file.add_table(name, columns);
    for (const std::vector<value> &record : records) {
        table.add_record(record);
    }
    file.finish();
}

evidence::windows_mail_message message_with(const char *eml_file)
{
    evidence::windows_mail_message message;
    message.eml_file = QString::fromUtf8(eml_file);
    message.mime_message_id = message.eml_file.section(QLatin1Char('\\'), -1);
    return message;
}

// The source with what the application of anna keeps, and files outside that nothing may lead to.
struct store_tree
{
    QTemporaryDir folder;
    QString root = folder.filePath(QStringLiteral("source"));
    evidence::windows_profile profile{root, QStringLiteral("anna")};

    QString add(const char *name, const QByteArray &content)
    {
        const QString path = profile.add_package_file(QString::fromLatin1(name), content);
        const timespec times[] = {{1425201640, 0}, {1425201630, 0}}; // read, modified
        ::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times, 0);
        return path;
    }
    QString database(const char *name) const { return profile.local_state_path() + QLatin1String(name); }
    void write_files();
    void write_store();
    void write_store_of_other_types();
};

void store_tree::write_files()
{
    add("Files/S0/1.dat", "12345");
    add("Files/S0/3/1.eml", "From: Anna <anna@example.org>\r\nTo: <ben@example.org>\r\nSubject: Offer\r\n"
                            "Importance: high\r\nDate: Mon, 2 Mar 2015 10:20:30 +0100\r\n\r\nbody\r\n");
    add("Files/2.eml", "From: Ben\n");
    add("Files/no sender.eml", "To: x\n");
    add("Files/empty.eml", "");
    evidence::write_file(folder.filePath(QStringLiteral("outside.eml")), "From: outside\n");
    for (const char *link : {"Files/link.dat", "Files/link.eml"}) {
        QVERIFY(QFile::link(folder.filePath(QStringLiteral("outside.eml")), database(link)));
    }
    add("DBStore/store.dat", "no database"); // these two are none of the store
    write_table(database("Other/a.edb"), "MailConversation", {column("LatestSenderEmail", type::long_text)},
                {{value::text(QStringLiteral("other@example.org"))}});
}

void store_tree::write_store()
{
    const auto text = [](const char *written) { return QString::fromUtf8(written); };
    const QString outside = QStringLiteral("..\\").repeated(8) + QLatin1String("outside.eml");
    evidence::windows_mail_store store(database("DBStore/a.edb"));
    store.add(evidence::windows_mail_attachment{10, text("report.v2.pdf"), text("application/pdf"),
                                                text("Files\\S0\\1.dat"), text("<c1>"), text("here"), 0});
    store.add(evidence::windows_mail_attachment{{}, text("noext"), {}, text(""), {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, text("out.txt"), {}, outside, {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, text("a.b."), {}, text("Files\\link.dat"), {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, text("Gr\U0001F600.x"), {}, text("gone.dat"), {}, {}, {}});

    store.add(evidence::windows_mail_conversation{1, 1, text("Änna \U0001F600"), text("anna@example.org"), text("Anna"),
                                                  text("Plans"), 3, 2});
    store.add(evidence::windows_mail_conversation{1, 1, text("X"), {}, text("Y"), text("Z"), 9, 9}); // no row
    store.add(evidence::windows_mail_conversation{{}, {}, {}, text("only@example.org"), {}, {}, {}, {}});

    evidence::windows_mail_message full = message_with("Files\\S0\\3\\1.eml");
    full.conversation_server_id = text("77");
    full.from = text("Anna \U0001F600 <anna@example.org>");
    full.from_email = text("anna@example.org");
    full.from_name = text("Anna");
    full.gmail_message_id = text("1234");
    full.imap_uid = 4000000000;
    full.last_modified_body_type = 2;
    full.preview_text = text("Hello there");
    full.reply_to = text("reply@example.org");
    full.subject = text("ä").repeated(6000) + QLatin1String("end");
    full.to = text("ben@example.org");
    store.add(full);
    evidence::windows_mail_message with_html = message_with("Files\\S0\\3\\1.eml");
    with_html.preview_text = text("see <html> below");
    store.add(with_html);
    for (const char *file : {"Files\\link.eml", "Files\\no sender.eml", "Files\\empty.eml", "Files\\2.eml"}) {
        store.add(message_with(file));
    }
    store.add(message_with(outside.toUtf8().constData()));
    store.add(evidence::windows_mail_message{});
    store.finish();
}

// A column counts only in its type; of what a table does not have nothing is known.
void store_tree::write_store_of_other_types()
{
    const auto text = [](const char *written) { return value::text(QString::fromUtf8(written)); };
    evidence::ese_file file(database("xDBStore/b.edb"));
    file.add_table("MailAttachment", {column("FileName", type::text), column("ContentType", type::long_text),
                                      column("ContentId", type::unsigned32), column("BodyFile", type::long_text)})
        .add_record({text("name.txt"), text("a/b"), value::number(7), text("Files\\S0\\1.dat")});
    file.add_table("MailMessage", {column("From", type::text), column("Subject", type::long_text),
                                   column("ImapUID", type::signed32), column("To", type::long_binary)})
        .add_record({text("no"), text("typed"), value::number(7), value::bytes("no")});
    file.finish();
}

// The walk of one tab.
struct store_run : host_run
{
    store_run(const QString &root, const char *tab, const QStringList &accounts = {anna})
        : host_run(QStringLiteral("winOS"), root, {QString::fromLatin1(tab)})
    {
        users = accounts;
    }
};

QString compared(const QString &actual, const char *name)
{
    return difference_to_expected(actual, QFINDTESTDATA("expected") + QLatin1Char('/') + QLatin1String(name));
}

} // namespace

class test_mail_store : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_attachments();
    void rows_of_conversations();
    void rows_of_messages_and_mail_files();
    void lines_of_a_record();
    void file_that_ends_the_tab_data();
    void file_that_ends_the_tab();
    void result_database_fails();
    void cancelled();
};

void test_mail_store::rows_of_attachments()
{
    store_tree tree;
    tree.write_files();
    tree.write_store();
    tree.write_store_of_other_types();
    const tree_snapshot before(tree.folder.path());
    store_run run(tree.root, "all_attachments");
    run.run();
    // The size of a folder is that of this machine; times are told of files alone.
    const QString rows = rows_of(run, tree.root, "all_attachments",
                                 "bookmark;system_user;domain_user;bodyfile;message_id;contentlocation;content_type;"
                                 "file_name;iif(bodyfile='','folder',file_size);suffix;file_exist;file_path;"
                                 "preview_file_path=file_path and export_file_paths=file_path;"
                                 "content_modification_date;content_creation_date>0;"
                                 "source_file;source_count_name;os_scheme_display");
    const QString difference = compared(rows, "mail_store_attachments.txt");
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
    QCOMPARE(run.record_signals.last(), 0); // these rows are not counted
}

// One of the two databases has no such table, which is told where its records would be counted.
void test_mail_store::rows_of_conversations()
{
    store_tree tree;
    tree.write_files();
    tree.write_store();
    tree.write_store_of_other_types();
    store_run run(tree.root, "mailconversation");
    run.run();
    const QString difference = compared(run.rows(QStringLiteral("mailconversation")), "mail_store_conversations.txt");
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QString found = QStringLiteral("[edb_data_parse] table found: MailConversation");
    QCOMPARE(run.log_of(parse), (QStringList{start_line, found, table_end, found, table_end, end_line}));
    const QStringList log = run.log_of(container);
    const int missing =
        log.indexOf(QStringLiteral("[container_func]  unable to retrieve total number of records in table : \\n"));
    QCOMPARE(log.mid(missing + 1, 4),
             (QStringList{QStringLiteral("[container_func]number of records inside table: 0"),
                          QStringLiteral("[container_func] \\n"),
                          QStringLiteral("[container_func] unable to retrieve number of columns: \\n"),
                          QStringLiteral("[container_func] no of columns are: 0")}));
}

void test_mail_store::rows_of_messages_and_mail_files()
{
    store_tree tree;
    tree.write_files();
    tree.write_store();
    tree.write_store_of_other_types();
    store_run run(tree.root, "messages");
    run.run();
    const QString messages =
        rows_of(run, tree.root, "messages",
                "bookmark;system_user;domain_user;conversation_id;emlx_file_name;file_exist;"
                "iif(emlx_file_name='','folder',emlx_file_size);emlx_file_path;"
                "preview_file_path=emlx_file_path and export_file_paths=emlx_file_path;"
                "content_modification_date;"
                "last_used_date;content_creation_date>0;from_str;fromemail;fromname;"
                "gmailmapuniquemessegeid;imapuid;lastmodifiedbodytype;mimemessegeid;previewtext;reply_to;"
                "replace(subject,replace(hex(zeroblob(3000)),'00','ää'),'6000 times ä, ');to_str;source_file;"
                "source_count_name;os_scheme_display");
    QString difference = compared(messages, "mail_store_messages.txt");
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QString mail_files = rows_of(run, tree.root, "mail_data",
                                       "bookmark;system_user;domain_user;replace(from_mail,x'0d0a','/');"
                                       "replace(to_mail,x'0d0a','/');replace(subject,x'0d0a','/');"
                                       "replace(importance,x'0d0a','/');inside_text;replace(date,x'0d0a','/');"
                                       "file_name;source_file;source_count_name;os_scheme_display");
    difference = compared(mail_files, "mail_store_mail_files.txt");
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run.log_of(QStringLiteral("mail_winos::extract_eml_info")).filter(QStringLiteral("errorString")).size(),
             4);
}

// Fixed columns come first, then variable and tagged ones.
void test_mail_store::lines_of_a_record()
{
    store_tree tree;
    write_table(tree.database("DBStore/a.edb"), "MailConversation",
                {column("Id", type::signed32), column("Importance", type::unsigned32),
                 column("LatestMessageTime", type::signed64), column("Flags", type::signed16),
                 column("ConversationServerId", type::text), column("Key", type::binary),
                 column("LatestSender", type::long_text), column("Unknown", type::long_text)},
                {{value::number(1), value::number(5), value::number(-1), value::number(2),
                  value::text(QStringLiteral("c")), value::bytes("k"), value::text(QStringLiteral("Anna"))}});
    store_run run(tree.root, "mailconversation");
    run.run();
    const QString difference =
        compared(run.log_of(container).join(QLatin1Char('\n')) + QLatin1Char('\n'), "mail_store_log.txt");
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run.row_count(QStringLiteral("mailconversation")), 0);
}

void test_mail_store::file_that_ends_the_tab_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("rows"); // of the user behind
    QTest::newRow("no database") << QByteArray("no database") << 0;
    QTest::newRow("nothing") << QByteArray("") << 0;
    QTest::newRow("its first bytes") << QByteArray("\x01\x02\x03\x04\xef\xcd\xab\x89", 8) << 0;
    QTest::newRow("a folder, which is passed over") << QByteArray() << 1;
}

void test_mail_store::file_that_ends_the_tab()
{
    QFETCH(QByteArray, content);
    QFETCH(int, rows);
    store_tree tree;
    if (content.isNull()) {
        evidence::make_folder(tree.database("DBStore/a.edb"));
    } else {
        tree.add("DBStore/a.edb", content);
    }
    const evidence::windows_profile ben(tree.root, QStringLiteral("ben"));
    write_table(ben.local_state_path() + QLatin1String("DBStore/a.edb"), "MailConversation",
                {column("LatestSenderEmail", type::long_text)}, {{value::text(QStringLiteral("ben@example.org"))}});
    store_run run(tree.root, "mailconversation", {anna, QStringLiteral("ben")});
    run.run();
    QCOMPARE(run.row_count(QStringLiteral("mailconversation")), rows);
    if (rows == 0) {
        QCOMPARE(run.log_of(parse),
                 (QStringList{start_line, QLatin1String("[working_func] file open ---FAILED---SOURCE/Users/anna") +
                                              local_state + QLatin1String("DBStore/a.edb")}));
    }
}

void test_mail_store::result_database_fails()
{
    store_tree tree;
    tree.write_files();
    tree.write_store();
    store_run run(tree.root, "mailconversation");
    run.prepare();
    QVERIFY(QFile::remove(run.database_path()) && QDir().mkdir(run.database_path()));
    run.extract();
    const QStringList log = run.log_of(container);
    QCOMPARE(log.count(QStringLiteral("[container_func] ---- start of new record ----")), 1);
    QCOMPARE(log.mid(log.size() - 2),
             (QStringList{QStringLiteral("[container_func] Destination Db opening FAILED "),
                          QStringLiteral("[container_func] destination_db.lastError().text()")}));
    QCOMPARE(run.log_of(parse).mid(2), (QStringList{table_end, end_line}));
}

// In the middle of a table, from another thread, as a host does. What was read before keeps its row.
void test_mail_store::cancelled()
{
    constexpr int records = 20000;
    store_tree tree;
    write_table(tree.database("DBStore/a.edb"), "MailConversation", {column("LatestSenderEmail", type::long_text)},
                std::vector<std::vector<value>>(records, {value::text(QStringLiteral("a@example.org"))}));
    store_run run(tree.root, "mailconversation");
    run.prepare();
    std::thread host([&run] {
        while (!run.log_of(container).contains(QStringLiteral("[container_func] ---- start of new record ----"))) {
            std::this_thread::yield();
        }
        run.plugin().pub_cancel_extraction();
    });
    run.extract();
    host.join();
    const int rows = run.row_count(QStringLiteral("mailconversation"));
    QVERIFY2(rows < records, qPrintable(QString::number(rows)));
    QCOMPARE(run.log_of(parse).last(), table_end);
}

QTEST_MAIN(test_mail_store)
#include "test_mail_store.moc"
