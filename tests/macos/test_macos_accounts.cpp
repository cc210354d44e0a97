// The table accounts: the account databases of V3 to V9 with their signatures, Accounts.plist of V2, the mailboxes of
// messages that are found through it, and what becomes of damaged or hostile sources.
#include "tests/macos/configuration_source.h"

using evidence::account_row;

namespace {

const QString database_operation = text("mail_macos::extract_accounts_for_11_12");
const QString names_operation = text("mail_macos::sub_compare_identifier_with_db");
const QString list_operation = text("mail_macos::extract_xcode_accounts");
const QString anna = text("anna");

class account_source : public configuration_source
{
public:
    account_source() : configuration_source("accounts", "Accounts.plist") {}

    void add_folders(int generation, const QStringList &names) const
    {
        for (const QString &name : names) {
            evidence::make_folder(tree.store_folder(anna, generation) + QLatin1Char('/') + name);
        }
    }
    // Signatures of two accounts: "ID-1" has two, "ID-2" has one.
    void add_signatures(int generation) const
    {
        const QString folder = tree.store_folder(anna, generation) + text("/MailData/Signatures/");
        write_list(folder + text("AllSignatures.plist"),
                   json(R"([{"SignatureUniqueId": "S1"}, {"SignatureUniqueId": "S2"}, {"SignatureUniqueId": "S3"}])"));
        write_list(folder + text("AccountsMap.plist"),
                   json(R"({"ID-1": {"Signatures": ["S1", "S2"]}, "ID-2": {"Signatures": ["S3"]}})"));
        for (const char *uid : {"S1", "S2", "S3"}) {
            evidence::write_file(folder + text(uid) + text(".mailsignature"), QByteArray("<body>text of ") + uid);
        }
    }
};

account_row row(int key, const char *identifier, const char *user_name, const QVariant &parent = QVariant())
{
    account_row account;
    account.key = key;
    account.parent = parent;
    account.date = 446897430.75;
    account.description = text("Account %1").arg(key);
    account.identifier = text(identifier);
    account.user_name = text(user_name);
    return account;
}

// Accounts of every kind, and the folders of a store that name them; what gives no row stands at the end.
void write_store(account_source &source, int generation, int database_generation)
{
    evidence::accounts_database &database = source.tree.accounts(anna, database_generation);
    database.add_account(row(1, "ID-1", "anna@example.org"));
    database.add_account(row(2, "ID-2", "ben@example.org"));
    database.add_account(row(3, "ID-3", nullptr, 1)); // of its parent only
    database.add_account(row(4, "ID-4", "child", 2));
    database.add_account(row(5, "ID-5", nullptr, 99)); // of a parent that is gone
    database.add_account(row(6, "ID-6", nullptr));     // neither parent nor user
    source.add_folders(generation, texts({"IMAP-anna@imap.example.org", "POP-ben@example.org@pop3.net", "ID-3", "ID-4",
                                          "ID-5", "ID-6", "IMAP-anna", "MailData"}));
}

} // namespace

class test_macos_accounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void database_accounts_with_their_signatures();
    void generations_and_the_tab_signature();
    void mailboxes_of_messages();
    void listed_accounts();
    void damaged_sources();
};

void test_macos_accounts::database_accounts_with_their_signatures()
{
    account_source source;
    write_store(source, 3, 3);
    source.add_signatures(3);
    source.tree.finish();
    const tree_snapshot before(source.folder.path());

    const auto run = source.run();

    QCOMPARE(before.changes(), QString());
    source.compare_rows_with("accounts_v3.txt", *run);
    QCOMPARE(run->row_count(text("signature")), 0); // they were there for the join only
    QCOMPARE(run->record_signals.last(), 5);
    QCOMPARE(run->log_of(database_operation), texts({"Starts", "Ends"}));
    QCOMPARE(run->log_of(names_operation), QStringList());
}

void test_macos_accounts::generations_and_the_tab_signature()
{
    account_source source;
    write_store(source, 5, 4);
    source.add_signatures(5);
    source.tree.finish();

    // Of V5 the signatures come behind the accounts, unless their own tab has put them there before.
    const auto alone = source.run();
    QCOMPARE(alone->row_count(source.table), 5);
    QCOMPARE(source.column(*alone, "signature").join(QString()), QString());
    QCOMPARE(alone->row_count(text("signature")), 0);
    QCOMPARE(alone->record_signals.last(), 5);

    const auto both = whole_run(source.tree, {text("signature"), source.table});
    QCOMPARE(source.column(*both, "signature").join(QString()).count(QLatin1String("Signature: text of")), 6);
    QCOMPARE(both->row_count(text("signature")), 3);
    QCOMPARE(both->record_signals.last(), 8);
    QVERIFY(source.column(*both, "source_file")
                .contains(text("/Users/anna/Library/Mail/V5;++::++;/Users/anna/Library/Accounts/Accounts4.sqlite")));
}

void test_macos_accounts::mailboxes_of_messages()
{
    account_source source;
    evidence::macos_mail_store &store = source.tree.add_store(anna, 3);
    evidence::macos_message mail;
    mail.mailbox = store.add_mailbox(text("imap://ID-1/INBOX"));
    store.add_message(mail);
    write_store(source, 3, 3);
    source.tree.finish();

    const QString messages = text("messages");
    QVERIFY(!whole_run(source.tree, {messages})->rows(messages).contains(text("INBOX")));
    const QString rows = whole_run(source.tree, {messages, source.table})->rows(messages);
    QVERIFY2(rows.contains(text("anna@example.org")) && rows.contains(text("INBOX")), qPrintable(rows));
}

void test_macos_accounts::listed_accounts()
{
    account_source source;
    // "anna" as the user of a sending account is a part of an address of a receiving one.
    source.write("anna", 2, json(R"({
        "DeliveryAccounts": [
            "no dictionary",
            {"AccountName": "no user"},
            {"Username": "anna"},
            {"AccountName": "Old", "AccountType": "SMTPAccount", "Hostname": "smtp.example.org", "PortNumber": 587,
             "Username": " Anna ", "uniqueId": "D-1"}],
        "MailAccounts": [
            {"AccountName": " Work ", "AccountPath": "~/Library/Mail/V2/IMAP-anna", "AccountType": "IMAPAccount",
             "ArchiveMailboxName": "Archive", "DateOfLastSync": {"date": 1425205230750}, "DraftsMailboxName": "Drafts",
             "EmailAddresses": [" anna@example.org", 5, "a@example.org "], "FullUserName": "Anna Müller",
             "Hostname": "imap.example.org", "ISPAccountID": "isp", "NotesMailboxName": "Notes", "PortNumber": "993",
             "SMTPIdentifier": "smtp.example.org:anna", "SentMessagesMailboxName": "Sent",
             "ServerID": {"name": "Dovecot", "vendor": "Timo"}, "ToDosMailboxName": "To Do",
             "TrashMailboxName": "Trash", "Username": "anna", "uniqueId": "M-1"},
            {"AccountName": "no addresses", "EmailAddresses": []},
            {"AccountName": "  "},
            "no dictionary",
            {"AccountName": "bare", "AccountPath": "~/../../../etc", "DateOfLastSync": {"date": 0},
             "EmailAddresses": "no list", "PortNumber": 993, "ServerID": {"name": "alone"}, "IsActive": "YES"},
            {"AccountName": "on disk", "AccountPath": "Volumes/Mail/../POP", "IsActive": false}]})"));
    const auto run = source.run();

    source.compare_rows_with("accounts_v2.txt", *run);
    QCOMPARE(run->record_signals.last(), 4);
    QCOMPARE(run->log_of(list_operation), texts({"Start", "[extract_xcode_accounts] ends "}));
}

void test_macos_accounts::damaged_sources()
{
    account_source source;
    source.add_folders(3, texts({"ID-1", "ID-2"}));
    source.add_folders(4, texts({"ID-1"})); // without a database
    source.tree.add_file(text("Users/anna/Library/Accounts/Accounts3.sqlite"), QByteArray(100000, 'x'));
    source.write("ben", 2, json(R"({"MailAccounts": 5, "DeliveryAccounts": "x"})"));

    const auto run = source.run();

    QCOMPARE(run->row_count(source.table), 0);
    const QStringList names = run->log_of(names_operation);
    QCOMPARE(names.filter(text("query_source execution --------FAILED-------TMP/")).size(), 2);
    QCOMPARE(names.filter(text("Error :- file is not a database")).size(), 2);
    QCOMPARE(names.size(), 6);
    QCOMPARE(run->log_of(database_operation), texts({"Starts", "Ends", "Starts"}));
    QCOMPARE(run->log_of(list_operation), texts({"Start", "[extract_xcode_accounts] ends "}));
}

QTEST_MAIN(test_macos_accounts)
#include "test_macos_accounts.moc"
