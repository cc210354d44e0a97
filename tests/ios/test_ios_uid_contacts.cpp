// The search for the files of a device backup, and the table contacts from both of its databases.
#include "evidence/ios_backup_databases.h"
#include "tests/ios/plain_backup.h"
#include "tests/support/tree_snapshot.h"

#include <QFile>
#include <QTest>

namespace {

const QString contacts_tab = QStringLiteral("contacts");
const QString recents_operation = QStringLiteral("mail_ios_uid::extract_mailContact");
const QString book_operation = QStringLiteral("mail_ios_uid::extract_mailContact_11");

void write_recents(const plain_backup &backup)
{
    evidence::recents_database recents(backup.path_of(recents_path), evidence::sqlite_storage::wal_only);
    recents.add_contact(7, {QStringLiteral("Ben Öztürk"), QStringLiteral("email"), QStringLiteral("ben@example.org")});
    recents.add_contact(8, {QString(), QLatin1String(""), QStringLiteral("+49 30 1")});
    recents.finish();
}

void write_address_book(const plain_backup &backup)
{
    evidence::address_book_database book(backup.path_of(address_book_path));
    evidence::address_book_person anna;
    anna.first = QStringLiteral("Anna");
    anna.last = QStringLiteral("Müller");
    anna.middle = QStringLiteral("M.");
    anna.nickname = QStringLiteral("Anni");
    anna.display_name = QStringLiteral("Anna Müller");
    anna.organization = QStringLiteral("Example");
    anna.image_uri = QStringLiteral("image:1");
    anna.job_title = QStringLiteral("Baker");
    anna.creation_date = 600000000;
    anna.modification_date = 600000000.75;
    anna.prefix = QStringLiteral("Dr.");
    anna.suffix = QStringLiteral("jr.");
    anna.note = QStringLiteral("a note");
    anna.birthday = QStringLiteral("-86400.0");
    anna.alternate_birthday = QStringLiteral("86400.5");
    anna.first_phonetic = QStringLiteral("an-na");
    anna.middle_phonetic = QStringLiteral("em");
    anna.last_phonetic = QStringLiteral("mül-ler");
    anna.phone = QStringLiteral("+49 30 2");
    anna.email = QStringLiteral("anna@example.org anna@work.org");
    anna.address = QStringLiteral("Street 1");
    book.add_person(anna);
    evidence::address_book_person without_mail;
    without_mail.first = QStringLiteral("No mail");
    without_mail.note = QString(17 << 20, QLatin1Char('x')); // never read
    book.add_person(without_mail);
    evidence::address_book_person mail_only;
    mail_only.creation_date = 0;
    mail_only.email = QLatin1String("");
    mail_only.note = without_mail.note; // left out
    book.add_person(mail_only);
    book.finish();
}

} // namespace

class test_ios_uid_contacts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows();
    void search();
    void failures();
};

void test_ios_uid_contacts::rows()
{
    plain_backup backup;
    write_recents(backup);
    write_address_book(backup);
    const tree_snapshot before(backup.root());
    backup_run run(backup, {contacts_tab});
    run.run();
    QCOMPARE(difference_to_expected(run.rows(contacts_tab), QStringLiteral(EXPECTED_FOLDER "/uid_contacts.txt")),
             QString());
    QCOMPARE(before.changes(), QString());
    QCOMPARE(run.tab_signals, (QList<int>{1, 2})); // one for each database
    QCOMPARE(run.record_signals, (QList<qint64>{0, 2, 4, 4, 4}));
    QCOMPARE(run.log_of(recents_operation), (QStringList{QStringLiteral("[extract_mailContact] -Start"),
                                                         QStringLiteral("[extract_mailContact] -End")}));
    QCOMPARE(run.log_of(book_operation),
             (QStringList{QStringLiteral("[extract_mailContact_11] -Start"),
                          QStringLiteral("value larger than 16 MiB -----FAILED-----, left out: ABPerson.Note"),
                          QStringLiteral("[extract_mailContact_11] -End")}));
}

void test_ios_uid_contacts::search()
{
    plain_backup backup;
    write_address_book(backup);
    evidence::make_folder(evidence::folder_of(backup.path_of(recents_path)));
    QTemporaryDir elsewhere;
    const QString examiners = elsewhere.filePath(QStringLiteral("Recents"));
    evidence::recents_database recents(examiners);
    recents.add_contact(1, {QStringLiteral("the examiner's"), QString(), QString()});
    recents.finish();
    QVERIFY(QFile::link(examiners, backup.path_of(recents_path))); // it leads out of the backup
    backup_run run(backup, {contacts_tab, QStringLiteral("accounts")});
    run.prepare();
    QCOMPARE(backup.asked,
             (QStringList{recents_path, address_book_path, mail_list_path, accounts_path, sms_path, search_list_path}));
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
    const QStringList search{QStringLiteral("[find_source_file] starts"), QStringLiteral("[find_source_file] ends")};
    QCOMPARE(run.log_of(QStringLiteral("mail_ios_uid::find_source_file")), search + search + search);
}

void test_ios_uid_contacts::failures()
{
    plain_backup backup;
    backup.add_file(recents_path, QByteArray(200, 'x'));
    evidence::make_folder(backup.path_of(address_book_path));
    backup_run run(backup, {contacts_tab});
    run.run();
    QCOMPARE(run.row_count(contacts_tab), 0);
    QCOMPARE(run.tab_signals, (QList<int>{1, 2}));
    QCOMPARE(run.log_of(recents_operation),
             (QStringList{QStringLiteral("[extract_mailContact] -Start"),
                          QStringLiteral("[extract_mailContact]Select query ---FAILED---"),
                          QStringLiteral("file is not a database"),
                          QStringLiteral("select recent_id,display_name,kind,address from contacts")}));
    QCOMPARE(run.log_of(book_operation),
             (QStringList{QStringLiteral("[extract_mailContact_11] -Start"),
                          QStringLiteral("[extract_mailContact_11]Source Db opening ----FAILED----"),
                          QStringLiteral("unable to open database file"), QStringLiteral("TMP/AddressBook.sqlitedb")}));
}

QTEST_MAIN(test_ios_uid_contacts)
#include "test_ios_uid_contacts.moc"
