// The extractor of a Windows profile: which stores it finds, the order of its tabs and their signals, cancelling, and
// its conversions.
#include "evidence/files.h"
#include "evidence/windows_profile.h"
#include "tests/support/host_run.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/store_source.h"
#include "windows/mail_winos.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

const QString find_source_file = QStringLiteral("mail_winos::find_source_file");
const QString driver = QStringLiteral("mail_winos::extract_plugin_artifacts");
const QString local_state =
    QStringLiteral("/AppData/Local/Packages/microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/");

QString not_found(const QString &user, const QString &path)
{
    return QLatin1String("FILE NOT EXISTS----  SOURCE/Users/") + user + path;
}

} // namespace

class test_winos_driver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sources_of_accounts();
    void tabs_in_their_order();
    void tabs_without_sources_or_engine();
    void cancelled_in_a_tab_data();
    void cancelled_in_a_tab();
    void conversions();
};

// The folders of each account, by both of its names, each name once; a link out of the source is no store.
void test_winos_driver::sources_of_accounts()
{
    QTemporaryDir folder;
    const QString root = folder.filePath(QStringLiteral("source"));
    evidence::windows_profile(root, QStringLiteral("CORP")).add_store_file(QStringLiteral("7/1/offer.txt"), "x");
    evidence::windows_profile(root, QStringLiteral("CORP")).add_package_file(QStringLiteral("state.txt"), "x");
    const evidence::windows_profile anna(root, QStringLiteral("anna"));
    evidence::make_folder(evidence::folder_of(anna.store_path()));
    evidence::write_file(folder.filePath(QStringLiteral("outside.vol")), "x");
    QVERIFY(QFile::link(folder.filePath(QStringLiteral("outside.vol")), anna.store_path()));
    const tree_snapshot before(folder.path());

    host_run run(QStringLiteral("winOS"), root, {});
    run.users = QStringList{QStringLiteral("anna:CORP"), QStringLiteral("CORP:CORP"), QStringLiteral("CORP:")};
    run.prepare();
    const QString data = QStringLiteral("/AppData/Local/Comms/Unistore/data/");
    const QString store = QStringLiteral("/AppData/Local/Comms/UnistoreDB/store.vol");
    QCOMPARE(run.log_of(find_source_file),
             (QStringList{QStringLiteral("[find_source_file]---STARTS---"), not_found(QStringLiteral("anna"), data),
                          not_found(QStringLiteral("anna"), data + QLatin1String("7/")),
                          not_found(QStringLiteral("anna"), store),
                          QLatin1String("[find_source_file] ") + not_found(QStringLiteral("anna"), local_state),
                          not_found(QStringLiteral("CORP"), store), QStringLiteral("[find_source_file]---ENDS---")}));
    const QString changes = before.changes();
    QVERIFY2(changes.isEmpty(), qPrintable(changes));
}

void test_winos_driver::tabs_in_their_order()
{
    QTemporaryDir folder;
    write_stores(folder.path());
    evidence::windows_profile(folder.path(), QStringLiteral("ben")).add_store_file(QStringLiteral("7/1/a.txt"), "x");
    host_run run(QStringLiteral("winOS"), folder.path(),
                 {QStringLiteral("mailconversation"), QStringLiteral("received_attachments_files"),
                  QStringLiteral("mail_data"), QStringLiteral("call_history"), QStringLiteral("contacts"),
                  QStringLiteral("messages"), QStringLiteral("all_attachments"), QStringLiteral("appointments"),
                  QStringLiteral("Contacts"), QStringLiteral("accounts")});
    run.users = QStringList{QStringLiteral("anna"), QStringLiteral("ben")};
    run.run();

    QStringList begun;
    for (const QString &line : run.log()) {
        const QString operation = line.section(QLatin1String(": "), 0, 0);
        if (line.contains(QLatin1String("starts"), Qt::CaseInsensitive) &&
            operation.startsWith(QLatin1String("mail_winos::")) && operation != find_source_file) {
            begun.append(operation.mid(12));
        }
    }
    QCOMPARE(begun,
             (QStringList{QStringLiteral("extract_plugin_artifacts"), QStringLiteral("extract_appointments"),
                          QStringLiteral("extract_sent_attachments"), QStringLiteral("extract_received_attachments"),
                          QStringLiteral("edb_data_parse"), QStringLiteral("extract_messages"),
                          QStringLiteral("edb_data_parse"), QStringLiteral("extract_contacts"),
                          QStringLiteral("extract_call_history"), QStringLiteral("extract_mail_data"),
                          QStringLiteral("extract_received_attachments_files"), QStringLiteral("edb_data_parse")}));
    QCOMPARE(run.log_of(driver), (QStringList{QStringLiteral("[extract_plugins_artifacts] starts"),
                                              QStringLiteral("[extract_plugins_artifacts] ends")}));
    QCOMPARE(run.tab_signals, (QList<int>{1, 2, 3, 4, 5, 6, 7})); // attachments are not counted
}

void test_winos_driver::tabs_without_sources_or_engine()
{
    QTemporaryDir folder;
    host_run empty(
        QStringLiteral("winOS"), folder.path(),
        {QStringLiteral("contacts"), QStringLiteral("all_attachments"), QStringLiteral("received_attachments_files")});
    empty.users = QStringList{QStringLiteral("anna")};
    empty.run();
    QCOMPARE(empty.log_of(QStringLiteral("mail_winos::extract_contacts")),
             (QStringList{QStringLiteral("[extract_contacts]---STARTS---"),
                          QStringLiteral("[extract_contacts]---ENDS---")}));
    QCOMPARE(empty.log_of(QStringLiteral("mail_winos::extract_received_attachments_files")),
             QStringList{QStringLiteral("[extract_received_attachments_files]---STARTS---")});
    QCOMPARE(empty.tab_signals, (QList<int>{1, 2}));

    write_stores(folder.path());
    host_run without_engine(QStringLiteral("winOS"), folder.path(), {QStringLiteral("contacts")});
    without_engine.engine_type = 3;
    without_engine.users = empty.users;
    without_engine.run();
    QCOMPARE(without_engine.row_count(QStringLiteral("contacts")), 0);
    QVERIFY(without_engine.tab_signals.isEmpty());
    QCOMPARE(without_engine.record_signals, (QList<qint64>{0, 0, 0}));
}

void test_winos_driver::cancelled_in_a_tab_data()
{
    QTest::addColumn<int>("cancelled_at"); // the record signal behind which the host cancels, the first being 0
    QTest::addColumn<QList<int>>("tabs");
    QTest::addColumn<QStringList>("begun"); // those of the writers that have a start line
    QTest::addColumn<bool>("logs_its_end");
    const QString appointments = QStringLiteral("extract_appointments");
    const QString sent = QStringLiteral("extract_sent_attachments");
    const QString received = QStringLiteral("extract_received_attachments");
    const QString messages = QStringLiteral("extract_messages");
    const QString contacts = QStringLiteral("extract_contacts");
    QTest::newRow("behind the appointments") << 1 << QList<int>{1} << QStringList{appointments, sent} << false;
    QTest::newRow("behind the sent ones") << 2 << QList<int>{1} << QStringList{appointments, sent} << false;
    QTest::newRow("behind the received ones")
        << 3 << QList<int>{1} << QStringList{appointments, sent, received} << false;
    QTest::newRow("behind the messages") << 5 << QList<int>{1} << QStringList{appointments, sent, received, messages}
                                         << false;
    QTest::newRow("behind the walked messages")
        << 6 << QList<int>{1, 2, 3} << QStringList{appointments, sent, received, messages, contacts} << true;
}

void test_winos_driver::cancelled_in_a_tab()
{
    QFETCH(int, cancelled_at);
    QFETCH(QList<int>, tabs);
    QFETCH(QStringList, begun);
    QFETCH(bool, logs_its_end);
    QTemporaryDir folder;
    write_stores(folder.path());
    host_run run(QStringLiteral("winOS"), folder.path(),
                 {QStringLiteral("appointments"), QStringLiteral("all_attachments"), QStringLiteral("messages"),
                  QStringLiteral("contacts")});
    run.users = QStringList{QStringLiteral("anna")};
    connect(&run.plugin(), &mail::signal_extracted_records_of_plugin_overall, this, [&run, cancelled_at] {
        if (run.record_signals.size() == cancelled_at + 1) {
            run.plugin().pub_cancel_extraction();
        }
    });
    run.run();
    QStringList met;
    for (const char *writer : {"extract_appointments", "extract_sent_attachments", "extract_received_attachments",
                               "extract_messages", "extract_contacts"}) {
        if (!run.log_of(QLatin1String("mail_winos::") + QLatin1String(writer)).isEmpty()) {
            met.append(QString::fromLatin1(writer));
        }
    }
    QCOMPARE(met, begun);
    QCOMPARE(run.tab_signals, tabs);
    QCOMPARE(run.row_count(QStringLiteral("contacts")), 0); // a writer begun behind the cancelling reads nothing
    QCOMPARE(run.row_count(QStringLiteral("appointments")), 2);
    QCOMPARE(run.log_of(driver).contains(QStringLiteral("[extract_plugins_artifacts] ends")), logs_its_end);
}

void test_winos_driver::conversions()
{
    const auto epoch = [](const char *text) { return mail_winos::give_epoch_from_string(QString::fromLatin1(text)); };
    QCOMPARE(epoch(""), 0);
    QCOMPARE(epoch("0"), 0);
    QCOMPARE(epoch("-116444736010000000"), 0);
    QCOMPARE(epoch("18446744073709551615"), 0);
    QCOMPARE(epoch("12a"), 0);
    QCOMPARE(epoch("116444736000000000"), 0);
    QCOMPARE(epoch("116444736010000000"), 1);
    QCOMPARE(epoch("116444735985000000"), -1); // one and a half seconds before 1970
    QCOMPARE(epoch("1"), Q_INT64_C(-11644473599));
    QCOMPARE(epoch("9223372036854775807"), Q_INT64_C(910692730085));

    const auto behind_colon = [](const char *text) { return mail_winos::split_info_parsed(QString::fromLatin1(text)); };
    QCOMPARE(behind_colon("Subject: RE: plans"), QStringLiteral(" plans"));
    QCOMPARE(behind_colon("Subject:"), QString());
    QCOMPARE(behind_colon("Subject"), QString());

    const auto decoded = [](const char *text) { return mail_winos::base64_decode(QString::fromLatin1(text)); };
    QVERIFY(!decoded("").isNull() && decoded("").isEmpty());
    QCOMPARE(decoded("R3LDvMOfZQ=="), QStringLiteral("Grüße"));
    QCOMPARE(decoded("R3L833Vl"), QStringLiteral("Grüßue")); // Latin-1
    QCOMPARE(decoded("YWIAY2Q="), QStringLiteral("ab"));
}

QTEST_MAIN(test_winos_driver)
#include "test_winos_driver.moc"
