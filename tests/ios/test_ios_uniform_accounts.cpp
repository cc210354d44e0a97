// The table accounts of an iOS file tree: the account selected last, looked up in the account database.
#include "evidence/files.h"
#include "evidence/ios_file_tree.h"
#include "tests/support/host_run.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

using writing = std::function<void(evidence::ios_file_tree &)>;
Q_DECLARE_METATYPE(writing)

namespace {

using evidence::account_row;
using evidence::ios_file_tree;
using evidence::property_list_dictionary;
using evidence::property_list_form;

const QString accounts_tab = QStringLiteral("accounts");
const QString starts = QStringLiteral("Starts");
const QString ends = QStringLiteral("Ends");
const QString list_failure = QStringLiteral("m_plist open---FAILED---SOURCE/private/var/mobile/Library/Mail/"
                                            "MailboxCollections.plist");

// The columns that every row has, whatever was found.
QString row_of(const QString &found, const QString &unique_id)
{
    return QLatin1String("row\n  bookmark = 0\n  INT = 1\n") + found.section(QLatin1Char('|'), 0, 0) +
           QLatin1String("  unique_id = \"") + unique_id + QLatin1String("\"\n") +
           found.section(QLatin1Char('|'), 1, 1) +
           QLatin1String("  os_scheme_display = \"Display of iOS_Uniform\"\n"
                         "  source_count_name = \"Source1\"\n"
                         "  source_file = \"/private/var/mobile/Library/Mail/MailboxCollections.plist;"
                         "/private/var/mobile/Library/Accounts/Accounts3.sqlite\"\n");
}

// An account below the parent "iCloud", with the real form of a date: seconds since 2001 and a fraction.
void add_accounts(ios_file_tree &tree, const QString &identifier, int parent_key = 3)
{
    account_row parent;
    parent.key = 3;
    parent.description = QStringLiteral("iCloud");
    parent.identifier = QStringLiteral("parent");
    tree.accounts().add_account(parent);
    account_row account;
    account.key = 4;
    account.parent = parent_key;
    account.date = 600000000.309041;
    account.identifier = identifier;
    account.owning_bundle_id = QStringLiteral("com.apple.accountsd");
    account.user_name = QStringLiteral("anna@example.org");
    account.description = QStringLiteral("not this one");
    tree.accounts().add_account(account);
}

QByteArray nested_arrays(int depth)
{
    return "<?xml version=\"1.0\"?><plist version=\"1.0\">" + QByteArray("<array>").repeated(depth) +
           QByteArray("</array>").repeated(depth) + "</plist>";
}

} // namespace

class test_ios_uniform_accounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sources_data();
    void sources();
};

void test_ios_uniform_accounts::sources_data()
{
    QTest::addColumn<writing>("write");
    QTest::addColumn<QString>("rows");
    QTest::addColumn<QStringList>("log");
    const QStringList whole{starts, ends};
    const QString id = QStringLiteral("4F2B-ÄÖ");
    // 600000000 seconds behind 2001-01-01 are 1578307200 seconds behind 1970-01-01.
    const QString found =
        QStringLiteral("  user_name = \"anna@example.org\"\n  owner_bundle_id = \"com.apple.accountsd\"\n"
                       "  account_description = \"iCloud\"\n|  date_added = 1578307200\n");

    for (const property_list_form form : {property_list_form::xml, property_list_form::binary}) {
        QTest::newRow(form == property_list_form::xml ? "account found, XML" : "account found, binary")
            << writing([=](ios_file_tree &tree) {
                   tree.write_mailbox_collections(id, form);
                   add_accounts(tree, id);
               })
            << row_of(found, id) << whole;
    }
    QTest::newRow("no account selected") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(property_list_dictionary{{"other", 1}}, property_list_form::xml);
        add_accounts(tree, id);
    }) << row_of(QStringLiteral("|"), QString())
                                         << whole;
    QTest::newRow("no account selected, and one without identifier") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(property_list_dictionary{{"lastSelectedItem", QStringLiteral("no dictionary")}},
                                       property_list_form::binary);
        add_accounts(tree, QLatin1String(""));
    }) << row_of(found, QString()) << whole;
    QTest::newRow("id is a number") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(
            property_list_dictionary{{"lastSelectedItem", property_list_dictionary{{"uniqueID", 5}}}},
            property_list_form::binary);
        add_accounts(tree, QStringLiteral("5"));
    }) << row_of(QStringLiteral("|"), QString())
                                    << whole;
    QTest::newRow("id unknown") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(QStringLiteral("other"));
        add_accounts(tree, id);
    }) << row_of(QStringLiteral("|"), QStringLiteral("other"))
                                << whole;
    QTest::newRow("parent unknown") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(id);
        add_accounts(tree, id, 99);
    }) << row_of(QString(found).remove(QStringLiteral("  account_description = \"iCloud\"\n")), id)
                                    << whole;
    QTest::newRow("two accounts of one id: the last") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(id);
        add_accounts(tree, id);
        account_row last;
        last.identifier = id;
        last.user_name = QStringLiteral("ben");
        tree.accounts().add_account(last);
    }) << row_of(QStringLiteral("  user_name = \"ben\"\n|"), id)
                                                      << whole;

    QTest::newRow("property list missing")
        << writing([=](ios_file_tree &tree) { add_accounts(tree, id); }) << QString() << QStringList{starts};
    QTest::newRow("account database missing")
        << writing([=](ios_file_tree &tree) { tree.write_mailbox_collections(id); }) << QString()
        << QStringList{starts};
    QTest::newRow("property list is an array") << writing([=](ios_file_tree &tree) {
        tree.write_mailbox_collections(QVariantList{1}, property_list_form::binary);
        add_accounts(tree, id);
    }) << QString() << QStringList{starts, list_failure};
    QTest::newRow("property list is none") << writing([=](ios_file_tree &tree) {
        evidence::write_file(tree.mailbox_collections_path(), "no property list");
    }) << QString() << QStringList{starts, list_failure};
    QTest::newRow("property list is nested deep") << writing([=](ios_file_tree &tree) {
        evidence::write_file(tree.mailbox_collections_path(), nested_arrays(100000));
    }) << QString() << QStringList{starts, list_failure};
    QTest::newRow("property list is a folder")
        << writing([=](ios_file_tree &tree) { evidence::make_folder(tree.mailbox_collections_path()); }) << QString()
        << QStringList{starts, list_failure};
    QTest::newRow("account database is none")
        << writing([=](ios_file_tree &tree) {
               tree.write_mailbox_collections(id);
               tree.add_file(QStringLiteral("private/var/mobile/Library/Accounts/Accounts3.sqlite"),
                             QByteArray(200, 'x'));
           })
        << QString()
        << QStringList{starts, QStringLiteral("Select query -----FAILED----- TMP/Accounts3.sqlite"),
                       QStringLiteral("ERROR :- file is not a database"),
                       QStringLiteral("Query :- SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT "
                                      "WHERE ZIDENTIFIER = ?")};
    QTest::newRow("account database is a folder")
        << writing([=](ios_file_tree &tree) {
               tree.write_mailbox_collections(id);
               evidence::make_folder(tree.accounts_path());
           })
        << QString()
        << QStringList{starts, QStringLiteral("Source Db open -----FAILED-----TMP/Accounts3.sqlite"),
                       QStringLiteral("Error :- unable to open database file")};
}

void test_ios_uniform_accounts::sources()
{
    QFETCH(writing, write);
    QFETCH(QString, rows);
    QFETCH(QStringList, log);
    QTemporaryDir folder;
    ios_file_tree tree(folder.filePath(QStringLiteral("source")));
    write(tree);
    tree.finish();

    host_run run(QStringLiteral("iOS_Uniform"), tree.root(), {accounts_tab});
    run.run();
    QCOMPARE(run.rows(accounts_tab), rows);
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uniform::xcode_extract_mail_accounts")), log);
    QCOMPARE(run.tab_signals, QList<int>{1});
}

QTEST_MAIN(test_ios_uniform_accounts)
#include "test_ios_uniform_accounts.moc"
