// The table all_attachments: the attachments of the messages of both index generations, where their files are looked
// for, and what becomes of folders that are hostile.
#include "tests/macos/macos_run.h"

using evidence::macos_mail_store;
using evidence::macos_mail_tree;

namespace {

const QString attachments_tab = text("all_attachments");
const QString messages_tab = text("messages");
const QString box = text("IMAP-1/INBOX.mbox");
const QString later_operation = text("mail_macos::extract_allattachments_details_11_12");
const QString earlier_operation = text("mail_macos::extract_allattachments_details");

// Only a mail file with this line has its path in the row of a message of the later index.
const evidence::emlx_message answerable{{{"Reply-To", "list@example.org"}}, text("text"), {}, false, {}};

qint64 last_row_id = 0;

qint64 add_message(macos_mail_store &store, const char *subject, const QStringList &attachments)
{
    evidence::macos_message message;
    message.row_id = ++last_row_id; // of its own in each store, or the mail files would be taken for each other's
    message.message_id = 77;
    message.mailbox = store.add_mailbox(text("imap://anna@mail.example.org/INBOX"));
    message.sender = store.add_address(text("ben@example.org"));
    message.subject = store.add_subject(text(subject));
    message.date_sent = 1425205230;
    message.snippet = text("Hello");
    const qint64 row_id = store.add_message(message);
    store.add_recipients(row_id, {store.add_address(text("anna@example.org"))});
    store.add_recipients(row_id, {store.add_address(text("carl@example.org"))}, macos_mail_store::recipient_cc);
    for (const QString &attachment : attachments) {
        store.add_attachment(row_id, attachment);
    }
    return row_id;
}

// A message with a mail file that names an address to reply to.
qint64 add_mail(macos_mail_store &store, const char *subject, const QStringList &attachments)
{
    const qint64 row_id = add_message(store, subject, attachments);
    store.add_emlx(box, row_id, answerable);
    return row_id;
}

} // namespace

class test_macos_attachments : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        last_row_id = 0;
        source = std::make_unique<macos_source>();
    }

    void both_generations();
    void what_leads_out_of_the_source();
    void rows_of_other_runs();
    void cancelled_from_another_thread();

private:
    std::unique_ptr<macos_source> source;
};

void test_macos_attachments::both_generations()
{
    for (const int generation : {2, 4}) {
        macos_mail_store &store = source->tree.add_store(text("anna"), generation);
        const qint64 first = add_mail(store, "All kinds", texts({".x", "a;b.txt", "gone.docx", "plan.pdf", "readme"}));
        const auto add_file = [&store](qint64 mail, const char *part, const char *name, const QByteArray &content) {
            return store.add_attachment_file(box, mail, text(part), text(name), content);
        };
        const QString plan = add_file(first, "2", "plan.pdf", "%PDF-1.4");
        evidence::write_file_metadata(plan,
                                      {{"kMDItemDateAdded", instant(1425205231)},
                                       {"kMDItemUsedDates", QVariantList{instant(1425168000), instant(1456790400)}}},
                                      evidence::metadata_place::apple_double);
        add_file(first, "3", "readme", "four");
        add_file(first, "4", ".x", "x");
        add_file(first, "5", "a;b.txt", "x");

        const qint64 without_address = add_message(store, "No address to reply to", texts({"plan.pdf"}));
        store.add_emlx(box, without_address, {{}, text("text"), {}, false, {}});
        add_file(without_address, "2", "plan.pdf", "second");

        const qint64 partial = add_message(store, "Partial", texts({"twice.txt", "twice.txt "}));
        evidence::emlx_message partial_mail = answerable;
        partial_mail.is_partial = true;
        store.add_emlx(box, partial, partial_mail);
        add_file(partial, "2", "twice.txt", "once");
        add_file(partial, "3", "twice.txt", "once");

        add_message(store, "No mail file", texts({"gone.pdf"}));
        add_mail(store, "No attachments", {});
    }
    source->tree.finish();
    const tree_snapshot before(source->folder.path());

    const auto run = whole_run(source->tree, {attachments_tab});

    QCOMPARE(before.changes(), QString());
    // Which of the two files of one name comes first is the file system's choice.
    QString rows = settled_rows(*run, attachments_tab);
    rows.replace(QLatin1String("/3/twice.txt"), QLatin1String("/2/twice.txt"));
    compare_with("all_attachments.txt", rows);
    QCOMPARE(run->row_count(messages_tab), 0);
    QCOMPARE(run->record_signals.last(), run->row_count(attachments_tab));
    for (const QString &operation : {earlier_operation, later_operation}) {
        QCOMPARE(run->log_of(operation), texts({"starts", "ends"}));
    }
}

void test_macos_attachments::what_leads_out_of_the_source()
{
    const QString outside = source->folder.filePath(text("outside"));
    evidence::make_folder(outside);
    evidence::write_file(outside + text("/secret.txt"), "of the examiner");
    // Beside the source root: where a folder without a slash in front would be looked for.
    evidence::make_folder(source->folder.filePath(text("sourceAttachments")));
    evidence::write_file(source->folder.filePath(text("sourceAttachments/secret.txt")), "of the examiner");

    for (const int generation : {2, 4}) {
        macos_mail_store &store = source->tree.add_store(text("anna"), generation);
        const qint64 links =
            add_mail(store, "Links", texts({"out", "in", "subfolder", "secret.txt", "../1/2/in", ".."}));
        const QString inside = store.add_attachment_file(box, links, text("2"), text("target"), "inside");
        const QString parts = evidence::folder_of(inside) + QLatin1Char('/');
        QVERIFY(QFile::link(outside + text("/secret.txt"), parts + text("out")));
        QVERIFY(QFile::link(inside, parts + text("in")));
        QVERIFY(QFile::link(outside, parts + text("subfolder")));
        QVERIFY(QFile::link(parts, parts + text("cycle")));

        const qint64 linked_folder = add_mail(store, "Linked folder", texts({"secret.txt"}));
        const QString attachments = evidence::folder_of(evidence::folder_of(evidence::folder_of(inside)));
        QVERIFY(QFile::link(outside, attachments + QLatin1Char('/') + QString::number(linked_folder)));
        add_message(store, "No mail file", texts({"secret.txt"}));
    }
    source->tree.finish();

    const auto run = whole_run(source->tree, {attachments_tab});

    const QStringList files = values_of(*run, text("select file_name || ' ' || file_exist from all_attachments"));
    QCOMPARE(files.size(), 16);
    QCOMPARE(files.filter(text("YES")), texts({" in YES", " in YES"}));
}

// Rows of another source, and of an earlier run of the same, stand in messages already.
void test_macos_attachments::rows_of_other_runs()
{
    macos_mail_store &store = source->tree.add_store(text("anna"), 4);
    add_mail(store, "Mail", texts({"a", "b"}));
    source->tree.finish();

    const auto run = new_run(source->tree, {messages_tab, attachments_tab});
    int rows = 0;
    for (const int source_count : {1, 2, 2}) {
        run->source_count = source_count;
        run->prepare();
        run->extract();
        rows += 2;
        QCOMPARE(run->row_count(attachments_tab), rows);
    }
    QCOMPARE(run->row_count(messages_tab), 3);
}

void test_macos_attachments::cancelled_from_another_thread()
{
    constexpr int attachment_count = 50000;
    macos_mail_store &store = source->tree.add_store(text("anna"), 4);
    QStringList names;
    for (int i = 0; i < attachment_count; ++i) {
        names.append(QString::number(i));
    }
    add_mail(store, "Many", names);
    source->tree.finish();

    const auto run = new_run(source->tree, {messages_tab, attachments_tab});
    run->prepare();
    std::thread host;
    QObject::connect(&run->plugin(), &mail::signal_tab_processed_of_plugin_overall, [&](int) {
        host = std::thread([&run] {
            std::this_thread::sleep_for(std::chrono::milliseconds(40));
            run->plugin().pub_cancel_extraction();
        });
    });
    run->extract();
    host.join();

    const int rows = run->row_count(attachments_tab);
    QVERIFY2(rows > 0 && rows < attachment_count, qPrintable(QString::number(rows)));
    QCOMPARE(run->log_of(later_operation), QStringList{text("starts")});
    QCOMPARE(run->tab_signals, QList<int>{1});
}

QTEST_MAIN(test_macos_attachments)
#include "test_macos_attachments.moc"
