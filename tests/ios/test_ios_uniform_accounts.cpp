// The table accounts of an iOS file tree: the account selected last, looked up in the account database.
#include "evidence/ios_file_tree.h"
#include "tests/services/service_test.h"
#include "tests/support/host_run.h"

#include <QDir>

using writing = void (*)(evidence::ios_file_tree &);
Q_DECLARE_METATYPE(writing)

namespace {

using evidence::account_row;
using evidence::ios_file_tree;
using evidence::property_list_form;
using dictionary = evidence::property_list_dictionary;

const QString operation = "mail_ios_uniform::xcode_extract_mail_accounts"_s;
const QString id = "4F2B-ÄÖ"_s;
const QString list_failure = "m_plist open---FAILED---SOURCE/private/var/mobile/Library/Mail/"
                             "MailboxCollections.plist"_s;

// Two accounts of one identifier, the last below a parent "iCloud" and with the real form of a date: seconds since 2001
// and a fraction.
void add_accounts(ios_file_tree &tree, const QString &identifier, int parent_key)
{
    account_row parent;
    parent.key = 3;
    parent.description = "iCloud"_s;
    parent.identifier = "parent"_s;
    tree.accounts().add_account(parent);
    account_row account;
    account.identifier = identifier;
    account.user_name = "not the last"_s;
    tree.accounts().add_account(account);
    account.parent = parent_key;
    account.date = 600000000.309041;
    account.owning_bundle_id = "com.apple.accountsd"_s;
    account.user_name = "anna@example.org"_s;
    account.description = "not this one"_s;
    tree.accounts().add_account(account);
}

} // namespace

class test_ios_uniform_accounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // One run behind the other: found, of a parent unknown, unknown, of a number, not selected, and not selected where
    // an account has no identifier. 600000000 seconds behind 2001-01-01 are 1578307200 seconds behind 1970-01-01.
    void rows()
    {
        const auto selected = [](const QVariant &item) { return QVariant(dictionary{{"lastSelectedItem", item}}); };
        const QVariant known = selected(dictionary{{"uniqueID", id}});
        const QVariant unknown = selected(dictionary{{"uniqueID", "other"_s}});
        const QVariant number = selected(dictionary{{"uniqueID", 5}});
        const QVariant other = dictionary{{"other", 1}};
        const QTemporaryDir folder;
        const QString root = folder.filePath("source"_s);
        host_run run("iOS_Uniform"_s, root, {"accounts"_s});
        for (const auto &[list, identifier, parent] : {std::tuple(known, id, 3),
                                                       {known, id, 99},
                                                       {unknown, id, 3},
                                                       {number, "5"_s, 3},
                                                       {other, id, 3},
                                                       {selected("no dictionary"_s), ""_s, 3}}) {
            QDir(root).removeRecursively();
            ios_file_tree tree(root);
            tree.write_mailbox_collections(list, parent == 3 ? property_list_form::binary : property_list_form::xml);
            add_accounts(tree, identifier, parent);
            tree.finish();
            run.prepare();
            run.extract();
            QCOMPARE(run.log_of(operation).mid(run.row_count("accounts"_s) * 2 - 2),
                     (QStringList{"Starts"_s, "Ends"_s}));
        }
        QCOMPARE(difference_to_expected(run.rows("accounts"_s), EXPECTED_FOLDER "/uniform_accounts.txt"_s), QString());
    }

    void failures_data()
    {
        QTest::addColumn<writing>("write");
        QTest::addColumn<QStringList>("log"); // behind the start
        const auto row = [](const char *name, writing write, const QStringList &log) {
            QTest::newRow(name) << write << log;
        };
        row("property list missing", [](ios_file_tree &tree) { add_accounts(tree, id, 3); }, {});
        row("account database missing", [](ios_file_tree &tree) { tree.write_mailbox_collections(id); }, {});
        row("property list is an array",
            [](ios_file_tree &tree) {
                tree.write_mailbox_collections(QVariantList{1}, property_list_form::binary);
                add_accounts(tree, id, 3);
            },
            {list_failure});
        row("property list is none",
            [](ios_file_tree &tree) { evidence::write_file(tree.mailbox_collections_path(), "no property list"); },
            {list_failure});
        row("account database is none",
            [](ios_file_tree &tree) {
                tree.write_mailbox_collections(id);
                tree.add_file("private/var/mobile/Library/Accounts/Accounts3.sqlite"_s, QByteArray(200, 'x'));
            },
            {"Select query -----FAILED----- TMP/Accounts3.sqlite"_s, "ERROR :- file is not a database"_s,
             "Query :- SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT WHERE ZIDENTIFIER = ?"_s});
        row("account database is a folder",
            [](ios_file_tree &tree) {
                tree.write_mailbox_collections(id);
                evidence::make_folder(tree.accounts_path());
            },
            {"Source Db open -----FAILED-----TMP/Accounts3.sqlite"_s, "Error :- unable to open database file"_s});
    }

    void failures()
    {
        QFETCH(writing, write);
        QFETCH(QStringList, log);
        const QTemporaryDir folder;
        ios_file_tree tree(folder.filePath("source"_s));
        write(tree);
        tree.finish();
        host_run run("iOS_Uniform"_s, tree.root(), {"accounts"_s});
        run.run();
        QCOMPARE(run.row_count("accounts"_s), 0);
        QCOMPARE(run.log_of(operation), QStringList{"Starts"_s} + log);
        QCOMPARE(run.tab_signals, QList<int>{1});
    }
};

QTEST_MAIN(test_ios_uniform_accounts)
#include "test_ios_uniform_accounts.moc"
