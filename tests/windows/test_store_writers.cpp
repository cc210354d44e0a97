// The tables that store.vol and the files beside it fill: rows, log lines and signals.
#include "evidence/ese_file.h"
#include "evidence/files.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/store_source.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <algorithm>
#include <functional>

#include <sys/stat.h>

namespace {

using evidence::windows_profile;

const QString received_files = QStringLiteral("received_attachments_files");

// The start and end lines of a writer.
QStringList plain_log_of(const QString &writer)
{
    return {QLatin1Char('[') + writer + QLatin1String("]---STARTS---"),
            QLatin1Char('[') + writer + QLatin1String("]---ENDS---")};
}

void execute(const QString &database_path, const QString &statement)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(database_path);
        QVERIFY(database.open());
        QVERIFY(QSqlQuery(database).exec(statement));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
}

} // namespace

class test_store_writers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_of_two_stores();
    void columns_and_tables_that_a_store_lacks();
    void damaged_stores_data();
    void damaged_stores();
    void store_whose_records_cannot_be_counted();
    void writers_whose_database_fails_data();
    void writers_whose_database_fails();
    void files_of_received_attachments();
};

void test_store_writers::rows_of_two_stores()
{
    QTemporaryDir folder;
    write_stores(folder.path());
    const tree_snapshot before(folder.path());
    host_run run(QStringLiteral("winOS"), folder.path(), store_tables);
    run.users = QStringList{QStringLiteral("anna:CORP"), QStringLiteral("ben")};
    run.run();

    for (const QString &table : store_tables) {
        const QString difference = difference_to_expected(run.rows(table), QStringLiteral(EXPECTED_FOLDER "/") + table +
                                                                               QLatin1String(".txt"));
        QVERIFY2(difference.isEmpty(), qPrintable(table + QLatin1Char('\n') + difference));
    }
    for (const char *writer : {"extract_appointments", "extract_sent_attachments", "extract_received_attachments",
                               "extract_messages", "extract_contacts", "extract_call_history"}) {
        const QString name = QString::fromLatin1(writer);
        QCOMPARE(run.log_of(QLatin1String("mail_winos::") + name), plain_log_of(name));
    }
    // Start; appointments; sent and received attachments; messages; contacts; calls. A slow run reports in between too.
    const QList<qint64> &reported = run.record_signals;
    for (const qint64 records : {0, 2, 5, 8, 12, 14, 16}) {
        QVERIFY2(reported.contains(records), qPrintable(QString::number(records)));
    }
    QVERIFY(std::is_sorted(reported.cbegin(), reported.cend()) && reported.last() == 16);
    QCOMPARE(run.tab_signals, (QList<int>{1, 2, 3, 4})); // attachments are not counted
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

void test_store_writers::columns_and_tables_that_a_store_lacks()
{
    QTemporaryDir folder;
    const windows_profile anna(folder.path(), QStringLiteral("anna"));
    evidence::ese_file store(anna.store_path());
    const auto tagged = [](const char *name, evidence::ese_type type) {
        evidence::ese_column column;
        column.name = name;
        column.type = type;
        column.storage = evidence::ese_storage::tagged;
        return column;
    };
    const evidence::ese_value time = evidence::ese_value::number(evidence::filetime_of(1600000000));
    store.add_table("Appointment", {tagged("0020001f", evidence::ese_type::long_text)})
        .add_record({evidence::ese_value::text(QStringLiteral("Review"))});
    store.add_table("Contact", {tagged("01bf000b", evidence::ese_type::boolean)})
        .add_record({evidence::ese_value::boolean(true)});
    store.add_table("Message", {tagged("0e060040", evidence::ese_type::date_time)}).add_record({time});
    store
        .add_table("Recipient",
                   {tagged("0e060040", evidence::ese_type::date_time),
                    tagged("3003001F", evidence::ese_type::long_text)}) // a name of another case is another
        .add_record({time, evidence::ese_value::text(QStringLiteral("anna@example.org"))});
    store.finish();

    host_run run(QStringLiteral("winOS"), folder.path(), store_tables);
    run.users = QStringList{QStringLiteral("anna")};
    run.run();
    const QString begin = QStringLiteral("row\n  bookmark = 0\n  INT = 1\n  system_user = \"anna\"\n");
    const QString end = QStringLiteral("  os_scheme_display = \"Display of winOS\"\n  source_count_name = \"Source1\"\n"
                                       "  source_file = \"/Users/anna/AppData/Local/Comms/UnistoreDB/store.vol\"\n");
    QCOMPARE(run.rows(QStringLiteral("appointments")),
             begin + QLatin1String("  name = \"Review\"\n  timestamp = 0\n") + end);
    QCOMPARE(run.rows(QStringLiteral("contacts")), begin + QLatin1String("  email = \"\"\n  address = \"  \"\n") + end);
    QCOMPARE(run.rows(QStringLiteral("messages")),
             begin + QLatin1String("  subject = \"\"\n  to_str = \"\"\n  message_date_sent = 0\n") + end);
    QCOMPARE(run.row_count(QStringLiteral("all_attachments")), 0);
    QCOMPARE(run.log_of(QStringLiteral("mail_winos::extract_call_history")),
             plain_log_of(QStringLiteral("extract_call_history")));
}

using damage = std::function<void(const QString &store)>;
Q_DECLARE_METATYPE(damage)

void test_store_writers::damaged_stores_data()
{
    QTest::addColumn<damage>("damage_store");
    const auto replaced = [](const QByteArray &content) {
        return damage([content](const QString &store) {
            QFile::remove(store);
            evidence::write_file(store, content);
        });
    };
    QTest::newRow("no ESE file") << replaced(QByteArray(100000, 'x'));
    QTest::newRow("empty") << replaced(QByteArray());
    QTest::newRow("cut off") << damage([](const QString &store) { QFile::resize(store, 10000); });
    QTest::newRow("a folder") << damage([](const QString &store) {
        QFile::remove(store);
        QDir().mkpath(store);
    });
    QTest::newRow("a pipe") << damage([](const QString &store) {
        QFile::remove(store);
        ::mkfifo(QFile::encodeName(store).constData(), 0600);
    });
    QTest::newRow("a link out of the source") << damage([](const QString &store) {
        const QString outside = store.left(store.indexOf(QLatin1String("/source/"))) + QLatin1String("/outside");
        QFile::rename(store, outside);
        QFile::link(outside, store);
    });
}

// The other profile gives its rows all the same.
void test_store_writers::damaged_stores()
{
    QFETCH(damage, damage_store);
    QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("source"));
    write_stores(root);
    damage_store(windows_profile(root, QStringLiteral("anna")).store_path());
    const tree_snapshot before(folder.path());
    host_run run(QStringLiteral("winOS"), root, store_tables);
    run.users = QStringList{QStringLiteral("anna"), QStringLiteral("ben")};
    run.run();
    QCOMPARE(run.row_count(QStringLiteral("messages")), 1);
    QCOMPARE(run.row_count(QStringLiteral("all_attachments")), 1);
    QCOMPARE(run.row_count(QStringLiteral("contacts")), 0);
    QCOMPARE(run.log_of(QStringLiteral("mail_winos::extract_messages")),
             plain_log_of(QStringLiteral("extract_messages")));
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

// The pages between a root and the leaves are overwritten.
void test_store_writers::store_whose_records_cannot_be_counted()
{
    constexpr int page_size = 8192; // as the store is written
    constexpr int flags_offset = 36;
    constexpr int page_is_parent_of_leaf = 0x4;
    constexpr int call_count = 30000;
    QTemporaryDir folder;
    write_stores(folder.path());
    windows_profile cara(folder.path(), QStringLiteral("cara"));
    for (int i = 0; i < call_count; ++i) {
        evidence::windows_call call;
        call.start = evidence::filetime_of(1600000000 + i);
        cara.store().add(call);
    }
    cara.finish();
    QFile store(cara.store_path());
    QVERIFY(store.open(QIODevice::ReadWrite));
    QByteArray content = store.readAll();
    int damaged = 0;
    for (int page = 2 * page_size; page < content.size(); page += page_size) {
        if ((content.at(page + flags_offset) & page_is_parent_of_leaf) != 0) {
            content.replace(page + flags_offset + 4, page_size / 2, QByteArray(page_size / 2, '\xff'));
            ++damaged;
        }
    }
    QVERIFY(damaged > 0);
    store.seek(0);
    store.write(content);
    store.close();

    host_run run(QStringLiteral("winOS"), folder.path(), store_tables);
    run.users = QStringList{QStringLiteral("cara"), QStringLiteral("ben")};
    run.run();
    QCOMPARE(run.row_count(QStringLiteral("call_history")), 0);
    QCOMPARE(run.row_count(QStringLiteral("messages")), 1);
    QCOMPARE(run.log_of(QStringLiteral("specific_table::record_type_case")),
             QStringList(QStringLiteral("[record_type_case] number of records not readable: file "
                                        "SOURCE/Users/cara/AppData/Local/Comms/UnistoreDB/store.vol, "
                                        "table CallHistory, record 0")));
}

void test_store_writers::writers_whose_database_fails_data()
{
    QTest::addColumn<QString>("tab");
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("open_failure");
    QTest::addColumn<QString>("insert_failure");
    const auto row = [](const char *writer, const char *tab, const char *open_failure, const char *insert_failure) {
        QTest::newRow(writer) << QString::fromLatin1(tab) << QString::fromLatin1(tab)
                              << QString::fromLatin1(open_failure) << QString::fromLatin1(insert_failure);
    };
    row("extract_appointments", "appointments", "[extract_appointments]Destination Db opening -----FAILED-------- ",
        "[extract_appointments]---Insert Query ---FAILED---- in Table appointments ");
    row("extract_sent_attachments", "all_attachments",
        "[extract_sent_attachments]Destination Db opening -------FAILED-------- ",
        "[extract_sent_attachments]Insert Query ---FAILED---- in sent_attachments Table ");
    row("extract_received_attachments", "all_attachments",
        "[extract_sent_attachments]Destination Db opening ------FAILED----- ",
        "[extract_received_attachments]Insert Query ---FAILED---- in sent_attachments Table ");
    row("extract_messages", "messages", "[extract_messages]Destination Db opening  ------FAILED----- ",
        "[]Insert Query ---FAILED---- in message Table ");
    row("extract_contacts", "contacts", "[extract_contacts]Destination Db opening  ------FAILED----- ",
        "[]Insert Query ---FAILED---- in contacts Table ");
    row("extract_call_history", "call_history", "[extract_contacts]Destination Db opening  ------FAILED----- ",
        "[extract_call_history]Insert Query ---FAILED---");
    row("extract_received_attachments_files", "received_attachments_files",
        "[extract_received_attachments_files]Destination Db opening ------FAILED----- ",
        "[extract_received_attachments_files]---Insert Query ---FAILED---- ");
}

void test_store_writers::writers_whose_database_fails()
{
    QFETCH(QString, tab);
    QFETCH(QString, table);
    QFETCH(QString, open_failure);
    QFETCH(QString, insert_failure);
    const QString writer = QString::fromLatin1(QTest::currentDataTag());
    QTemporaryDir folder;
    write_stores(folder.path());
    windows_profile(folder.path(), QStringLiteral("ben")).add_store_file(QStringLiteral("7/offer.txt"), "x");

    host_run unopened(QStringLiteral("winOS"), folder.path(), {tab});
    unopened.users = QStringList{QStringLiteral("anna"), QStringLiteral("ben")};
    unopened.prepare();
    QVERIFY(QFile::remove(unopened.database_path()) && QDir().mkdir(unopened.database_path()));
    unopened.extract();
    QCOMPARE(unopened.log_of(QLatin1String("mail_winos::") + writer),
             (QStringList{plain_log_of(writer).first(), open_failure + unopened.database_path(),
                          QStringLiteral("unable to open database file")}));

    host_run unfilled(QStringLiteral("winOS"), folder.path(), {tab});
    unfilled.users = unopened.users;
    unfilled.prepare();
    execute(unfilled.database_path(), QLatin1String("drop table ") + table);
    unfilled.extract();
    const QStringList log = unfilled.log_of(QLatin1String("mail_winos::") + writer);
    QVERIFY(log.size() >= 5 && (log.size() - 2) % 3 == 0); // three lines a row
    QCOMPARE(log.mid(0, 3),
             (QStringList{plain_log_of(writer).first(), insert_failure, QLatin1String("no such table: ") + table}));
    QVERIFY(log.at(3).startsWith(QLatin1String("insert into ") + table, Qt::CaseInsensitive));
    QCOMPARE(log.last(), plain_log_of(writer).last());
    QCOMPARE(unfilled.record_signals.last(), 0);
}

void test_store_writers::files_of_received_attachments()
{
    QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("source"));
    windows_profile anna(root, QStringLiteral("anna"));
    const QString file = anna.add_store_file(QStringLiteral("7/a/Angebot ü"), "%PDF-1.4\n");
    QFile opened(file);
    QVERIFY(opened.open(QIODevice::ReadWrite));
    QVERIFY(opened.setFileTime(QDateTime::fromSecsSinceEpoch(1600000000), QFileDevice::FileModificationTime));
    opened.close();
    anna.add_store_file(QStringLiteral("3/a/body.html"), "<html>");   // no attachment
    anna.add_store_file(QStringLiteral("7/.hidden/hidden.txt"), "x"); // passed over, as the next
    anna.add_store_file(QStringLiteral("7/.hidden.txt"), "x");
    const QString beside = anna.store_files_path() + QLatin1String("7/");
    QVERIFY(::mkfifo(QFile::encodeName(beside + QLatin1String("pipe.txt")).constData(), 0600) == 0);
    evidence::write_file(folder.filePath(QStringLiteral("secret.txt")), "x");
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("secret.txt")), beside + QLatin1String("secret.txt")));
    QVERIFY(QFile::link(beside + QLatin1String("a"), beside + QLatin1String("linked folder")));
    const tree_snapshot before(folder.path());
    const qint64 created = QFileInfo(file).birthTime().toSecsSinceEpoch();

    host_run run(QStringLiteral("winOS"), root, {received_files});
    run.users = QStringList{QStringLiteral("anna:CORP")};
    run.run();
    const QString shown = QStringLiteral("/Users/anna/AppData/Local/Comms/Unistore/data/7/a/Angebot ü");
    QString rows = run.rows(received_files);
    // The snapshot has set the access times of all entries to one moment of its own.
    rows.replace(QRegularExpression(QStringLiteral("last_access_timestamp = [1-9]\\d+")),
                 QStringLiteral("last_access_timestamp = N"));
    QCOMPARE(rows, QStringLiteral(
                       "row\n  bookmark = 0\n  INT = 1\n  system_user = \"anna\"\n  domain_user = \"CORP\"\n"
                       "  file_name = \"Angebot ü\"\n  file_size = 9\n  file_path = \"%1\"\n"
                       "  windows_path = \"/C:\\Users\\anna\\AppData\\Local\\Comms\\Unistore\\data\\7\\a\\Angebot ü\"\n"
                       "  mime_type = \"application/pdf\"\n  creation_timestamp = %2\n"
                       "  modification_timestamp = 1600000000\n  last_access_timestamp = N\n"
                       "  preview_file_path = \"%1\"\n  export_file_paths = \"%1\"\n"
                       "  os_scheme_display = \"Display of winOS\"\n  source_count_name = \"Source1\"\n"
                       "  source_file = \"/Users/anna/AppData/Local/Comms/Unistore/data/7/\"\n")
                       .arg(shown)
                       .arg(created));
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

QTEST_MAIN(test_store_writers)
#include "test_store_writers.moc"
