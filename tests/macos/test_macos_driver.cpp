// Which source files of a macOS volume are found, in which order the driver works on them, and what a cancelled run
// deletes.
#include "core/plugin_static_function.h"
#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/support/host_run.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace {

using evidence::macos_mail_tree;
using evidence::macos_message;
using service = plugin_static_function;

const QString macos_scheme = QStringLiteral("macOS");
const QString messages_tab = QStringLiteral("messages");
const QString attachments_tab = QStringLiteral("all_attachments");
const QString anna = QStringLiteral("anna");

// A store with one message and its mail file.
void add_store(macos_mail_tree &tree, const QString &user, int generation)
{
    evidence::macos_mail_store &store = tree.add_store(user, generation);
    macos_message message;
    message.subject = store.add_subject(QStringLiteral("Hello"));
    const qint64 row_id = store.add_message(message);
    store.add_attachment(row_id, QStringLiteral("plan.pdf"));
    store.add_emlx(QStringLiteral("Mailboxes/Notes.mbox"), row_id, evidence::emlx_message());
}

} // namespace

class test_macos_driver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void paths_data();
    void paths();
    void users_of_paths();
    void hits_are_logged_in_order();
    void tabs_run_in_their_order();
    void without_users_nothing_is_found();
    void cancelled_behind_a_step_data();
    void cancelled_behind_a_step();
};

void test_macos_driver::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("complete");
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("relation"); // second of the two texts of an artifact's source file
    const QString home = QStringLiteral("macOS_Home_Directory");
    const auto row = [](const char *name, const char *path, const QString &type, const char *complete,
                        const char *relative, const char *relation) {
        QTest::newRow(name) << QString::fromUtf8(path) << type << QString::fromUtf8(complete)
                            << QString::fromUtf8(relative) << QString::fromUtf8(relation);
    };
    row("home, another user", "/Users/old/Library/x", home, "/Users/anna/Library/x", "/Users/old/Library/x",
        "/Users/old/Library/x");
    row("home, the user twice", "/Users/anna/a/anna/x", home, "/Users/anna/a/anna/x", "/a/anna/x",
        "/Users/anna/a/anna/x");
    row("home, no folder behind the user", "/Users/old", home, "/Users/old", "/Users/old", "/Users/old");
    row("volume", "/Users/old/Library/x", QStringLiteral("Directory"), "/Users/old/Library/x", "/Users/old/Library/x",
        "");
    row("no slash in front", "Library/x", QStringLiteral("Directory"), "/Library/x", "/Library/x", "");
    row("empty", "", home, "", "", "");
    row("blanks", "  ", home, "  ", "  ", "  ");
}

void test_macos_driver::paths()
{
    QFETCH(QString, path);
    QFETCH(QString, type);
    QTEST(service::get_complete_file_path(path, anna, type), "complete");
    QTEST(service::get_relative_file_path(path, anna, type), "relative");
    QTEST(service::get_final_artifact_source_file(path, anna, type).source_file, "relative");
    QTEST(service::get_final_artifact_source_file(path, anna, type).artifacts_relation_source_file, "relation");
}

void test_macos_driver::users_of_paths()
{
    const QString root = QStringLiteral("/evidence/");
    const auto user_of = [&root](const char *path) {
        const auto account = service::extract_user_name_from_sourcefile(root + QLatin1String(path), root);
        return account.system_user + QLatin1Char('|') + account.domain_user;
    };
    service::system_account_QList.clear();
    QCOMPARE(user_of("Users/anna/Library"), QStringLiteral("|"));
    service::system_account_QList = {{anna, QStringLiteral("OFFICE")}};
    QCOMPARE(user_of("Users/anna/Library"), QStringLiteral("anna|OFFICE"));
    QCOMPARE(user_of("Users/Anna/Library"), QStringLiteral("Anna|"));
    QCOMPARE(user_of("Library"), QStringLiteral("|"));
    service::system_account_QList.clear();
}

void test_macos_driver::hits_are_logged_in_order()
{
    QTemporaryDir folder;
    macos_mail_tree tree(folder.filePath(QStringLiteral("source")));
    for (const char *path :
         {"Library/Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist",
          "Library/Preferences/com.apple.mail-shared.plist", "Library/Accounts/Accounts3.sqlite",
          "Library/Accounts/Accounts4.sqlite", "Library/Mail/V3/MailData/VIPs.plist",
          "Library/Mail/V4/MailData/SyncedRules.plist", "Library/Mail/V5/MailData/SyncedRules.plist",
          "Library/Mail/V4/MailData/Signatures/AccountsMap.plist", "Library/Mail/V6/MailData/SyncedRules.plist",
          "Library/Mail/V2/MailData/Envelope Index", "Library/Mail/V5/MailData/Envelope Index/a folder",
          "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/x"}) {
        tree.add_file(QLatin1String("Users/anna/") + QLatin1String(path), "x");
    }
    evidence::make_folder(folder.filePath(QStringLiteral("elsewhere")));
    QFile::link(folder.filePath(QStringLiteral("elsewhere")),
                tree.root() + QLatin1String("Users/anna/Library/Mail/V9")); // leads out of the source
    tree.finish();

    host_run run(macos_scheme, tree.root(), {});
    run.users = QStringList{anna, QStringLiteral("ben"), anna};
    run.prepare();
    const QString home = QStringLiteral("SOURCE/Users/anna/Library/");
    const QString mail = home + QLatin1String("Mail/");
    const QString hit = QStringLiteral("[find_source_file_11_12] Source file ");
    QCOMPARE(
        run.log_of(QStringLiteral("mail_macos::find_source_file")),
        (QStringList{
            QStringLiteral("[find_source_file] starts"),
            QLatin1String("[find_source_file_11]the found source file prefernces at path--->>>>") + home +
                QLatin1String("Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist"),
            QLatin1String("[find_source_file_11]the found source file composing prefernces at path--->>>>") + home +
                QLatin1String("Preferences/com.apple.mail-shared.plist"),
            hit + QLatin1String("accounts found at path-->>") + home + QLatin1String("Accounts/Accounts3.sqlite"),
            hit + QLatin1String("for vipsender found at path-->>") + mail + QLatin1String("V3/MailData/VIPs.plist"),
            hit + QLatin1String("for Synced Rule found at path-->>") + mail +
                QLatin1String("V5/MailData/SyncedRules.plist"),
            hit + QLatin1String("for Synced Rule found at path-->>") + mail +
                QLatin1String("V4/MailData/SyncedRules.plist"),
            hit + QLatin1String("for Signature1 found at path-->>") + mail +
                QLatin1String("V4/MailData/Signatures/AccountsMap.plist"),
            hit + QLatin1String("for Message found at path-->>") + mail + QLatin1String("V5/MailData/Envelope Index"),
            hit + QLatin1String("for Open Attachment found at path-->>") + home +
                QLatin1String("Containers/com.apple.mail/Data/Library/Mail Downloads"),
            hit + QLatin1String("for Message found at path-->>") + mail + QLatin1String("V6"),
            QStringLiteral("[find_source_file] ends"),
        }));
}

void test_macos_driver::tabs_run_in_their_order()
{
    QTemporaryDir folder;
    macos_mail_tree tree(folder.filePath(QStringLiteral("source")));
    add_store(tree, anna, 3);
    tree.finish();
    host_run run(macos_scheme, tree.root(), {attachments_tab, messages_tab});
    run.users = QStringList{anna};
    run.prepare();
    run.extract();
    QStringList operations;
    for (const QString &line : run.log()) {
        const QString operation = line.section(QLatin1Char(':'), 0, 2);
        if (operation.contains(QLatin1String("extract_")) && line.endsWith(QLatin1String("starts"))) {
            operations.append(operation.section(QLatin1String("::"), 1).section(QLatin1Char(':'), 0, 0));
        }
    }
    QCOMPARE(operations,
             (QStringList{QStringLiteral("extract_plugin_artifacts"), QStringLiteral("extract_messages_11_12"),
                          QStringLiteral("extract_allattachments_details_11_12")}));
    QCOMPARE(run.tab_signals, (QList<int>{1, 2}));
    QCOMPARE(run.log_of(QStringLiteral("mail_macos::extract_plugin_artifacts")).last(),
             QStringLiteral("[extract_plugin_artifacts] ends"));
}

void test_macos_driver::without_users_nothing_is_found()
{
    QTemporaryDir folder;
    macos_mail_tree tree(folder.filePath(QStringLiteral("source")));
    add_store(tree, anna, 3);
    tree.finish();
    host_run run(macos_scheme, tree.root(), {messages_tab});
    run.run();
    QCOMPARE(run.log_of(QStringLiteral("mail_macos::find_source_file")).size(), 2);
    QCOMPARE(run.row_count(messages_tab), 0);
    QCOMPARE(run.tab_signals, QList<int>{1});
}

void test_macos_driver::cancelled_behind_a_step_data()
{
    QTest::addColumn<int>("generation");
    QTest::addColumn<QStringList>("tabs");
    QTest::addColumn<int>("signal"); // the record signal that is answered with the cancelling; 1 opens the run
    QTest::addColumn<int>("messages");
    QTest::addColumn<int>("emlx_list");
    QTest::addColumn<int>("attachments");
    QTest::addColumn<int>("tabs_finished");
    QTest::newRow("later index, behind its messages") << 4 << QStringList{messages_tab} << 2 << 1 << 1 << 0 << 0;
    QTest::newRow("earlier index, behind its messages") << 2 << QStringList{messages_tab} << 2 << 1 << 0 << 0 << 0;
    QTest::newRow("later index, behind its attachments") << 3 << QStringList{attachments_tab} << 2 << 0 << 0 << 1 << 0;
    QTest::newRow("earlier index, behind its attachments")
        << 2 << QStringList{attachments_tab} << 2 << 0 << 0 << 1 << 0;
    // The messages of a tab that was finished go as well.
    QTest::newRow("attachments behind the tab messages")
        << 9 << QStringList{messages_tab, attachments_tab} << 3 << 0 << 0 << 1 << 1;
    QTest::newRow("not at all") << 9 << QStringList{attachments_tab} << 99 << 0 << 1 << 1 << 1;
}

void test_macos_driver::cancelled_behind_a_step()
{
    QFETCH(int, generation);
    QFETCH(QStringList, tabs);
    QFETCH(int, signal);
    QTemporaryDir folder;
    macos_mail_tree tree(folder.filePath(QStringLiteral("source")));
    add_store(tree, anna, generation);
    tree.finish();
    host_run run(macos_scheme, tree.root(), tabs);
    run.users = QStringList{anna};
    run.prepare();
    int signals_so_far = 0;
    connect(&run.plugin(), &mail::signal_extracted_records_of_plugin_overall, this, [&] {
        if (++signals_so_far == signal) {
            run.plugin().pub_cancel_extraction();
        }
    });
    run.extract();
    QTEST(run.row_count(messages_tab), "messages");
    QTEST(run.row_count(QStringLiteral("emlx_list")), "emlx_list");
    QTEST(run.row_count(attachments_tab), "attachments");
    QTEST(run.tab_signals.size(), "tabs_finished");
}

QTEST_MAIN(test_macos_driver)
#include "test_macos_driver.moc"
