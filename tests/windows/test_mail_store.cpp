// The mail application's own store: rows of its three tables and of the mail files that its messages name, what is
// logged on the way, and what ends the walk.
#include "evidence/files.h"
#include "evidence/windows_mail_store.h"
#include "evidence/windows_profile.h"
#include "tests/evidence/ese_tables.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/winos_run.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <thread>

namespace {

using type = evidence::ese_type;
using value = evidence::ese_value;

constexpr const char *parse = "edb_data_parse";
constexpr const char *container = "container_func";
const QString start_line = utf8("[edb_data_parse]  ---starts---");
const QString table_end = utf8("[edb_data_parse]-------END OF A TABLE------");
const QString end_line = utf8("[edb_data_parse]  ---ends--- ");
const QString local_state =
    utf8("/AppData/Local/Packages/microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/");

// The rows of a table, a line a row, "|" between the values; NULL, numbers and texts look different. In: the columns,
// or expressions of them, with ";" between, beside those that all tables have.
QString rows_of(const winos_run &run, const QString &root, const char *table, const char *columns)
{
    QStringList quoted;
    const QByteArray all =
        QByteArray("bookmark;system_user;domain_user;") + columns + ";source_file;source_count_name;os_scheme_display";
    for (const QByteArray &column : all.split(';')) {
        quoted.append(QLatin1String("quote(") + QString::fromUtf8(column) + QLatin1Char(')'));
    }
    const QString statement = utf8("select %1 from %2 order by source_file, INT");
    const QString state = QLatin1String("/Users/anna") + local_state;
    return run.found_by(statement.arg(quoted.join(QLatin1String("||'|'||")), QLatin1String(table)))
        .replace(root + state, QLatin1String("ROOT/"))
        .replace(state, QLatin1String("STATE/"))
        .replace(QLatin1String("\r\n"), QLatin1String("/"))
        .replace(utf8("ä").repeated(6000), utf8("6000 times ä, "));
}

evidence::windows_mail_message message_with(const char *eml_file)
{
    evidence::windows_mail_message message;
    message.eml_file = utf8(eml_file);
    message.mime_message_id = message.eml_file.section(QLatin1Char('\\'), -1);
    return message;
}

// The source with what the application of anna keeps, and files outside that nothing may lead to.
struct store_tree
{
    QTemporaryDir folder;
    QString root = folder.filePath(utf8("source"));
    evidence::windows_profile profile{root, utf8("anna")};

    void add(const char *name, const QByteArray &content)
    {
        set_modified(profile.add_package_file(utf8(name), content), 1425201630);
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
    evidence::write_file(folder.filePath(utf8("outside.eml")), "From: outside\n");
    for (const char *link : {"Files/link.dat", "Files/link.eml"}) {
        QVERIFY(QFile::link(folder.filePath(utf8("outside.eml")), database(link)));
    }
    add("DBStore/store.dat", "no database"); // these two are none of the store
    write_table(database("Other/a.edb"), "MailConversation", {{"LatestSenderEmail", type::long_text}},
                {{value::text(utf8("other@example.org"))}});
}

void store_tree::write_store()
{
    const QString outside = QStringLiteral("..\\").repeated(8) + QLatin1String("outside.eml");
    evidence::windows_mail_store store(database("DBStore/a.edb"));
    store.add(evidence::windows_mail_attachment{10, utf8("report.v2.pdf"), utf8("application/pdf"),
                                                utf8("Files\\S0\\1.dat"), utf8("<c1>"), utf8("here"), 0});
    store.add(evidence::windows_mail_attachment{{}, utf8("noext"), {}, utf8(""), {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, utf8("out.txt"), {}, outside, {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, utf8("a.b."), {}, utf8("Files\\link.dat"), {}, {}, {}});
    store.add(evidence::windows_mail_attachment{{}, utf8("Gr\U0001F600.x"), {}, utf8("gone.dat"), {}, {}, {}});

    store.add(evidence::windows_mail_conversation{1, 1, utf8("Änna \U0001F600"), utf8("anna@example.org"), utf8("Anna"),
                                                  utf8("Plans"), 3, 2});
    store.add(evidence::windows_mail_conversation{1, 1, utf8("X"), {}, utf8("Y"), utf8("Z"), 9, 9}); // no row
    store.add(evidence::windows_mail_conversation{{}, {}, {}, utf8("only@example.org"), {}, {}, {}, {}});

    evidence::windows_mail_message full = message_with("Files\\S0\\3\\1.eml");
    full.conversation_server_id = utf8("77");
    full.from = utf8("Anna \U0001F600 <anna@example.org>");
    full.from_email = utf8("anna@example.org");
    full.from_name = utf8("Anna");
    full.gmail_message_id = utf8("1234");
    full.imap_uid = 4000000000;
    full.last_modified_body_type = 2;
    full.preview_text = utf8("Hello there");
    full.reply_to = utf8("reply@example.org");
    full.subject = utf8("ä").repeated(6000) + QLatin1String("end");
    full.to = utf8("ben@example.org");
    store.add(full);
    evidence::windows_mail_message with_html = message_with("Files\\S0\\3\\1.eml");
    with_html.preview_text = utf8("see <html> below");
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
    const auto text = [](const char *written) { return value::text(utf8(written)); };
    evidence::ese_file file(database("xDBStore/b.edb"));
    file.add_table("MailAttachment", {{"FileName", type::text},
                                      {"ContentType", type::long_text},
                                      {"ContentId", type::unsigned32},
                                      {"BodyFile", type::long_text}})
        .add_record({text("name.txt"), text("a/b"), value::number(7), text("Files\\S0\\1.dat")});
    file.add_table("MailMessage", {{"From", type::text},
                                   {"Subject", type::long_text},
                                   {"ImapUID", type::signed32},
                                   {"To", type::long_binary}})
        .add_record({text("no"), text("typed"), value::number(7), value::bytes("no")});
    file.finish();
}

} // namespace

class test_mail_store : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_all_tables();
    void lines_of_a_record();
    void file_that_ends_the_tab_data();
    void file_that_ends_the_tab();
    void result_database_fails();
    void cancelled();
};

void test_mail_store::rows_of_all_tables()
{
    store_tree tree;
    tree.write_files();
    tree.write_store();
    tree.write_store_of_other_types();
    const tree_snapshot before(tree.folder.path());
    winos_run run(tree.root, "all_attachments messages mailconversation", "anna:CORP");
    run.run();

    // The size of a folder is that of this machine; times are told of files alone, and the snapshot has set those of
    // the last access.
    compare_with_expected(rows_of(run, tree.root, "all_attachments",
                                  "bodyfile;message_id;contentlocation;content_type;file_name;"
                                  "iif(bodyfile='','folder',file_size);suffix;file_exist;file_path;"
                                  "preview_file_path=file_path and export_file_paths=file_path;"
                                  "content_modification_date;content_creation_date>0"),
                          "mail_store_attachments.txt");
    compare_with_expected(rows_of(run, tree.root, "messages",
                                  "conversation_id;emlx_file_name;file_exist;"
                                  "iif(emlx_file_name='','folder',emlx_file_size);emlx_file_path;"
                                  "preview_file_path=emlx_file_path and export_file_paths=emlx_file_path;"
                                  "content_modification_date;last_used_date;content_creation_date>0;from_str;"
                                  "fromemail;fromname;gmailmapuniquemessegeid;imapuid;lastmodifiedbodytype;"
                                  "mimemessegeid;previewtext;reply_to;subject;to_str"),
                          "mail_store_messages.txt");
    compare_with_expected(
        rows_of(run, tree.root, "mail_data", "from_mail;to_mail;subject;importance;inside_text;date;file_name"),
        "mail_store_mail_files.txt");
    compare_with_expected(run.rows(utf8("mailconversation")), "mail_store_conversations.txt");
    QCOMPARE(before.changes(), QString());
    QCOMPARE(run.record_signals.last(), 0); // these rows are not counted
    QCOMPARE(run.log_of("extract_eml_info").filter(utf8("errorString")).size(), 4);

    // One of the two databases has no conversations, which is told where its records would be counted.
    const QString found = utf8("[edb_data_parse] table found: MailConversation");
    QCOMPARE(run.log_of(parse).mid(12), (QStringList{start_line, found, table_end, found, table_end, end_line}));
    const QStringList log = run.log_of(container);
    const int missing =
        log.indexOf(utf8("[container_func]  unable to retrieve total number of records in table : \\n"));
    QCOMPARE(
        log.mid(missing + 1, 4),
        lines({"[container_func]number of records inside table: 0", "[container_func] \\n",
               "[container_func] unable to retrieve number of columns: \\n", "[container_func] no of columns are: 0"}));
}

// Fixed columns come first, then variable and tagged ones.
void test_mail_store::lines_of_a_record()
{
    store_tree tree;
    write_table(tree.database("DBStore/a.edb"), "MailConversation",
                {{"Id", type::signed32},
                 {"Importance", type::unsigned32},
                 {"LatestMessageTime", type::signed64},
                 {"Flags", type::signed16},
                 {"ConversationServerId", type::text},
                 {"Key", type::binary},
                 {"LatestSender", type::long_text},
                 {"Unknown", type::long_text}},
                {{value::number(1), value::number(5), value::number(-1), value::number(2), value::text(utf8("c")),
                  value::bytes("k"), value::text(utf8("Anna"))}});
    winos_run run(tree.root, "mailconversation");
    run.run();
    compare_with_expected(run.log_of(container).join(QLatin1Char('\n')) + QLatin1Char('\n'), "mail_store_log.txt");
    QCOMPARE(run.row_count(utf8("mailconversation")), 0);
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
    const evidence::windows_profile ben(tree.root, utf8("ben"));
    write_table(ben.local_state_path() + QLatin1String("DBStore/a.edb"), "MailConversation",
                {{"LatestSenderEmail", type::long_text}}, {{value::text(utf8("ben@example.org"))}});
    winos_run run(tree.root, "mailconversation", "anna ben");
    run.run();
    QCOMPARE(run.row_count(utf8("mailconversation")), rows);
    if (rows == 0) {
        QCOMPARE(run.log_of(parse),
                 (QStringList{start_line, QLatin1String("[working_func] file open ---FAILED---SOURCE/Users/anna") +
                                              local_state + QLatin1String("DBStore/a.edb")}));
    }
}

void test_mail_store::result_database_fails()
{
    store_tree tree;
    tree.write_store();
    winos_run run(tree.root, "mailconversation");
    run.prepare();
    QVERIFY(run.replace_database_by_folder());
    run.extract();
    const QStringList log = run.log_of(container);
    QCOMPARE(log.count(utf8("[container_func] ---- start of new record ----")), 1);
    QCOMPARE(log.mid(log.size() - 2), lines({"[container_func] Destination Db opening FAILED ",
                                             "[container_func] destination_db.lastError().text()"}));
    QCOMPARE(run.log_of(parse).mid(2), (QStringList{table_end, end_line}));
}

// In the middle of a table, from another thread, as a host does. What was read before keeps its row.
void test_mail_store::cancelled()
{
    constexpr int records = 20000;
    store_tree tree;
    write_table(tree.database("DBStore/a.edb"), "MailConversation", {{"LatestSenderEmail", type::long_text}},
                std::vector<std::vector<value>>(records, {value::text(utf8("a@example.org"))}));
    winos_run run(tree.root, "mailconversation");
    run.prepare();
    std::thread host([&run] {
        while (!run.log_of(container).contains(utf8("[container_func] ---- start of new record ----"))) {
            std::this_thread::yield();
        }
        run.plugin().pub_cancel_extraction();
    });
    run.extract();
    host.join();
    QVERIFY(run.row_count(utf8("mailconversation")) < records);
    QCOMPARE(run.log_of(parse).last(), table_end);
}

QTEST_MAIN(test_mail_store)
#include "test_mail_store.moc"
