// The table open_attachments: the folder of downloaded attachments, the two lists of opened ones, and what becomes of
// both when they are damaged or hostile.
#include "evidence/files.h"
#include "evidence/macos_mail_tree.h"
#include "tests/macos/settled_rows.h"
#include "tests/support/tree_snapshot.h"

#include <QDir>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

#include <functional>
#include <thread>

#include <sys/stat.h>

using evidence::macos_mail_tree;
using evidence::macos_opened_attachment;
using evidence::metadata_place;
using evidence::property_list_dictionary;

namespace {

const QString open_attachments_tab = QStringLiteral("open_attachments");
const QString list_operation = QStringLiteral("mail_macos::extract_xcode_open_attachments");
const QString folder_operation = QStringLiteral("mail_macos::extract_open_attachment_11_12");

QDateTime instant(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC);
}

// A run over the tree of one user, "anna".
std::unique_ptr<host_run> new_run(const macos_mail_tree &tree)
{
    auto run = std::make_unique<host_run>(QStringLiteral("macOS"), tree.root(), QStringList{open_attachments_tab});
    run->users = QStringList{QStringLiteral("anna")};
    return run;
}

QString difference_to(const char *expected_file, const QString &rows)
{
    return difference_to_expected(rows, QStringLiteral(EXPECTED_FOLDER "/") + QLatin1String(expected_file));
}

void run_statement(const host_run &run, const QString &statement)
{
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("test"));
        database.setDatabaseName(run.database_path());
        QVERIFY(database.open());
        QSqlQuery query(database);
        QVERIFY(query.exec(statement));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("test"));
}

} // namespace

class test_macos_open_attachments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { tree = std::make_unique<macos_mail_tree>(folder_of_test().filePath(QStringLiteral("source"))); }

    void downloaded_files();
    void lists_of_opened_attachments();
    void home_folder();
    void what_leads_out_of_the_source();
    void no_list_data();
    void no_list();
    void failures_of_the_result_database();
    void cancelled_from_another_thread();

private:
    QDir folder_of_test()
    {
        folder = std::make_unique<QTemporaryDir>();
        return QDir(folder->path());
    }
    QString write_list(const QVariant &root, const char *name = "OpenedAttachments.plist")
    {
        return tree->write_opened_attachments(QStringLiteral("anna"), QLatin1String(name), root);
    }
    QString add_download(const char *path, const QByteArray &content = "content")
    {
        return tree->add_download(QStringLiteral("anna"), QString::fromUtf8(path), content);
    }

    std::unique_ptr<QTemporaryDir> folder;
    std::unique_ptr<macos_mail_tree> tree;
};

void test_macos_open_attachments::downloaded_files()
{
    const QString plan = add_download("4C1F/Plan für Ömer.pdf", "%PDF-1.4");
    evidence::write_file_metadata(
        plan,
        {{"kMDItemOriginMessageID", QStringLiteral("abc=1@example.org")},
         {"kMDItemOriginSenderDisplayName", QStringLiteral("Ben Öztürk")},
         {"kMDItemOriginSenderHandle", QStringLiteral("<ben@example.org>")},
         {"kMDItemOriginSubject", QStringLiteral("Plan")},
         {"kMDItemDateAdded", instant(1425205230)},
         {"kMDItemWhereFroms", QStringList{QStringLiteral("Ben <ben@example.org>"), QStringLiteral("message:1%2C2")}},
         {"kMDItemLastUsedDate", instant(1456827630)},
         {"kMDItemUsedDates", QVariantList{instant(1425168000), instant(1456790400)}},
         {"kMDItemFSNodeCount", 3},
         {"kMDItemLatitude", 48.5}},
        metadata_place::apple_double);
    add_download(".hidden");
    QVERIFY(QDir().mkpath(tree->downloads_folder(QStringLiteral("anna")) + QLatin1String("/empty/folder")));
    QVERIFY(QFile::link(plan, tree->downloads_folder(QStringLiteral("anna")) + QLatin1String("/link")));
    tree->finish();
    const tree_snapshot before(folder->path());

    const auto run = new_run(*tree);
    run->run();

    QCOMPARE(before.changes(), QString());
    const QString difference =
        difference_to("open_attachments_downloaded.txt", settled_rows(*run, open_attachments_tab));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    QCOMPARE(run->log_of(folder_operation), (QStringList{QStringLiteral("START"), QStringLiteral("END")}));
    QCOMPARE(run->record_signals.last(), 4);
    QCOMPARE(run->tab_signals, QList<int>{1});
}

void test_macos_open_attachments::lists_of_opened_attachments()
{
    tree->add_file(QStringLiteral("Users/anna/Library/Mail Downloads/plan.final.pdf"), "%PDF-1.4");
    macos_opened_attachment plan;
    plan.message_id = QStringLiteral(" <abc@example.org> ");
    plan.modified = QDateTime::fromMSecsSinceEpoch(1425205230750, Qt::UTC);
    plan.opened = instant(1456827630);
    plan.part_number = QStringLiteral(" 2.3 ");
    plan.path = QStringLiteral(" /Users/anna/Library/Mail Downloads/plan.final.pdf ");
    macos_opened_attachment gone;
    gone.modified = QStringLiteral("2015-03-01"); // no date
    gone.opened = instant(0);
    gone.part_number = 2; // no text
    gone.path = QStringLiteral("/Users/anna/Desktop/gone.docx");
    macos_opened_attachment old;
    old.modified = instant(-5);
    write_list(QVariantList{plan, QStringLiteral("no dictionary"), gone, old}, "OpenedAttachmentsV2.plist");
    write_list(QVariantList{property_list_dictionary{{"MessageID", QStringLiteral("last")}}});
    tree->finish();
    const tree_snapshot before(folder->path());

    const auto run = new_run(*tree);
    run->run();

    QCOMPARE(before.changes(), QString());
    // The list V2 comes first, so the ids of its rows are the lower ones.
    QVERIFY(run->rows(open_attachments_tab).endsWith(QLatin1String("OpenedAttachments.plist\"\n")));
    const QString difference = difference_to("open_attachments_listed.txt", settled_rows(*run, open_attachments_tab));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
    const QStringList lines{QStringLiteral("Start "), QStringLiteral("[extract_xcode_open_attachments] end")};
    QCOMPARE(run->log_of(list_operation), lines + lines);
    QCOMPARE(run->record_signals.last(), 4);
}

void test_macos_open_attachments::home_folder()
{
    add_download("plan.pdf");
    tree->add_file(QStringLiteral("Users/anna/Desktop/note.txt"), "four");
    macos_opened_attachment note;
    note.path = QStringLiteral("/Users/anna.before/Desktop/note.txt");
    write_list(QVariantList{note});
    tree->finish();

    const auto run = new_run(*tree);
    run->source_type = QStringLiteral("macOS_Home_Directory");
    run->run();

    const QString difference = difference_to("open_attachments_home.txt", settled_rows(*run, open_attachments_tab));
    QVERIFY2(difference.isEmpty(), qPrintable(difference));
}

void test_macos_open_attachments::what_leads_out_of_the_source()
{
    const QString outside = folder->filePath(QStringLiteral("secret.txt"));
    evidence::write_file(outside, "of the examiner");
    const QString downloads = tree->downloads_folder(QStringLiteral("anna"));
    const QString file = add_download("inside");
    QVERIFY(QFile::link(outside, downloads + QLatin1String("/link out")));
    QVERIFY(QFile::link(outside, downloads + QLatin1String("/._inside"))); // in place of the metadata
    QVERIFY(QFile::link(downloads, downloads + QLatin1String("/cycle")));
    QCOMPARE(::mkfifo(QFile::encodeName(downloads + QLatin1String("/pipe")).constData(), 0600), 0);
    macos_opened_attachment up;
    up.path = QStringLiteral("/../secret.txt");
    macos_opened_attachment link;
    link.path = QString(downloads + QLatin1String("/link out")).mid(tree->root().size() - 1);
    write_list(QVariantList{up, link});
    tree->finish();

    const auto run = new_run(*tree);
    run->run();

    const QString rows = run->rows(open_attachments_tab);
    QCOMPARE(rows.count(QLatin1String("file_exist = \"YES\"")), 1); // the file inside
    QCOMPARE(rows.count(QLatin1String("file_exist = \"NO\"")), 2);  // the two of the list
    QCOMPARE(rows.count(QLatin1String("file_size = 0\n")), 2);
    QCOMPARE(run->row_count(open_attachments_tab), 3);
}

void test_macos_open_attachments::no_list_data()
{
    QTest::addColumn<QVariant>("root");
    QTest::newRow("a dictionary") << QVariant(property_list_dictionary{{"MessageID", QStringLiteral("1")}});
    QTest::newRow("a text") << QVariant(QStringLiteral("text"));
    QTest::newRow("no property list") << QVariant();
}

void test_macos_open_attachments::no_list()
{
    QFETCH(QVariant, root);
    const QString path = write_list(root.isValid() ? root : QVariant(QStringLiteral("x")));
    if (!root.isValid()) {
        evidence::write_file(path, "bplist00 and nothing more");
    }
    tree->finish();

    const auto run = new_run(*tree);
    run->run();

    QCOMPARE(run->row_count(open_attachments_tab), 0);
    QCOMPARE(run->log_of(list_operation),
             (QStringList{QStringLiteral("Start "), QStringLiteral("[extract_xcode_open_attachments] attachment_array "
                                                                   "nil ----------FAILED------")}));
    QCOMPARE(run->tab_signals, QList<int>{1});
}

void test_macos_open_attachments::failures_of_the_result_database()
{
    add_download("a");
    macos_opened_attachment listed;
    listed.path = QStringLiteral("/b");
    write_list(QVariantList{listed});
    tree->finish();

    const auto refusing = new_run(*tree);
    refusing->prepare();
    run_statement(*refusing, QStringLiteral("create trigger refuse before insert on open_attachments begin select "
                                            "raise(abort, 'no row'); end"));
    refusing->extract();
    const QStringList folder_lines = refusing->log_of(folder_operation);
    QCOMPARE(folder_lines.size(), 5);
    QCOMPARE(folder_lines.mid(1, 2), (QStringList{QStringLiteral("insert in open_attachments ----------FAILED------") +
                                                      refusing->database_path(),
                                                  QStringLiteral("Error :- no row")}));
    QVERIFY(
        folder_lines.at(3).startsWith(QLatin1String("Query :- insert into open_attachments(bookmark,system_user,")));
    const QStringList list_lines = refusing->log_of(list_operation);
    QCOMPARE(list_lines.size(), 5);
    QCOMPARE(list_lines.mid(1, 2),
             (QStringList{
                 QStringLiteral("[extract_xcode_open_attachments] insert in open_attachments ----------FAILED------"),
                 QStringLiteral("Error:- no row")}));
    QVERIFY(list_lines.at(3).startsWith(QLatin1String("Query :- insert into open_attachments(bookmark,system_user,")));
    QCOMPARE(refusing->record_signals.last(), 0);

    const auto closed = new_run(*tree);
    closed->prepare();
    const QString database = closed->database_path();
    QVERIFY(QFile::remove(database));
    QVERIFY(QDir().mkdir(database));
    closed->extract();
    QCOMPARE(
        closed->log_of(folder_operation),
        (QStringList{QStringLiteral("START"), QStringLiteral("destination db open ----------FAILED------") + database,
                     QStringLiteral("Error :- unable to open database file")}));
    QCOMPARE(closed->log_of(list_operation),
             (QStringList{QStringLiteral("Start "),
                          QStringLiteral("[extract_xcode_open_attachments] destination db open ----------FAILED------"),
                          QStringLiteral("unable to open database file"), database,
                          QStringLiteral("[extract_xcode_open_attachments] end with failure ")}));
}

void test_macos_open_attachments::cancelled_from_another_thread()
{
    constexpr int element_count = 20000;
    QVariantList elements;
    for (int i = 0; i < element_count; ++i) {
        elements.append(property_list_dictionary{{"PartNumber", QString::number(i)}});
    }
    write_list(elements);
    tree->finish();

    const auto run = new_run(*tree);
    run->prepare();
    std::thread host([&run] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        run->plugin().pub_cancel_extraction();
    });
    run->extract();
    host.join();

    const int rows = run->row_count(open_attachments_tab);
    QVERIFY2(rows < element_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->record_signals.last(), rows);
    QVERIFY(!run->log_of(list_operation).contains(QStringLiteral("[extract_xcode_open_attachments] end")));
}

QTEST_MAIN(test_macos_open_attachments)
#include "test_macos_open_attachments.moc"
