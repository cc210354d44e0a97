// The tables accounts, vip_contacts and preferences of a device backup, from the lists of the mail application and of
// the search daemon and from the account database.
#include "evidence/accounts_database.h"
#include "tests/ios/plain_backup.h"

#include <QDateTime>

using evidence::account_row;
using dictionary = evidence::property_list_dictionary;

namespace {

const QString accounts_tab = "accounts"_s;
const QString vip_tab = "vip_contacts"_s;
const QString preferences_tab = "preferences"_s;
const QStringList all_tabs{accounts_tab, vip_tab, preferences_tab};

void write_accounts(const plain_backup &backup)
{
    evidence::accounts_database accounts(backup.path_of(accounts_path));
    account_row parent;
    parent.key = 3;
    parent.description = "iCloud"_s;
    accounts.add_account(parent);
    account_row account;
    account.parent = 3;
    account.identifier = "A-1"_s;
    account.user_name = "not the last"_s;
    accounts.add_account(account);
    account.date = 600000000.309041;
    account.owning_bundle_id = "com.apple.accountsd"_s;
    account.user_name = "anna@example.org"_s;
    account.parent = 99; // none: the description is the one in front
    accounts.add_account(account);
    account.identifier = ""_s;
    accounts.add_account(account);
    accounts.finish();
}

QString difference_to(const QString &expected_file, const QString &rows)
{
    return difference_to_expected(rows, EXPECTED_FOLDER "/"_s + expected_file);
}

} // namespace

class test_ios_uid_accounts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void accounts()
    {
        plain_backup backup;
        write_accounts(backup);
        const dictionary known{{"name", "Work"_s}, {"uniqueID", "A-1"_s}, {"syncsReadState", 1.0}};
        const dictionary no_state{{"name", "passed over"_s}, {"uniqueID", "A-1"_s}};
        const dictionary unknown{{"uniqueID", "other"_s}, {"name", 5}, {"syncsReadState", 2}};
        const dictionary no_id{{"syncsReadState", 0}}; // not that of the account whose identifier is empty
        const QVariantList subsections{known, no_state, "no dictionary"_s, unknown, no_id};
        backup.add_list(mail_list_path, dictionary{{"LastDataProviderSubsections", subsections}});
        backup_run run(backup, {accounts_tab});
        run.run();
        QCOMPARE(difference_to("uid_accounts.txt"_s, run.rows(accounts_tab)), QString());
        QCOMPARE(run.log_of_operation("xcode_extract_mail_accounts"),
                 (QStringList{"[xcode_extract_mail_accounts] Starts"_s,
                              "[xcode_extract_mail_accounts] stateRestore_var == nil, Continue"_s,
                              "[xcode_extract_mail_accounts] Ends"_s}));
        QCOMPARE(run.tab_signals, QList<int>{1});
    }

    void vip_contacts()
    {
        plain_backup backup;
        const dictionary ben{{"n", "Ben Öztürk"_s}, {"a", QStringList{"1@b"_s, "2@b"_s, "3@b"_s}}};
        const dictionary senders{{"Z-1", ben},
                                 {"A-2", dictionary{{"n", "no addresses"_s}}},
                                 {"A-1", dictionary{{"n", 7}, {"a", QVariantList{}}}}};
        backup.add_list(mail_list_path, dictionary{{"VIP-senders", senders}});
        const dictionary cem{{"displayName", "Cem"_s},
                             {"uniqueIdentifier", "U-1"_s},
                             {"priv_totalMessageCount", 12},
                             {"priv_recentInteractionDate", QDateTime::fromMSecsSinceEpoch(1578307200500, Qt::UTC)},
                             {"emailAddresses", QStringList{"c@x"_s, "d@x"_s}}};
        const dictionary other_kinds{{"priv_totalMessageCount", "12"_s},
                                     {"priv_recentInteractionDate", 600000000},
                                     {"emailAddresses", QVariantList{}}};
        const QVariantList vips{cem, dictionary{{"displayName", "no addresses"_s}}, "no dictionary"_s, other_kinds};
        backup.add_list(search_list_path, dictionary{{"mailVips", vips}});
        backup_run run(backup, {vip_tab});
        run.run();
        QCOMPARE(difference_to("uid_vip_contacts.txt"_s, run.rows(vip_tab)), QString());
        QCOMPARE(run.log().filter("FAILED"_s), QStringList());
        QCOMPARE(run.tab_signals, QList<int>{1});
        QCOMPARE(run.record_signals, (QList<qint64>{0, 2, 4, 4, 4}));
    }

    void preferences()
    {
        // 1578307200 seconds behind 1970 are the 6th of January 2020, 10:40; AppTimeInterval lies an hour behind.
        const dictionary all_keys{{"DefaultSendingAccount", "A-1"_s},
                                  {"AppTimeInterval", 600003600.9},
                                  {"ShowMessageDeleteConfirmation", true},
                                  {"ShowToCCIndicators", 5},
                                  {"MobileMailVersion", 53.9},
                                  {"UnreadMailboxControllerBadgeCount", 1},
                                  {"HasAttachmentsMailboxControllerBadgeCount", 2},
                                  {"IncludesMeMailboxControllerBadgeCount", 3},
                                  {"FlaggedMailboxControllerBadgeCount", 4},
                                  {"VIPMailboxControllerBadgeCount", 5}};
        const dictionary no_key{{"DefaultSendingAccount", "other"_s}};
        for (const auto &[list, expected] :
             {std::pair(all_keys, "uid_preferences.txt"_s), {no_key, "uid_preferences_missing.txt"_s}}) {
            plain_backup backup;
            write_accounts(backup);
            backup.add_list(mail_list_path, list);
            backup_run run(backup, {preferences_tab});
            run.run();
            QCOMPARE(difference_to(expected, run.rows(preferences_tab)), QString());
            QCOMPARE(run.log_of_operation("xcode_extract_mail_preferences").value(1),
                     "[xcode_extract_mail_preferences] Ends"_s);
        }
    }

    void lists_without_their_keys()
    {
        plain_backup nothing;
        backup_run without_lists(nothing, all_tabs);
        without_lists.run();
        QCOMPARE(without_lists.tab_signals, (QList<int>{1, 2, 3}));
        QCOMPARE(without_lists.log().filter("FAILED"_s), QStringList());

        plain_backup backup; // without account database
        backup.add_list(mail_list_path, dictionary{{"other", 1}});
        backup.add_list(search_list_path, dictionary{{"mailVips", dictionary{}}});
        backup_run run(backup, all_tabs);
        run.run();
        QCOMPARE(run.log().filter("FAILED"_s),
                 (QStringList{"mail_ios_uid::xcode_extract_mail_accounts: [xcode_extract_mail_accounts] "
                              "LastDataProviderSubsections nil  ---FAILED--- "_s,
                              "mail_ios_uid::xcode_extract_mail_vip_senders: [xcode_extract_mail_vip_senders] "
                              "VIP-senders nil  ---FAILED--- "_s,
                              "mail_ios_uid::xcode_extract_mail_vip_contacts:  m_plist mailVips not found  "
                              "---FAILED--- "_s}));
        QVERIFY(!run.log_of_operation("xcode_extract_mail_preferences").filter("Starts"_s).isEmpty());
        QVERIFY(run.log_of_operation("xcode_extract_mail_preferences").filter("Ends"_s).isEmpty());
        QCOMPARE(run.row_count(preferences_tab), 0);
    }

    void damaged_sources()
    {
        plain_backup backup;
        const dictionary entry{{"syncsReadState", true}};
        const dictionary sender{{"a", QStringList{"a@b"_s}}};
        backup.add_list(
            mail_list_path,
            dictionary{{"LastDataProviderSubsections", QVariantList{entry, entry}},
                       {"VIP-senders", dictionary{{"1", sender}, {"2", "of another kind"_s}, {"3", sender}}}});
        backup.add_file(accounts_path, QByteArray(200, 'x'));
        backup.add_file(search_list_path, "no property list");
        backup_run run(backup, all_tabs);
        run.run();
        QCOMPARE(run.row_count(vip_tab), 1); // behind the other kind the list is not read
        QCOMPARE(run.log_of_operation("xcode_extract_mail_vip_senders"),
                 (QStringList{"[xcode_extract_mail_vip_senders] Starts"_s,
                              "[xcode_extract_mail_vip_senders] senders_Field nil  ---FAILED--- "_s}));
        QCOMPARE(run.log_of_operation("xcode_extract_mail_vip_contacts").filter("FAILED"_s),
                 QStringList{" m_plist open  ---FAILED--- SOURCE/"_s + search_list_path});
        const QStringList reason{"file is not a database"_s, "SELECT ZPARENTACCOUNT,ZDATE,ZOWNINGBUNDLEID,ZUSERNAME "
                                                             "FROM ZACCOUNT WHERE ZIDENTIFIER=?"_s};
        const QString place = "query_select ---FAILED--- SOURCE/"_s + accounts_path;
        QCOMPARE(run.log_of_operation("xcode_extract_mail_accounts").mid(1),
                 QStringList{"[extract_notes]"_s + place} + reason);
        QCOMPARE(run.log_of_operation("xcode_extract_mail_preferences").mid(1),
                 QStringList{"[xcode_extract_mail_preferences]"_s + place} + reason);
    }
};

QTEST_MAIN(test_ios_uid_accounts)
#include "test_ios_uid_accounts.moc"
