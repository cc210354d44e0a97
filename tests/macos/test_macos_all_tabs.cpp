// All tabs over evidence of every kind: the paths that the rows of a home folder show, what becomes of lists that are
// damaged, and what each operation logs where the result database takes no rows.
#include "tests/macos/preference_source.h"

using evidence::macos_mail_tree;

namespace {

const QStringList all_tabs = texts({"signature", "accounts", "vip_contacts", "rules", "smart_mailboxes", "preferences",
                                    "messages", "all_attachments", "open_attachments"});

// The lists below the home of a user, each with one entry.
struct mail_list
{
    const char *path;
    const char *content;
};
constexpr mail_list lists[] = {
    {"/Library/Mail/V3/MailData/Signatures/AllSignatures.plist",
     R"([{"SignatureName": "Work", "SignatureUniqueId": "S1"}])"},
    {"/Library/Mail/V3/MailData/Signatures/AccountsMap.plist", R"({"ID-1": {"Signatures": ["S1"]}})"},
    {"/Library/Mail/V2/MailData/Accounts.plist",
     R"({"MailAccounts": [{"AccountName": "a", "AccountPath": "/Users/anna.before/Library/Mail/V2/x"}],
         "DeliveryAccounts": [{"Username": "b"}]})"},
    {"/Library/Mail/V3/MailData/VIPs.plist", R"({"Senders": {"a": {"Name": "a"}}})"},
    {"/Library/Mail/V9/MailData/VIPs.plist", R"({"a": {"Name": "a"}})"},
    {"/Library/Mail/V9/MailData/SyncedRules.plist", R"([{"RuleName": "a"}])"},
    {"/Library/Mail/V9/MailData/SyncedSmartMailboxes.plist", R"([{"MailboxCriteria": []}])"},
    {application_list, R"({"PollTime": 5, "ReplyQuotesOriginal": 2, "ConversationViewSortDescending": 2,
                           "junkMailTrustHeaders": 2, "junkMailEvaluationAfterRules": 2})"},
    {shared_list, "{}"},
    {"/Library/Mail/V2/MailData/OpenedAttachments.plist", R"([{"Path": "/Users/anna.before/Desktop/note.txt"}])"},
};

void write_lists(const macos_mail_tree &tree, const QString &user)
{
    for (const mail_list &list : lists) {
        write_list(tree.home_of(user) + text(list.path), json(list.content));
    }
    evidence::write_file(tree.home_of(user) + text("/Library/Mail/V3/MailData/Signatures/S1.mailsignature"), "<body>x");
}

// A mail with an attachment in the index of V3 and one in that of V2; the row id makes their mail files differ.
void write_mail(macos_mail_tree &tree, int generation)
{
    evidence::macos_mail_store &store = tree.add_store(text("anna"), generation);
    evidence::macos_message message;
    message.row_id = generation;
    const qint64 row_id = store.add_message(message);
    store.add_attachment(row_id, text("plan.pdf"));
    const QString box = text("IMAP-1/INBOX.mbox");
    store.add_emlx(box, row_id, {{{"Reply-To", "list@example.org"}}, text("text"), {}, false, {}});
    store.add_attachment_file(box, row_id, text("2"), text("plan.pdf"), "x");
}

void write_everything(macos_mail_tree &tree)
{
    write_lists(tree, text("anna"));
    write_mail(tree, 2);
    write_mail(tree, 3);
    evidence::account_row account;
    account.identifier = text("ID-1");
    account.user_name = text("anna@example.org");
    tree.accounts(text("anna"), 3).add_account(account);
    evidence::make_folder(tree.store_folder(text("anna"), 3) + text("/ID-1"));
    tree.add_download(text("anna"), text("plan.pdf"), "content");
    tree.add_file(text("Users/anna/Desktop/note.txt"), "four");
    tree.finish();
}

// The log of each operation that the file names, indented behind its name. In a line of the file "…" stands for any
// text.
QString log_like(const char *expected_file, const host_run &run)
{
    const QStringList expected = expected_text(expected_file).split(QLatin1Char('\n'));
    QString log;
    for (const QString &operation : expected) {
        if (operation.isEmpty() || operation.startsWith(QLatin1Char(' '))) {
            continue;
        }
        log += operation + QLatin1Char('\n');
        int line_number = expected.indexOf(operation);
        for (QString line : run.log_of(QLatin1String("mail_macos::") + operation)) {
            line = QLatin1String("  ") + line.replace(run.database_path(), text("RESULT"));
            const QString like = expected.value(++line_number);
            const QStringList parts = like.split(QChar(0x2026));
            const bool is_like = parts.size() == 2 && line.startsWith(parts.first()) && line.endsWith(parts.last());
            log += (is_like ? like : line) + QLatin1Char('\n');
        }
    }
    return log;
}

} // namespace

class test_macos_all_tabs : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<macos_source>(); }

    void home_folder();
    void lists_that_are_none_data();
    void lists_that_are_none();
    void result_database_without_rows_data();
    void result_database_without_rows();

private:
    std::unique_ptr<macos_source> source;
};

// The rows show paths below the home, and beside them whole ones.
void test_macos_all_tabs::home_folder()
{
    write_everything(source->tree);

    const auto run = new_run(source->tree, all_tabs);
    run->source_type = text("macOS_Home_Directory");
    run->run();

    const QRegularExpression tells_path(text("^row$|^  \\w*(path|paths|exist|source_file) = |<File_Path>"));
    QString paths;
    for (const QString &table : all_tabs) {
        paths += table + QLatin1Char('\n');
        for (const QString &line : settled_rows(*run, table).split(QLatin1Char('\n'))) {
            paths += line.contains(tells_path) ? line + QLatin1Char('\n') : QString();
        }
    }
    compare_with("home_folder.txt", paths);
}

void test_macos_all_tabs::lists_that_are_none_data()
{
    QTest::addColumn<QByteArray>("content"); // empty: that of the list
    QTest::addColumn<int>("size");
    QTest::newRow("of another kind") << QByteArray("other kind") << -1;
    QTest::newRow("a text") << QByteArray("\"text\"") << -1;
    QTest::newRow("cut off") << QByteArray() << 20;
    QTest::newRow("empty") << QByteArray() << 0;
}

// Each is told, and the lists of the next user give their rows all the same.
void test_macos_all_tabs::lists_that_are_none()
{
    QFETCH(QByteArray, content);
    QFETCH(int, size);
    write_lists(source->tree, text("anna"));
    for (const mail_list &list : lists) {
        const QString path = source->tree.home_of(text("anna")) + text(list.path);
        const QByteArray other_kind = list.content[0] == '[' ? R"({"a": {}})" : R"([{"a": 1}])";
        const QByteArray written = content == "other kind" ? other_kind : content;
        if (!written.isEmpty()) {
            write_list(path, json(written));
        }
        QVERIFY(size < 0 || QFile::resize(path, size));
    }
    write_lists(source->tree, text("ben"));

    const auto run = whole_run(source->tree, all_tabs, texts({"anna", "ben"}));

    compare_with("lists_that_are_none.txt", log_like("lists_that_are_none.txt", *run));
    QCOMPARE(run->tab_signals.size(), all_tabs.size());
    for (const char *table : {"signature", "rules", "smart_mailboxes", "open_attachments"}) {
        QCOMPARE(run->row_count(text(table)), 1);
    }
    for (const char *table : {"accounts", "vip_contacts", "preferences"}) {
        QCOMPARE(run->row_count(text(table)), 2);
    }
}

void test_macos_all_tabs::result_database_without_rows_data()
{
    QTest::addColumn<QStringList>("statements"); // none: a folder stands in place of the database
    QTest::addColumn<qint64>("records");
    const auto refuse = [](const char *change, std::initializer_list<const char *> tables) {
        QStringList triggers;
        for (const char *table : tables) {
            triggers.append(text("create trigger refuse_%1 before %2 on %1 begin select raise(abort, 'no row'); end")
                                .arg(text(table), text(change)));
        }
        return triggers;
    };
    const QStringList refusing = refuse("insert", {"accounts", "vip_contacts", "rules", "smart_mailboxes",
                                                   "preferences", "all_attachments", "open_attachments"});
    // Behind these, a signature and two messages count.
    QTest::newRow("rows_refused.txt") << refusing + refuse("update", {"signature"}) << Q_INT64_C(3);
    // Two accounts and one of the database, two VIPs, a rule, a smart mailbox, two preferences, two open attachments.
    QTest::newRow("rows_for_others_refused.txt")
        << refuse("insert", {"signature", "emlx_list", "messages"}) << Q_INT64_C(11);
    QTest::newRow("tables_missing.txt") << texts({"drop table messages", "drop table emlx_list"}) << Q_INT64_C(12);
    QTest::newRow("result_database_closed.txt") << QStringList() << Q_INT64_C(0);
}

void test_macos_all_tabs::result_database_without_rows()
{
    QFETCH(QStringList, statements);
    QFETCH(qint64, records);
    write_everything(source->tree);

    const auto run = new_run(source->tree, all_tabs);
    run->prepare();
    for (const QString &statement : statements) {
        run_statement(*run, statement);
    }
    if (statements.isEmpty()) {
        QVERIFY(QFile::remove(run->database_path()));
        QVERIFY(QDir().mkdir(run->database_path()));
    }
    run->extract();

    compare_with(QTest::currentDataTag(), log_like(QTest::currentDataTag(), *run));
    QCOMPARE(run->record_signals.last(), records);
    QCOMPARE(run->tab_signals.size(), all_tabs.size());
}

QTEST_MAIN(test_macos_all_tabs)
#include "test_macos_all_tabs.moc"
