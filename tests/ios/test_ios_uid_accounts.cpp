// The tables accounts, vip_contacts and preferences of a device backup, from the lists of the mail application and of
// the search daemon and from the account database.
#include "evidence/accounts_database.h"
#include "evidence/property_list_file.h"
#include "tests/ios/plain_backup.h"

#include <QDateTime>
#include <QTest>

using evidence::account_row;
using evidence::property_list_dictionary;

namespace {

const QString accounts_tab = QStringLiteral("accounts");
const QString vip_tab = QStringLiteral("vip_contacts");
const QString preferences_tab = QStringLiteral("preferences");
const QStringList all_tabs{accounts_tab, vip_tab, preferences_tab};

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QString expected_file(const char *name)
{
    return QLatin1String(EXPECTED_FOLDER) + QLatin1Char('/') + QLatin1String(name);
}

void write_list(const plain_backup &backup, const QString &domain_path, const QVariant &root)
{
    evidence::write_property_list_file(backup.path_of(domain_path), root, evidence::property_list_form::binary);
}

void write_accounts(const plain_backup &backup)
{
    evidence::accounts_database accounts(backup.path_of(accounts_path));
    account_row parent;
    parent.key = 3;
    parent.description = text("iCloud");
    accounts.add_account(parent);
    account_row account;
    account.parent = 3;
    account.identifier = text("A-1");
    account.user_name = text("not the last");
    accounts.add_account(account);
    account.date = 600000000.309041;
    account.owning_bundle_id = text("com.apple.accountsd");
    account.user_name = text("anna@example.org");
    account.parent = 99; // none: the description is the one in front
    accounts.add_account(account);
    account.identifier = text("");
    accounts.add_account(account);
    accounts.finish();
}

// The log of an operation, without its start and end lines.
QStringList failures_of(const host_run &run, const char *name)
{
    QStringList lines = run.log_of(QLatin1String("mail_ios_uid::") + QLatin1String(name));
    for (const char *line : {"Starts", "Ends"}) {
        lines.removeAll(QLatin1String(line));
        lines.removeAll(QLatin1Char('[') + QLatin1String(name) + QLatin1String("] ") + QLatin1String(line));
    }
    return lines;
}

bool has_ended(const host_run &run, const char *name)
{
    const QString last = run.log_of(QLatin1String("mail_ios_uid::") + QLatin1String(name)).value(1);
    return last == QLatin1Char('[') + QLatin1String(name) + QLatin1String("] Ends");
}

} // namespace

class test_ios_uid_accounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accounts();
    void vip_contacts();
    void vip_sender_of_another_kind();
    void preferences_data();
    void preferences();
    void missing_and_damaged_sources();
};

void test_ios_uid_accounts::accounts()
{
    plain_backup backup;
    write_accounts(backup);
    const property_list_dictionary known{{"name", text("Work")}, {"uniqueID", text("A-1")}, {"syncsReadState", 1.0}};
    const property_list_dictionary no_state{{"name", text("passed over")}, {"uniqueID", text("A-1")}};
    const property_list_dictionary unknown{{"uniqueID", text("other")}, {"name", 5}, {"syncsReadState", 2}};
    const property_list_dictionary no_id{{"syncsReadState", 0}}; // not that of the account whose identifier is empty
    write_list(backup, mail_list_path,
               property_list_dictionary{{"LastDataProviderSubsections",
                                         QVariantList{known, no_state, text("no dictionary"), unknown, no_id}}});
    backup_run run(backup, {accounts_tab});
    run.run();
    QCOMPARE(difference_to_expected(run.rows(accounts_tab), expected_file("uid_accounts.txt")), QString());
    QCOMPARE(failures_of(run, "xcode_extract_mail_accounts"),
             QStringList{text("[xcode_extract_mail_accounts] stateRestore_var == nil, Continue")});
    QCOMPARE(run.tab_signals, QList<int>{1});
}

void test_ios_uid_accounts::vip_contacts()
{
    plain_backup backup;
    write_list(backup, mail_list_path,
               property_list_dictionary{
                   {"VIP-senders",
                    property_list_dictionary{
                        {"Z-1", property_list_dictionary{{"n", text("Ben Öztürk")},
                                                         {"a", QStringList{text("1@b"), text("2@b"), text("3@b")}}}},
                        {"A-2", property_list_dictionary{{"n", text("no addresses")}}},
                        {"A-1", property_list_dictionary{{"n", 7}, {"a", QVariantList{}}}}}}});
    const QDateTime when = QDateTime::fromMSecsSinceEpoch(1578307200500, Qt::UTC);
    write_list(backup, search_list_path,
               property_list_dictionary{
                   {"mailVips",
                    QVariantList{property_list_dictionary{{"displayName", text("Cem")},
                                                          {"uniqueIdentifier", text("U-1")},
                                                          {"priv_totalMessageCount", 12},
                                                          {"priv_recentInteractionDate", when},
                                                          {"emailAddresses", QStringList{text("c@x"), text("d@x")}}},
                                 property_list_dictionary{{"displayName", text("no addresses")}}, text("no dictionary"),
                                 property_list_dictionary{{"priv_totalMessageCount", text("12")},
                                                          {"priv_recentInteractionDate", 600000000},
                                                          {"emailAddresses", QVariantList{}}}}}});
    backup_run run(backup, {vip_tab});
    run.run();
    QCOMPARE(difference_to_expected(run.rows(vip_tab), expected_file("uid_vip_contacts.txt")), QString());
    QCOMPARE(failures_of(run, "xcode_extract_mail_vip_senders"), QStringList());
    QCOMPARE(failures_of(run, "xcode_extract_mail_vip_contacts"), QStringList());
    QCOMPARE(run.tab_signals, QList<int>{1});
    QCOMPARE(run.record_signals, (QList<qint64>{0, 2, 4, 4, 4}));
}

void test_ios_uid_accounts::vip_sender_of_another_kind()
{
    plain_backup backup;
    const QVariant sender = property_list_dictionary{{"a", QStringList{text("a@b")}}};
    write_list(backup, mail_list_path,
               property_list_dictionary{
                   {"VIP-senders", property_list_dictionary{{"1", sender}, {"2", text("x")}, {"3", sender}}}});
    backup_run run(backup, {vip_tab});
    run.run();
    QCOMPARE(run.row_count(vip_tab), 1); // the rest of the list is not read
    QCOMPARE(run.log_of(text("mail_ios_uid::xcode_extract_mail_vip_senders")),
             (QStringList{text("[xcode_extract_mail_vip_senders] Starts"),
                          text("[xcode_extract_mail_vip_senders] senders_Field nil  ---FAILED--- ")}));
}

void test_ios_uid_accounts::preferences_data()
{
    QTest::addColumn<QVariant>("list");
    QTest::addColumn<QString>("file");
    // 1578307200 seconds behind 1970 are the 6th of January 2020, 10:40; AppTimeInterval lies an hour behind.
    QTest::newRow("all keys") << QVariant(property_list_dictionary{{"DefaultSendingAccount", text("A-1")},
                                                                   {"AppTimeInterval", 600003600.9},
                                                                   {"ShowMessageDeleteConfirmation", true},
                                                                   {"ShowToCCIndicators", 5},
                                                                   {"MobileMailVersion", 53.9},
                                                                   {"UnreadMailboxControllerBadgeCount", 1},
                                                                   {"HasAttachmentsMailboxControllerBadgeCount", 2},
                                                                   {"IncludesMeMailboxControllerBadgeCount", 3},
                                                                   {"FlaggedMailboxControllerBadgeCount", 4},
                                                                   {"VIPMailboxControllerBadgeCount", 5}})
                              << text("uid_preferences.txt");
    QTest::newRow("no key") << QVariant(property_list_dictionary{{"DefaultSendingAccount", text("other")}})
                            << text("uid_preferences_missing.txt");
}

void test_ios_uid_accounts::preferences()
{
    QFETCH(QVariant, list);
    QFETCH(QString, file);
    plain_backup backup;
    write_accounts(backup);
    write_list(backup, mail_list_path, list);
    backup_run run(backup, {preferences_tab});
    run.run();
    const QString paths =
        text("  os_scheme_display = \"Display of iOS_UID\"\n  source_count_name = \"Source1\"\n"
             "  source_file = \"/AppDomain-com.apple.mobilemail/Library/Preferences/com.apple.mobilemail.plist;"
             "/HomeDomain/Library/Accounts/Accounts3.sqlite\"\n"
             "  artifacts_relation_source_file = \"/AppDomain-com.apple.mobilemail/Library/Preferences/"
             "com.apple.mobilemail.plist;/HomeDomain/Library/Accounts/Accounts3.sqlite\"\n");
    QString rows = run.rows(preferences_tab);
    QCOMPARE(rows.count(paths), 14);
    rows.remove(paths).remove(text("row\n  bookmark = 0\n"));
    QCOMPARE(difference_to_expected(rows, expected_file(file.toUtf8().constData())), QString());
    QVERIFY(has_ended(run, "xcode_extract_mail_preferences"));
}

void test_ios_uid_accounts::missing_and_damaged_sources()
{
    plain_backup nothing;
    backup_run without_lists(nothing, all_tabs);
    without_lists.run();
    QCOMPARE(without_lists.tab_signals, (QList<int>{1, 2, 3}));
    QCOMPARE(without_lists.log().filter(text("FAILED")), QStringList());

    // The lists are there, but neither their keys nor the account database are.
    plain_backup without_keys;
    write_list(without_keys, mail_list_path, property_list_dictionary{{"other", 1}});
    write_list(without_keys, search_list_path, property_list_dictionary{{"mailVips", property_list_dictionary{}}});
    backup_run keyless(without_keys, all_tabs);
    keyless.run();
    QCOMPARE(keyless.log().filter(text("FAILED")),
             (QStringList{text("mail_ios_uid::xcode_extract_mail_accounts: [xcode_extract_mail_accounts] "
                               "LastDataProviderSubsections nil  ---FAILED--- "),
                          text("mail_ios_uid::xcode_extract_mail_vip_senders: [xcode_extract_mail_vip_senders] "
                               "VIP-senders nil  ---FAILED--- "),
                          text("mail_ios_uid::xcode_extract_mail_vip_contacts:  m_plist mailVips not found  "
                               "---FAILED--- ")}));
    QVERIFY(!has_ended(keyless, "xcode_extract_mail_preferences"));
    QCOMPARE(keyless.row_count(preferences_tab), 0);

    plain_backup damaged;
    const property_list_dictionary entry{{"syncsReadState", true}};
    write_list(damaged, mail_list_path,
               property_list_dictionary{{"LastDataProviderSubsections", QVariantList{entry, entry}}});
    damaged.add_file(accounts_path, QByteArray(200, 'x'));
    damaged.add_file(search_list_path, "no property list");
    backup_run broken(damaged, all_tabs);
    broken.run();
    const QStringList select_failure{
        text("SOURCE/HomeDomain/Library/Accounts/Accounts3.sqlite"), text("file is not a database"),
        text("SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME FROM ZACCOUNT WHERE ZIDENTIFIER=?")};
    QStringList accounts_failure = select_failure;
    accounts_failure[0].prepend(text("[extract_notes]query_select ---FAILED--- "));
    QStringList preferences_failure = select_failure;
    preferences_failure[0].prepend(text("[xcode_extract_mail_preferences]query_select ---FAILED--- "));
    QCOMPARE(failures_of(broken, "xcode_extract_mail_accounts"), accounts_failure);
    QCOMPARE(failures_of(broken, "xcode_extract_mail_preferences"), preferences_failure);
    QCOMPARE(failures_of(broken, "xcode_extract_mail_vip_contacts"),
             QStringList{text(" m_plist open  ---FAILED--- SOURCE/HomeDomain/Library/Preferences/"
                              "com.apple.searchd.plist")});
}

QTEST_MAIN(test_ios_uid_accounts)
#include "test_ios_uid_accounts.moc"
