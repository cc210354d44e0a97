// The search for the files of a device backup, and the table contacts from both of its databases.
#include "evidence/ios_backup_databases.h"
#include "tests/ios/plain_backup.h"
#include "tests/support/tree_snapshot.h"

namespace {

const QString contacts_tab = "contacts"_s;
const char *recents_operation = "extract_mailContact";
const char *book_operation = "extract_mailContact_11";

void write_recents(const plain_backup &backup)
{
    evidence::recents_database recents(backup.path_of(recents_path), evidence::sqlite_storage::wal_only);
    recents.add_contact(7, {"Ben Öztürk"_s, "email"_s, "ben@example.org"_s});
    recents.add_contact(8, {QString(), ""_s, "+49 30 1"_s});
    recents.finish();
}

void write_address_book(const plain_backup &backup)
{
    evidence::address_book_database book(backup.path_of(address_book_path));
    evidence::address_book_person anna;
    anna.phone = "+49 30 2"_s;
    anna.email = "anna@example.org anna@work.org"_s;
    anna.address = "Street 1"_s;
    book.add_person(anna);
    book.database().run(
        "UPDATE ABPerson SET First = 'Anna', Last = 'Müller', Middle = 'M.', Nickname = 'Anni', Prefix = 'Dr.', "
        "DisplayName = 'Anna Müller', Organization = 'Example', ImageURI = 'image:1', JobTitle = 'Baker', "
        "CreationDate = 600000000, ModificationDate = 600000000.75, Suffix = 'jr.', Note = 'a note', "
        "Birthday = '-86400.0', AlternateBirthday = '86400.5', FirstPhonetic = 'an-na', MiddlePhonetic = 'em', "
        "LastPhonetic = 'mül-ler'"_s);
    evidence::address_book_person without_mail;
    without_mail.first = "No mail"_s;
    without_mail.note = QString(17 << 20, QLatin1Char('x')); // never read
    book.add_person(without_mail);
    evidence::address_book_person mail_only;
    mail_only.creation_date = 0;
    mail_only.email = ""_s;
    mail_only.note = without_mail.note; // left out
    book.add_person(mail_only);
    book.finish();
}

} // namespace

class test_ios_uid_contacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows()
    {
        plain_backup backup;
        write_recents(backup);
        write_address_book(backup);
        const tree_snapshot before(backup.root());
        backup_run run(backup, {contacts_tab});
        run.run();
        QCOMPARE(difference_to_expected(run.rows(contacts_tab), EXPECTED_FOLDER "/uid_contacts.txt"_s), QString());
        QCOMPARE(before.changes(), QString());
        QCOMPARE(run.tab_signals, (QList<int>{1, 2})); // one for each database
        QCOMPARE(run.record_signals, (QList<qint64>{0, 2, 4, 4, 4}));
        QCOMPARE(run.log_of_operation(recents_operation),
                 (QStringList{"[extract_mailContact] -Start"_s, "[extract_mailContact] -End"_s}));
        QCOMPARE(run.log_of_operation(book_operation),
                 (QStringList{"[extract_mailContact_11] -Start"_s,
                              "value larger than 16 MiB -----FAILED-----, left out: ABPerson.Note"_s,
                              "[extract_mailContact_11] -End"_s}));
    }

    void search()
    {
        plain_backup backup;
        write_address_book(backup);
        evidence::make_folder(evidence::folder_of(backup.path_of(recents_path)));
        QTemporaryDir elsewhere;
        const QString examiners = elsewhere.filePath("Recents"_s);
        evidence::recents_database recents(examiners);
        recents.add_contact(1, {"the examiner's"_s, QString(), QString()});
        recents.finish();
        QVERIFY(QFile::link(examiners, backup.path_of(recents_path))); // it leads out of the backup
        backup_run run(backup, {contacts_tab, "accounts"_s});
        run.prepare();
        QCOMPARE(backup.asked, (QStringList{recents_path, address_book_path, mail_list_path, accounts_path, sms_path,
                                            search_list_path}));
        run.extract();
        QCOMPARE(run.row_count(contacts_tab), 2);
        QCOMPARE(run.tab_signals, (QList<int>{1, 2})); // the address book, and accounts without a word

        // The backup holds nothing any more; a second search starts afresh.
        QVERIFY(QFile::remove(backup.path_of(address_book_path)));
        run.plugin().pub_find_source_file();
        run.extract();
        QCOMPARE(run.row_count(contacts_tab), 2);
        run.backup_parser = nullptr;
        run.run();
        QCOMPARE(run.row_count(contacts_tab), 2);
        const QStringList search{"[find_source_file] starts"_s, "[find_source_file] ends"_s};
        QCOMPARE(run.log_of_operation("find_source_file"), search + search + search);
    }

    void failures()
    {
        plain_backup backup;
        backup.add_file(recents_path, QByteArray(200, 'x'));
        evidence::make_folder(backup.path_of(address_book_path));
        backup_run run(backup, {contacts_tab});
        run.run();
        QCOMPARE(run.row_count(contacts_tab), 0);
        QCOMPARE(run.tab_signals, (QList<int>{1, 2}));
        QCOMPARE(
            run.log_of_operation(recents_operation),
            (QStringList{"[extract_mailContact] -Start"_s, "[extract_mailContact]Select query ---FAILED---"_s,
                         "file is not a database"_s, "select recent_id,display_name,kind,address from contacts"_s}));
        QCOMPARE(run.log_of_operation(book_operation),
                 (QStringList{"[extract_mailContact_11] -Start"_s,
                              "[extract_mailContact_11]Source Db opening ----FAILED----"_s,
                              "unable to open database file"_s, "TMP/AddressBook.sqlitedb"_s}));
    }
};

QTEST_MAIN(test_ios_uid_contacts)
#include "test_ios_uid_contacts.moc"
