// Body files of the UniStore: which give a row and with what text, and that no document leads out of its file or keeps
// the run busy.
#include "evidence/files.h"
#include "evidence/windows_profile.h"
#include "services/html_measure.h"
#include "services/html_text.h"
#include "tests/support/tree_snapshot.h"
#include "tests/windows/winos_run.h"
#include "windows/html_block_scan.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>

namespace {

// Name, size, time of modification and text of each row, a line a row.
QString bodies_of(const winos_run &run)
{
    return run.found_by(QStringLiteral("select substr(file_path,47)||'|'||file_size||'|'||modification_timestamp||'|'||"
                                       "ifnull(replace(body,char(10),'/'),'NULL') from mail_data order by file_path"));
}

struct body_tree
{
    QTemporaryDir folder;
    QString root = folder.filePath(utf8("root/"));
    evidence::windows_profile profile{root, utf8("anna")};

    body_tree() { evidence::make_folder(profile.store_files_path()); }
    void add(const char *name, const QByteArray &content)
    {
        set_modified(profile.add_store_file(utf8(name), content), 1425201630);
    }
};

} // namespace

class test_bodies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void gives_rows_of_files();
    void stores_every_column();
    void stays_inside_the_file();
    void bounds_documents_data();
    void bounds_documents();
    void finds_blocks_across_pieces();
};

void test_bodies::gives_rows_of_files()
{
    body_tree tree;
    tree.add("1/a.html", "<html><body><p>Dear&nbsp;Ben,<br>yours</p><p>Anna</p></body></html>");
    tree.add("2/a.html", "<p>Hi</p>"); // the text files of all three bear one name
    tree.add("3/a.html", "<p>See you</p>\r\n");
    tree.add("4/empty.html", "");
    tree.add("4/latin.html", "<p>Gr\xFC\xDF\x65</p>");
    tree.add("4/utf8.html", "<p>Grüße</p>");
    tree.add("4/zero.html", QByteArray("<p>one\0two</p>", 14));
    const QString wide = QStringLiteral("type: text/html\r\n<html><b>Grüße</b></html> behind </html>");
    tree.add("5/mail.dat", QByteArray(reinterpret_cast<const char *>(wide.utf16()), wide.size() * 2));
    tree.add("5/marked.dat", "text/html, no block");
    tree.add("5/open.dat", "text/html " + QByteArray(300, 'x') + "<html> not closed");
    tree.add("5/plain.dat", QByteArray(300, 'x') + "<html>no type</html>");
    tree.add("5/typed.dat", "<html>HTML by its begin</html>");
    tree.add("5/.hidden.html", "<p>hidden</p>");
    const tree_snapshot before(tree.root);

    winos_run run(tree.root, "mail_data");
    run.run();

    compare_with_expected(bodies_of(run), "body_files.txt");
    QCOMPARE(run.record_signals.last(), 11);
    QCOMPARE(before.changes(), QString());
    QVERIFY(!QDir(run.result_directory() + QLatin1String("/Artifacts_Result/Mail/Files")).exists());
    // The two without a block, and nothing else.
    const auto count_of = [log = run.log()](const char *text) { return log.filter(utf8(text)).size(); };
    QCOMPARE(count_of("[get_text_from_html]File Open ------UNSUCCESSFUL------: "), 2);
    QCOMPARE(count_of("[html_to_ascii_converter]File Open ------UNSUCCESSFUL------: "), 2);
    QCOMPARE(count_of("FAILED"), 0);
    QCOMPARE(run.log_of("extract_mail_data"), plain_log_of("extract_mail_data"));
}

void test_bodies::stores_every_column()
{
    body_tree tree;
    tree.add("3/a.html", "<p>Hi</p>");
    winos_run run(tree.root, "mail_data", "anna:OFFICE");
    run.run();
    QString row = run.rows(utf8("mail_data"));
    row.remove(
        QRegularExpression(QStringLiteral("\n  (creation|last_access)_timestamp = \\d+"))); // differ from run to run
    compare_with_expected(row, "mail_data_bodies.txt");
}

// A style sheet that hides all text, were it read; a link and a pipe among the body files.
void test_bodies::stays_inside_the_file()
{
    QTemporaryDir outside;
    const QString style = outside.filePath(utf8("hide.css"));
    const QString foreign = outside.filePath(utf8("foreign.html"));
    evidence::write_file(style, "p{display:none}");
    evidence::write_file(foreign, "<p>foreign</p>");
    const QByteArray url = "file://" + style.toUtf8();
    body_tree tree;
    tree.add("3/styled.html", "<html><head><link rel=stylesheet type=\"text/css\" href=\"" + url +
                                  "\"><style>@import url(" + url + ");</style></head><body><p>seen</p></body></html>");
    const QString data = tree.profile.store_files_path();
    QVERIFY(QFile::link(foreign, data + QLatin1String("3/linked.html")));
    QVERIFY(QFile::link(data + QLatin1String("3/styled.html"), data + QLatin1String("3/inside.html")));
    QCOMPARE(::mkfifo(QFile::encodeName(data + QLatin1String("3/pipe.html")).constData(), 0600), 0);

    winos_run run(tree.root, "mail_data");
    run.run();
    const QString size = QString::number(QFile(data + QLatin1String("3/styled.html")).size());
    QCOMPARE(bodies_of(run),
             QStringLiteral("3/inside.html|%1|1425201630|seen\n3/styled.html|%1|1425201630|seen\n").arg(size));
}

void test_bodies::bounds_documents_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QString>("excess"); // empty: QTextDocument's own text
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &document, const char *excess, const char *text) {
        QTest::newRow(name) << document << QString::fromLatin1(excess) << QString::fromUtf8(text);
    };
    const auto times = [](const char *text, int count) { return QString::fromLatin1(text).repeated(count); };
    row("nothing", QString(), "", "");
    row("a list", QStringLiteral("<ul><li>a<li>b</ul>"), "", "a\nb");
    row("nested", times("<div>", 200000) + QStringLiteral("<p>deep &amp; <b>low</b>&#33;</p><script>x</script>"),
        "depth", "deep & low!");
    row("nested in comments that are none", times("<div title='<!--'><p></x><!-- </div></p> -->", 20000) + utf8("x"),
        "depth", "x");
    row("long list", QStringLiteral("<ul>") + times("<li>a</li>", 4001), "list items", nullptr);
    row("wide table", times("<tr><td colspan=1000>a</td></tr>", 201), "cells of tables", nullptr);
    row("table wider with each inner table",
        QStringLiteral("<table>") + times("<tr><td>b", 300) + QStringLiteral("<tr>") + times("<td>a<table>", 1000),
        "cells of tables", nullptr);
    row("high cells", times("<table><tr><td rowspan=200001>a</table>", 1), "spanned cells", "a");
    row("spans whose products add up to nothing",
        QStringLiteral("<table><tr>") + times("<td colspan=2147483647 rowspan=2147483647>", 4) + QLatin1Char('a'),
        "cells of tables", "a");
    row("rules for all",
        QStringLiteral("<style>") + times("b i b{color:red}", 2000) + QStringLiteral("</style>") + times("<b>", 100) +
            utf8("x"),
        "style rules", "x");
    row("a name in disguise", QStringLiteral("<t&#100; colspan=9999999>a</td>"), "disguised names", "a");
    row("many tags", times("a<br>", 100001), "tags", nullptr);
}

void test_bodies::bounds_documents()
{
    QFETCH(QString, document);
    QFETCH(QString, excess);
    QFETCH(QString, text);
    const html_text converted = plain_text_of_html(document);
    QCOMPARE(QString::fromLatin1(converted.excess ? converted.excess : ""), excess);
    if (!text.isNull()) {
        QCOMPARE(converted.text.trimmed(), text);
    }
}

void test_bodies::finds_blocks_across_pieces()
{
    const QByteArray file("Content: text/html\n</html><html><p>\0a</p></html></html>", 55);
    for (const int piece_size : {1, 2, 7, 55}) {
        html_block_scan scan;
        for (int at = 0; at < file.size(); at += piece_size) {
            scan.take(file.mid(at, piece_size));
        }
        QCOMPARE(scan.found(), QByteArray("text/html<html><p>a</p></html>"));
    }
    html_block_scan large;
    large.take("<html>");
    for (int i = 0; i < 33; ++i) {
        large.take(QByteArray(1 << 20, 'x'));
    }
    large.take("</ht");
    large.take("ml>text/html");
    QVERIFY(large.has_cut_block());
    QCOMPARE(large.found().size(), 9 + html_block_scan::largest_block + 7);
    QVERIFY(large.found().endsWith("xx</html>"));
}

QTEST_MAIN(test_bodies)
#include "test_bodies.moc"
