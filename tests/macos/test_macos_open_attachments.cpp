// The table open_attachments: the folder of downloaded attachments, the two lists of opened ones, and what becomes of
// both when they are damaged or hostile.
#include "tests/macos/macos_run.h"

#include <sys/stat.h>

using evidence::macos_mail_tree;
using evidence::metadata_place;
using evidence::property_list_dictionary;

namespace {

const QString open_attachments_tab = text("open_attachments");
const QString list_operation = text("mail_macos::extract_xcode_open_attachments");
const QString folder_operation = text("mail_macos::extract_open_attachment_11_12");

} // namespace

class test_macos_open_attachments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { source = std::make_unique<macos_source>(); }

    void downloaded_files();
    void lists_of_opened_attachments();
    void what_leads_out_of_the_source();
    void cancelled_from_another_thread();

private:
    QString write_list(const QVariant &root, const char *name = "OpenedAttachments.plist")
    {
        return source->tree.write_opened_attachments(text("anna"), text(name), root);
    }
    QString add_download(const char *path, const QByteArray &content = "content")
    {
        return source->tree.add_download(text("anna"), QString::fromUtf8(path), content);
    }

    std::unique_ptr<macos_source> source;
};

void test_macos_open_attachments::downloaded_files()
{
    const QString plan = add_download("4C1F/Plan für Ömer.pdf", "%PDF-1.4");
    evidence::write_file_metadata(plan,
                                  {{"kMDItemOriginMessageID", text("abc=1@example.org")},
                                   {"kMDItemOriginSenderDisplayName", text("Ben Öztürk")},
                                   {"kMDItemOriginSenderHandle", text("<ben@example.org>")},
                                   {"kMDItemOriginSubject", text("Plan")},
                                   {"kMDItemDateAdded", instant(1425205230)},
                                   {"kMDItemWhereFroms", texts({"Ben <ben@example.org>", "message:1%2C2"})},
                                   {"kMDItemLastUsedDate", instant(1456827630)},
                                   {"kMDItemUsedDates", QVariantList{instant(1425168000), instant(1456790400)}},
                                   {"kMDItemFSNodeCount", 3},
                                   {"kMDItemLatitude", 48.5}},
                                  metadata_place::apple_double);
    add_download(".hidden");
    QVERIFY(QDir().mkpath(source->tree.downloads_folder(text("anna")) + QLatin1String("/empty/folder")));
    QVERIFY(QFile::link(plan, source->tree.downloads_folder(text("anna")) + QLatin1String("/link")));
    source->tree.finish();
    const tree_snapshot before(source->folder.path());

    const auto run = whole_run(source->tree, {open_attachments_tab});

    QCOMPARE(before.changes(), QString());
    compare_with("open_attachments_downloaded.txt", settled_rows(*run, open_attachments_tab));
    QCOMPARE(run->log_of(folder_operation), texts({"START", "END"}));
    QCOMPARE(run->record_signals.last(), 4);
    QCOMPARE(run->tab_signals, QList<int>{1});
}

void test_macos_open_attachments::lists_of_opened_attachments()
{
    source->tree.add_file(text("Users/anna/Library/Mail Downloads/plan.final.pdf"), "%PDF-1.4");
    write_list(json(R"([
        {"MessageID": " <abc@example.org> ", "ModDate": {"date": 1425205230750},
         "OpenedDate": {"date": 1456827630000}, "PartNumber": " 2.3 ",
         "Path": " /Users/anna/Library/Mail Downloads/plan.final.pdf "},
        "no dictionary",
        {"ModDate": "2015-03-01", "OpenedDate": {"date": 0}, "PartNumber": 2,
         "Path": "/Users/anna/Desktop/gone.docx"},
        {"ModDate": {"date": -5000}}])"),
               "OpenedAttachmentsV2.plist");
    write_list(json(R"([{"MessageID": "last"}])"));
    source->tree.finish();
    const tree_snapshot before(source->folder.path());

    const auto run = whole_run(source->tree, {open_attachments_tab});

    QCOMPARE(before.changes(), QString());
    // The list V2 comes first, so the ids of its rows are the lower ones.
    QVERIFY(run->rows(open_attachments_tab).endsWith(QLatin1String("OpenedAttachments.plist\"\n")));
    compare_with("open_attachments_listed.txt", settled_rows(*run, open_attachments_tab));
    const QStringList lines = texts({"Start ", "[extract_xcode_open_attachments] end"});
    QCOMPARE(run->log_of(list_operation), lines + lines);
    QCOMPARE(run->record_signals.last(), 4);
}

void test_macos_open_attachments::what_leads_out_of_the_source()
{
    const QString outside = source->folder.filePath(text("secret.txt"));
    evidence::write_file(outside, "of the examiner");
    const QString downloads = source->tree.downloads_folder(text("anna"));
    add_download("inside");
    QVERIFY(QFile::link(outside, downloads + QLatin1String("/link out")));
    QVERIFY(QFile::link(outside, downloads + QLatin1String("/._inside"))); // in place of the metadata
    QVERIFY(QFile::link(downloads, downloads + QLatin1String("/cycle")));
    QCOMPARE(::mkfifo(QFile::encodeName(downloads + QLatin1String("/pipe")).constData(), 0600), 0);
    const QString link_out = QString(downloads + text("/link out")).mid(source->tree.root().size() - 1);
    write_list(QVariantList{json(R"({"Path": "/../secret.txt"})"), property_list_dictionary{{"Path", link_out}}});
    source->tree.finish();

    const auto run = whole_run(source->tree, {open_attachments_tab});

    const QString rows = run->rows(open_attachments_tab);
    QCOMPARE(rows.count(QLatin1String("file_exist = \"YES\"")), 1); // the file inside
    QCOMPARE(rows.count(QLatin1String("file_exist = \"NO\"")), 2);  // the two of the list
    QCOMPARE(rows.count(QLatin1String("file_size = 0\n")), 2);
    QCOMPARE(run->row_count(open_attachments_tab), 3);
}

void test_macos_open_attachments::cancelled_from_another_thread()
{
    constexpr int element_count = 20000;
    QVariantList elements;
    for (int i = 0; i < element_count; ++i) {
        elements.append(property_list_dictionary{{"PartNumber", QString::number(i)}});
    }
    write_list(elements);
    source->tree.finish();

    const auto run = new_run(source->tree, {open_attachments_tab});
    run->prepare();
    extract_and_cancel(*run, 20);

    const int rows = run->row_count(open_attachments_tab);
    QVERIFY2(rows < element_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->record_signals.last(), rows);
    QVERIFY(!run->log_of(list_operation).contains(text("[extract_xcode_open_attachments] end")));
}

QTEST_MAIN(test_macos_open_attachments)
#include "test_macos_open_attachments.moc"
