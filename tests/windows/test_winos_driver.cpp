// The extractor of a Windows profile: which stores it finds, the order of its tabs and their signals, cancelling, and
// its conversions.
#include "evidence/files.h"
#include "evidence/windows_profile.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/store_source.h"
#include "tests/windows/winos_run.h"
#include "windows/mail_winos.h"

#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

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
    const QString root = folder.filePath(utf8("source"));
    evidence::windows_profile(root, utf8("CORP")).add_store_file(utf8("7/1/offer.txt"), "x");
    evidence::windows_profile(root, utf8("CORP")).add_package_file(utf8("state.txt"), "x");
    const evidence::windows_profile anna(root, utf8("anna"));
    evidence::make_folder(evidence::folder_of(anna.store_path()));
    evidence::write_file(folder.filePath(utf8("outside.vol")), "x");
    QVERIFY(QFile::link(folder.filePath(utf8("outside.vol")), anna.store_path()));
    const tree_snapshot before(folder.path());

    winos_run run(root, "", "anna:CORP CORP:CORP CORP:");
    run.prepare();
    QCOMPARE(run.log_of("find_source_file"),
             lines({"[find_source_file]---STARTS---",
                    "FILE NOT EXISTS----  SOURCE/Users/anna/AppData/Local/Comms/Unistore/data/",
                    "FILE NOT EXISTS----  SOURCE/Users/anna/AppData/Local/Comms/Unistore/data/7/",
                    "FILE NOT EXISTS----  SOURCE/Users/anna/AppData/Local/Comms/UnistoreDB/store.vol",
                    "[find_source_file] FILE NOT EXISTS----  SOURCE/Users/anna/AppData/Local/Packages/"
                    "microsoft.windowscommunicationsapps_8wekyb3d8bbwe/LocalState/",
                    "FILE NOT EXISTS----  SOURCE/Users/CORP/AppData/Local/Comms/UnistoreDB/store.vol",
                    "[find_source_file]---ENDS---"}));
    QCOMPARE(before.changes(), QString());
}

void test_winos_driver::tabs_in_their_order()
{
    QTemporaryDir folder;
    write_stores(folder.path());
    evidence::windows_profile(folder.path(), utf8("ben")).add_store_file(utf8("7/1/a.txt"), "x");
    winos_run run(folder.path(),
                  "mailconversation received_attachments_files mail_data call_history contacts messages "
                  "all_attachments appointments Contacts accounts",
                  "anna ben");
    run.run();

    const QRegularExpression start_line(utf8("^mail_winos::.*starts"), QRegularExpression::CaseInsensitiveOption);
    QStringList begun = run.log().filter(start_line);
    begun.replaceInStrings(QRegularExpression(utf8("^mail_winos::|: .*")), QString());
    QCOMPARE(begun, words("find_source_file extract_plugin_artifacts extract_appointments extract_sent_attachments "
                          "extract_received_attachments edb_data_parse extract_messages edb_data_parse "
                          "extract_contacts extract_call_history extract_mail_data "
                          "extract_received_attachments_files edb_data_parse"));
    QCOMPARE(run.log_of("extract_plugin_artifacts"),
             lines({"[extract_plugins_artifacts] starts", "[extract_plugins_artifacts] ends"}));
    QCOMPARE(run.tab_signals, (QList<int>{1, 2, 3, 4, 5, 6, 7})); // attachments are not counted
}

void test_winos_driver::tabs_without_sources_or_engine()
{
    QTemporaryDir folder;
    winos_run empty(folder.path(), "contacts all_attachments received_attachments_files");
    empty.run();
    QCOMPARE(empty.log_of("extract_contacts"), plain_log_of("extract_contacts"));
    QCOMPARE(empty.log_of("extract_received_attachments_files"),
             lines({"[extract_received_attachments_files]---STARTS---"}));
    QCOMPARE(empty.tab_signals, (QList<int>{1, 2}));

    write_stores(folder.path());
    winos_run without_engine(folder.path(), "contacts");
    without_engine.engine_type = 3;
    without_engine.run();
    QCOMPARE(without_engine.row_count(utf8("contacts")), 0);
    QVERIFY(without_engine.tab_signals.isEmpty());
    QCOMPARE(without_engine.record_signals, (QList<qint64>{0, 0, 0}));
}

void test_winos_driver::cancelled_in_a_tab_data()
{
    QTest::addColumn<int>("cancelled_at"); // the record signal behind which the host cancels, the first being 0
    QTest::addColumn<QList<int>>("tabs");
    QTest::addColumn<QStringList>("begun"); // those of the writers that have a start line
    QTest::addColumn<bool>("logs_its_end");
    const auto row = [](const char *name, int cancelled_at, const QList<int> &tabs, const char *begun,
                        bool logs_its_end) {
        QTest::newRow(name) << cancelled_at << tabs << words(begun) << logs_its_end;
    };
    row("behind the appointments", 1, {1}, "appointments sent_attachments", false);
    row("behind the sent ones", 2, {1}, "appointments sent_attachments", false);
    row("behind the received ones", 3, {1}, "appointments sent_attachments received_attachments", false);
    row("behind the messages", 5, {1}, "appointments sent_attachments received_attachments messages", false);
    row("behind the walked messages", 6, {1, 2, 3},
        "appointments sent_attachments received_attachments messages contacts", true);
}

void test_winos_driver::cancelled_in_a_tab()
{
    QFETCH(int, cancelled_at);
    QFETCH(QList<int>, tabs);
    QFETCH(QStringList, begun);
    QFETCH(bool, logs_its_end);
    QTemporaryDir folder;
    write_stores(folder.path());
    winos_run run(folder.path(), "appointments all_attachments messages contacts");
    connect(&run.plugin(), &mail::signal_extracted_records_of_plugin_overall, this, [&run, cancelled_at] {
        if (run.record_signals.size() == cancelled_at + 1) {
            run.plugin().pub_cancel_extraction();
        }
    });
    run.run();
    QStringList met;
    for (const QString &writer : words("appointments sent_attachments received_attachments messages contacts")) {
        if (!run.log_of(qPrintable(QLatin1String("extract_") + writer)).isEmpty()) {
            met.append(writer);
        }
    }
    QCOMPARE(met, begun);
    QCOMPARE(run.tab_signals, tabs);
    QCOMPARE(run.row_count(utf8("contacts")), 0); // a writer begun behind the cancelling reads nothing
    QCOMPARE(run.row_count(utf8("appointments")), 2);
    QCOMPARE(run.log_of("extract_plugin_artifacts").contains(utf8("[extract_plugins_artifacts] ends")), logs_its_end);
}

void test_winos_driver::conversions()
{
    const auto epoch = [](const char *text) { return mail_winos::give_epoch_from_string(utf8(text)); };
    QCOMPARE(epoch(""), 0);
    QCOMPARE(epoch("-116444736010000000"), 0);
    QCOMPARE(epoch("18446744073709551615"), 0);
    QCOMPARE(epoch("12a"), 0);
    QCOMPARE(epoch("116444736010000000"), 1);
    QCOMPARE(epoch("116444735985000000"), -1); // one and a half seconds before 1970
    QCOMPARE(epoch("1"), Q_INT64_C(-11644473599));
    QCOMPARE(epoch("9223372036854775807"), Q_INT64_C(910692730085));

    const auto behind_colon = [](const char *text) { return mail_winos::split_info_parsed(QString::fromLatin1(text)); };
    QCOMPARE(behind_colon("Subject: RE: plans"), utf8(" plans"));
    QCOMPARE(behind_colon("Subject"), QString());

    const auto decoded = [](const char *text) { return mail_winos::base64_decode(QString::fromLatin1(text)); };
    QVERIFY(!decoded("").isNull() && decoded("").isEmpty());
    QCOMPARE(decoded("R3LDvMOfZQ=="), utf8("Grüße"));
    QCOMPARE(decoded("R3L833Vl"), utf8("Grüßue")); // Latin-1
    QCOMPARE(decoded("YWIAY2Q="), utf8("ab"));
}

QTEST_MAIN(test_winos_driver)
#include "test_winos_driver.moc"
