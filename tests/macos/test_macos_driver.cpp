// Which source files of a macOS volume are found, in which order the driver works on them, and what a cancelled run
// deletes.
#include "core/plugin_static_function.h"
#include "tests/macos/macos_run.h"

namespace {

using evidence::macos_mail_tree;
using service = plugin_static_function;

const QString messages_tab = text("messages");
const QString attachments_tab = text("all_attachments");
const QString anna = text("anna");

// A store with one message and its mail file.
void add_store(macos_mail_tree &tree, int generation)
{
    evidence::macos_mail_store &store = tree.add_store(anna, generation);
    const qint64 row_id = store.add_message(evidence::macos_message());
    store.add_attachment(row_id, text("plan.pdf"));
    store.add_emlx(text("Mailboxes/Notes.mbox"), row_id, evidence::emlx_message());
}

} // namespace

class test_macos_driver : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<macos_source>(); }

    void paths_data();
    void paths();
    void users_of_paths();
    void hits_are_logged_in_order();
    void tabs_run_in_their_order();
    void cancelled_behind_a_step_data();
    void cancelled_behind_a_step();

private:
    std::unique_ptr<macos_source> source;
};

void test_macos_driver::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("type");
    QTest::addColumn<QString>("complete");
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("relation"); // second of the two texts of an artifact's source file
    const QString home = text("macOS_Home_Directory");
    const auto row = [](const char *name, const char *path, const QString &type, const char *complete,
                        const char *relative, const char *relation) {
        QTest::newRow(name) << text(path) << type << text(complete) << text(relative) << text(relation);
    };
    row("home, another user", "/Users/old/Library/x", home, "/Users/anna/Library/x", "/Users/old/Library/x",
        "/Users/old/Library/x");
    row("home, the user twice", "/Users/anna/a/anna/x", home, "/Users/anna/a/anna/x", "/a/anna/x",
        "/Users/anna/a/anna/x");
    row("home, no folder behind the user", "/Users/old", home, "/Users/old", "/Users/old", "/Users/old");
    row("volume", "/Users/old/Library/x", text("Directory"), "/Users/old/Library/x", "/Users/old/Library/x", "");
    row("no slash in front", "Library/x", text("Directory"), "/Library/x", "/Library/x", "");
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
    const QString root = text("/evidence/");
    const auto user_of = [&root](const char *path) {
        const auto account = service::extract_user_name_from_sourcefile(root + QLatin1String(path), root);
        return account.system_user + text("|") + account.domain_user;
    };
    service::system_account_QList.clear();
    QCOMPARE(user_of("Users/anna/Library"), text("|"));
    service::system_account_QList = {{anna, text("OFFICE")}};
    QCOMPARE(user_of("Users/anna/Library"), text("anna|OFFICE"));
    QCOMPARE(user_of("Users/Anna/Library"), text("Anna|"));
    QCOMPARE(user_of("Library"), text("|"));
    service::system_account_QList.clear();
}

void test_macos_driver::hits_are_logged_in_order()
{
    for (const char *path :
         {"Library/Containers/com.apple.mail/Data/Library/Preferences/com.apple.mail.plist",
          "Library/Preferences/com.apple.mail-shared.plist", "Library/Accounts/Accounts3.sqlite",
          "Library/Accounts/Accounts4.sqlite", "Library/Mail/V3/MailData/VIPs.plist",
          "Library/Mail/V4/MailData/SyncedRules.plist", "Library/Mail/V5/MailData/SyncedRules.plist",
          "Library/Mail/V4/MailData/Signatures/AccountsMap.plist", "Library/Mail/V6/MailData/SyncedRules.plist",
          "Library/Mail/V2/MailData/Envelope Index", "Library/Mail/V5/MailData/Envelope Index/a folder",
          "Library/Containers/com.apple.mail/Data/Library/Mail Downloads/x"}) {
        source->tree.add_file(QLatin1String("Users/anna/") + QLatin1String(path), "x");
    }
    evidence::make_folder(source->folder.filePath(text("elsewhere")));
    QFile::link(source->folder.filePath(text("elsewhere")),
                source->tree.root() + QLatin1String("Users/anna/Library/Mail/V9")); // leads out of the source
    source->tree.finish();

    const auto run = new_run(source->tree, {}, texts({"anna", "ben", "anna"}));
    run->prepare();
    QCOMPARE(whole_run(source->tree, {}, {})->log_of(text("mail_macos::find_source_file")).size(), 2); // without users
    compare_with("hits.txt",
                 run->log_of(text("mail_macos::find_source_file")).join(QLatin1Char('\n')) + QLatin1Char('\n'));
}

void test_macos_driver::tabs_run_in_their_order()
{
    add_store(source->tree, 3);
    source->tree.finish();
    const auto run = whole_run(source->tree, {attachments_tab, messages_tab});
    QStringList operations;
    for (const QString &line : run->log()) {
        if (line.contains(text("::extract_")) && line.endsWith(text("starts"))) {
            operations.append(line.section(text("::"), 1).section(QLatin1Char(':'), 0, 0));
        }
    }
    QCOMPARE(operations,
             texts({"extract_plugin_artifacts", "extract_messages_11_12", "extract_allattachments_details_11_12"}));
    QCOMPARE(run->tab_signals, (QList<int>{1, 2}));
    QCOMPARE(run->log_of(text("mail_macos::extract_plugin_artifacts")).last(), text("[extract_plugin_artifacts] ends"));
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
    const auto row = [](const char *name, int generation, const QStringList &tabs, int signal, int messages,
                        int emlx_list, int attachments, int tabs_finished) {
        QTest::newRow(name) << generation << tabs << signal << messages << emlx_list << attachments << tabs_finished;
    };
    row("later index, behind its messages", 4, {messages_tab}, 2, 1, 1, 0, 0);
    row("earlier index, behind its messages", 2, {messages_tab}, 2, 1, 0, 0, 0);
    row("later index, behind its attachments", 3, {attachments_tab}, 2, 0, 0, 1, 0);
    row("earlier index, behind its attachments", 2, {attachments_tab}, 2, 0, 0, 1, 0);
    // The messages of a tab that was finished go as well.
    row("attachments behind the tab messages", 9, {messages_tab, attachments_tab}, 3, 0, 0, 1, 1);
    row("not at all", 9, {attachments_tab}, 99, 0, 1, 1, 1);
}

void test_macos_driver::cancelled_behind_a_step()
{
    QFETCH(int, generation);
    QFETCH(QStringList, tabs);
    QFETCH(int, signal);
    add_store(source->tree, generation);
    source->tree.finish();
    const auto run = new_run(source->tree, tabs);
    run->prepare();
    int signals_so_far = 0;
    connect(&run->plugin(), &mail::signal_extracted_records_of_plugin_overall, this, [&] {
        if (++signals_so_far == signal) {
            run->plugin().pub_cancel_extraction();
        }
    });
    run->extract();
    QTEST(run->row_count(messages_tab), "messages");
    QTEST(run->row_count(text("emlx_list")), "emlx_list");
    QTEST(run->row_count(attachments_tab), "attachments");
    QTEST(run->tab_signals.size(), "tabs_finished");
}

QTEST_MAIN(test_macos_driver)
#include "test_macos_driver.moc"
