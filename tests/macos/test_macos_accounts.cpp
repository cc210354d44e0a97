// The table accounts: the account databases of V3 to V9 with their signatures, Accounts.plist of V2, the mailboxes of
// messages that are found through it, and what becomes of damaged or hostile sources.
#include "tests/macos/configuration_source.h"
#include "tests/support/tree_snapshot.h"

using evidence::account_row;
using evidence::property_list_dictionary;

namespace {

const QString database_operation = QStringLiteral("mail_macos::extract_accounts_for_11_12");
const QString names_operation = QStringLiteral("mail_macos::sub_compare_identifier_with_db");
const QString list_operation = QStringLiteral("mail_macos::extract_xcode_accounts");
const QString anna = QStringLiteral("anna");

class account_source : public configuration_source
{
public:
    account_source() : configuration_source("accounts", "Accounts.plist") {}

    std::unique_ptr<host_run> run_of(const QStringList &tabs) const
    {
        auto run = std::make_unique<host_run>(QStringLiteral("macOS"), tree.root(), tabs);
        run->users = QStringList{anna, QStringLiteral("ben")};
        return run;
    }
    void add_folders(int generation, const QStringList &names) const
    {
        for (const QString &name : names) {
            evidence::make_folder(tree.store_folder(anna, generation) + QLatin1Char('/') + name);
        }
    }
    // Signatures of two accounts: "ID-1" has two, "ID-2" has one.
    void add_signatures(int generation) const
    {
        const QString folder = tree.store_folder(anna, generation) + QLatin1String("/MailData/Signatures/");
        QVariantList list;
        for (const char *uid : {"S1", "S2", "S3"}) {
            list.append(property_list_dictionary{{"SignatureUniqueId", QString::fromLatin1(uid)}});
            evidence::make_folder(folder);
            evidence::write_file(folder + QLatin1String(uid) + QLatin1String(".mailsignature"),
                                 QByteArray("<body>text of ") + uid);
        }
        const auto account = [](const QStringList &uids) { return property_list_dictionary{{"Signatures", uids}}; };
        evidence::write_property_list_file(folder + QLatin1String("AllSignatures.plist"), list,
                                           evidence::property_list_form::binary);
        evidence::write_property_list_file(
            folder + QLatin1String("AccountsMap.plist"),
            property_list_dictionary{{"ID-1", account({QStringLiteral("S1"), QStringLiteral("S2")})},
                                     {"ID-2", account({QStringLiteral("S3")})}},
            evidence::property_list_form::binary);
    }
};

account_row row(int key, const char *identifier, const char *user_name, const QVariant &parent = QVariant())
{
    account_row account;
    account.key = key;
    account.parent = parent;
    account.date = 446897430.75;
    account.description = QStringLiteral("Account %1").arg(key);
    account.identifier = QString::fromUtf8(identifier);
    account.user_name = QString::fromUtf8(user_name);
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
    source.add_folders(generation,
                       {QStringLiteral("IMAP-anna@imap.example.org"), QStringLiteral("POP-ben@example.org@pop3.net"),
                        QStringLiteral("ID-3"), QStringLiteral("ID-4"), QStringLiteral("ID-5"), QStringLiteral("ID-6"),
                        QStringLiteral("IMAP-anna"), QStringLiteral("MailData")});
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
    void home_folder();
    void damaged_sources();
    void failures_of_the_result_database();
};

void test_macos_accounts::database_accounts_with_their_signatures()
{
    account_source source;
    write_store(source, 3, 3);
    source.add_signatures(3);
    source.tree.finish();
    const tree_snapshot before(source.folder.path());

    const auto run = source.new_run();
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference = source.difference_to("accounts_v3.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run->row_count(QStringLiteral("signature")), 0); // they were there for the join only
    QCOMPARE(run->record_signals.last(), 5);
    QCOMPARE(run->log_of(database_operation), (QStringList{QStringLiteral("Starts"), QStringLiteral("Ends")}));
    QCOMPARE(run->log_of(names_operation), QStringList());
}

void test_macos_accounts::generations_and_the_tab_signature()
{
    account_source source;
    write_store(source, 5, 4);
    source.add_signatures(5);
    source.tree.finish();

    // Of V5 the signatures come behind the accounts, unless their own tab has put them there before.
    const auto alone = source.new_run();
    alone->run();
    QCOMPARE(alone->row_count(source.table), 5);
    QCOMPARE(source.column(*alone, "signature").join(QString()), QString());
    QCOMPARE(alone->row_count(QStringLiteral("signature")), 0);
    QCOMPARE(alone->record_signals.last(), 5);

    const auto both = source.run_of({QStringLiteral("signature"), source.table});
    both->run();
    QCOMPARE(source.column(*both, "signature").join(QString()).count(QLatin1String("Signature: text of")), 6);
    QCOMPARE(both->row_count(QStringLiteral("signature")), 3);
    QCOMPARE(both->record_signals.last(), 8);
    QVERIFY(source.column(*both, "source_file")
                .contains(QStringLiteral(
                    "/Users/anna/Library/Mail/V5;++::++;/Users/anna/Library/Accounts/Accounts4.sqlite")));
}

void test_macos_accounts::mailboxes_of_messages()
{
    account_source source;
    evidence::macos_mail_store &store = source.tree.add_store(anna, 3);
    evidence::macos_message mail;
    mail.mailbox = store.add_mailbox(QStringLiteral("imap://ID-1/INBOX"));
    store.add_message(mail);
    write_store(source, 3, 3);
    source.tree.finish();

    const QString messages = QStringLiteral("messages");
    const auto without = source.run_of({messages});
    without->run();
    QVERIFY(!without->rows(messages).contains(QLatin1String("INBOX")));
    const auto with = source.run_of({messages, source.table});
    with->run();
    const QString rows = with->rows(messages);
    QVERIFY2(rows.contains(QLatin1String("anna@example.org")) && rows.contains(QLatin1String("INBOX")),
             qPrintable(rows));
}

void test_macos_accounts::listed_accounts()
{
    const auto text = [](const char *utf8) { return QString::fromUtf8(utf8); };
    account_source source;
    source.write(
        "anna", 2,
        property_list_dictionary{
            {"DeliveryAccounts",
             QVariantList{QStringLiteral("no dictionary"), property_list_dictionary{{"AccountName", text("no user")}},
                          property_list_dictionary{{"Username", text("anna")}}, // a part of an address
                          property_list_dictionary{{"AccountName", text("Old")},
                                                   {"AccountType", text("SMTPAccount")},
                                                   {"Hostname", text("smtp.example.org")},
                                                   {"PortNumber", 587},
                                                   {"Username", text(" Anna ")},
                                                   {"uniqueId", text("D-1")}}}},
            {"MailAccounts",
             QVariantList{
                 property_list_dictionary{
                     {"AccountName", text(" Work ")},
                     {"AccountPath", text("~/Library/Mail/V2/IMAP-anna")},
                     {"AccountType", text("IMAPAccount")},
                     {"ArchiveMailboxName", text("Archive")},
                     {"DateOfLastSync", QDateTime::fromMSecsSinceEpoch(1425205230750, Qt::UTC)},
                     {"DraftsMailboxName", text("Drafts")},
                     {"EmailAddresses", QVariantList{text(" anna@example.org"), 5, text("a@example.org ")}},
                     {"FullUserName", text("Anna Müller")},
                     {"Hostname", text("imap.example.org")},
                     {"ISPAccountID", text("isp")},
                     {"NotesMailboxName", text("Notes")},
                     {"PortNumber", text("993")},
                     {"SMTPIdentifier", text("smtp.example.org:anna")},
                     {"SentMessagesMailboxName", text("Sent")},
                     {"ServerID", property_list_dictionary{{"name", text("Dovecot")}, {"vendor", text("Timo")}}},
                     {"ToDosMailboxName", text("To Do")},
                     {"TrashMailboxName", text("Trash")},
                     {"Username", text("anna")},
                     {"uniqueId", text("M-1")}},
                 property_list_dictionary{{"AccountName", text("no addresses")}, {"EmailAddresses", QVariantList()}},
                 property_list_dictionary{{"AccountName", text("  ")}},
                 text("no dictionary"),
                 property_list_dictionary{{"AccountName", text("bare")},
                                          {"AccountPath", text("~/../../../etc")},
                                          {"DateOfLastSync", QDateTime::fromSecsSinceEpoch(0, Qt::UTC)},
                                          {"EmailAddresses", text("no list")},
                                          {"PortNumber", 993},
                                          {"ServerID", property_list_dictionary{{"name", text("alone")}}},
                                          {"IsActive", text("YES")}},
                 property_list_dictionary{{"AccountName", text("on disk")},
                                          {"AccountPath", text("Volumes/Mail/../POP")},
                                          {"IsActive", false}},
             }},
        });
    const auto run = source.new_run();
    run->run();

    const QString difference = source.difference_to("accounts_v2.txt", *run);
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run->record_signals.last(), 4);
    QCOMPARE(run->log_of(list_operation),
             (QStringList{QStringLiteral("Start"), QStringLiteral("[extract_xcode_accounts] ends ")}));
}

void test_macos_accounts::home_folder()
{
    account_source source;
    source.write("anna", 2,
                 property_list_dictionary{
                     {"MailAccounts", QVariantList{property_list_dictionary{
                                          {"AccountName", QStringLiteral("a")},
                                          {"AccountPath", QStringLiteral("/Users/anna.before/Library/Mail/V2/x")}}}}});
    write_store(source, 3, 3);
    source.tree.finish();

    const auto run = source.new_run();
    run->source_type = QStringLiteral("macOS_Home_Directory");
    run->run();

    QCOMPARE(source.column(*run, "accountpath"), QStringList{QStringLiteral("/Library/Mail/V2/x")});
    QCOMPARE(source.column(*run, "source_file").first(),
             QStringLiteral("/Library/Mail/V3;++::++;/Library/Accounts/Accounts3.sqlite"));
    QCOMPARE(source.column(*run, "artifacts_relation_source_file").first(),
             QStringLiteral("/Users/anna/Library/Mail/V3;++::++;/Users/anna/Library/Accounts/Accounts3.sqlite"));
}

void test_macos_accounts::damaged_sources()
{
    account_source source;
    source.add_folders(3, {QStringLiteral("ID-1"), QStringLiteral("ID-2")});
    source.add_folders(4, {QStringLiteral("ID-1")}); // without a database
    const QString database = source.tree.home_of(anna) + QLatin1String("/Library/Accounts/Accounts3.sqlite");
    evidence::make_folder(source.tree.home_of(anna) + QLatin1String("/Library/Accounts"));
    evidence::write_file(database, QByteArray(100000, 'x'));
    source.write("anna", 2, QVariantList{5});
    source.write("ben", 2, property_list_dictionary{{"MailAccounts", 5}, {"DeliveryAccounts", QStringLiteral("x")}});

    const auto run = source.new_run();
    run->run();

    QCOMPARE(run->row_count(source.table), 0);
    const QStringList names = run->log_of(names_operation);
    QCOMPARE(names.filter(QStringLiteral("query_source execution --------FAILED-------TMP/")).size(), 2);
    QCOMPARE(names.filter(QStringLiteral("Error :- file is not a database")).size(), 2);
    QCOMPARE(names.size(), 6);
    QCOMPARE(run->log_of(database_operation),
             (QStringList{QStringLiteral("Starts"), QStringLiteral("Ends"), QStringLiteral("Starts")}));
    QCOMPARE(run->log_of(list_operation),
             (QStringList{QStringLiteral("Start"),
                          QStringLiteral("[extract_xcode_accounts] mplist nil---------FAILED--------"),
                          QStringLiteral("[extract_xcode_accounts] end with failure "), QStringLiteral("Start"),
                          QStringLiteral("[extract_xcode_accounts] ends ")}));
}

void test_macos_accounts::failures_of_the_result_database()
{
    account_source source;
    write_store(source, 3, 3);
    source.tree.finish();
    source.write("anna", 2,
                 property_list_dictionary{
                     {"MailAccounts", QVariantList{property_list_dictionary{{"AccountName", QStringLiteral("a")}}}},
                     {"DeliveryAccounts", QVariantList{property_list_dictionary{{"Username", QStringLiteral("b")}}}}});

    const auto refusing = source.new_run();
    refusing->prepare();
    run_statement(*refusing, QStringLiteral("create trigger refuse before insert on accounts begin select "
                                            "raise(abort, 'no row'); end"));
    refusing->extract();
    const QString error = QStringLiteral("Error :- no row");
    const QString path = refusing->database_path();
    QCOMPARE(refusing->log_of(database_operation).mid(1, 2),
             (QStringList{QStringLiteral("Execute dest_query --------FAILED--------") + path, error}));
    const QStringList lines = refusing->log_of(list_operation);
    QCOMPARE(lines.mid(1, 2),
             (QStringList{
                 QStringLiteral("[extract_xcode_accounts_older_version]insert in account -----------FAILED--------"),
                 error}));
    QVERIFY(lines.at(3).startsWith(QLatin1String("Executed Query :- insert into accounts(")));
    QCOMPARE(lines.mid(4, 2), (QStringList{QStringLiteral("insert in accounts --------FAILED------") + path, error}));
    QVERIFY(lines.at(6).startsWith(QLatin1String("Query :- insert into accounts(")));

    const auto closed = source.new_run();
    closed->prepare();
    close_result_database(*closed);
    closed->extract();
    const QString cannot_open = QStringLiteral("unable to open database file");
    QCOMPARE(closed->log_of(database_operation),
             (QStringList{QStringLiteral("Starts"),
                          QStringLiteral("destination_db Db opening --------FAILED------- ") + closed->database_path(),
                          QStringLiteral("Error :- ") + cannot_open}));
    QCOMPARE(closed->log_of(list_operation),
             (QStringList{QStringLiteral("Start"),
                          QStringLiteral("[extract_xcode_accounts] destination db open ---------FAILED---------"),
                          cannot_open, closed->database_path(),
                          QStringLiteral("[extract_xcode_accounts] end with failure")}));
}

QTEST_MAIN(test_macos_accounts)
#include "test_macos_accounts.moc"
