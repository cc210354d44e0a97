// The page that mail-extract report writes: as a file, and as a browser shows it.

#include "tests/host/samples.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QStandardPaths>

#include <unistd.h>

namespace {

// Texts that would end the block of data, run a script or hide what they are, if they were more than text; and a table
// of many rows.
constexpr const char *database = R"(
CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), cc VARCHAR(1024), message VARCHAR(1024),
    message_date_sent INTEGER, mailbox_name VARCHAR(1024), mailbox_account_name VARCHAR(1024),
    os_scheme_display VARCHAR(1024), source_count_name VARCHAR(1024), source_file VARCHAR(1024));
INSERT INTO messages VALUES
    (1, '</script><script>document.title="run"</script>', NULL, 'invoice', 1578307200,
     '<img src=x onerror=document.title=1>', 'a&b', 'macOS', 'Source1', '/Users/<b>a</b>/Envelope Index'),
    (2, '<!--<script>' || char(8238) || 'gpj', NULL, '', 600000000.5, 'INBOX', NULL, 'macOS', 'Source1',
     '/Users/<b>a</b>/Envelope Index'),
    (3, 'last', NULL, printf('%.5000c', 'x'), NULL, 'INBOX', NULL, 'Windows', 'Source2', 'f');
CREATE TABLE rules(INT INTEGER PRIMARY KEY);
CREATE TABLE recents(INT INTEGER PRIMARY KEY, text VARCHAR(1024), source_count_name VARCHAR(1024));
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000)
    INSERT INTO recents SELECT i, 'text ' || i, 'Source1' FROM n;
)";

} // namespace

class report_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        make_database(path("case"_s), database);
        write_file(path("case/mail-extract.log"_s), "[t][mail::pub_extract_artifacts]:-- END\n");
        for (int i = 0; i < 2; ++i) { // a report may be written again
            const finished_program program = run("report case --html page.html"_s);
            QCOMPARE(program.errors, QString());
            QVERIFY2(program.output.contains("2 tables, 100003 rows"_s), qPrintable(program.output));
        }
    }

    // Looks at the file as a browser's parser would: where elements begin, and what the policy lets run.
    void only_the_own_script_may_run()
    {
        const QByteArray page = content_of(path("page.html"_s));
        const int script_begin = page.lastIndexOf("<script>") + 8;
        const int script_end = page.lastIndexOf("</script>");
        QVERIFY(script_begin < script_end);
        const QByteArray hash =
            QCryptographicHash::hash(page.mid(script_begin, script_end - script_begin), QCryptographicHash::Sha256);
        QVERIFY(page.contains("default-src 'none'"));
        QVERIFY(page.contains("script-src 'sha256-" + hash.toBase64() + "'\""));
        QCOMPARE(page.count("<script"), page.count("<script type=\"application/json\"") + 1);
        QCOMPARE(page.count("</script>"), page.count("<script"));
        QVERIFY(!page.contains("<img"));
        QVERIFY(page.contains("\\u003cimg src=x"));
    }

    void cut_tables_are_told()
    {
        const finished_program program = run("report case --html cut.html --limit 2"_s);
        QVERIFY2(program.output.contains("first 2 of 3 rows of messages (show --csv gives all)"_s),
                 qPrintable(program.output));
        const QByteArray page = content_of(path("cut.html"_s));
        QVERIFY(page.contains("onerror"));
        QVERIFY(!page.contains("\"last\""));
    }

    void browser_shows_data()
    {
        text_columns("hash", "found", "shown", "order"); // what is shown: texts with line ends between; the places of
                                                         // texts in the rows drawn, as one pattern
        text_row("markup is text", "", "3 rows",
                 "&lt;/script&gt;&lt;script&gt;document.title=\"run\"&lt;/script&gt;\n"
                 "&lt;img src=x onerror=document.title=1&gt;\n"
                 ">\\u202e</span>gpj\n"
                 "/Users/&lt;b&gt;a&lt;/b&gt;/Envelope Index\n"
                 "2020-01-06 10:40:00<span class=\"seconds\">1578307200</span>\n"
                 "1989-01-05 10:40:00<span class=\"seconds\">600000000.5</span>\n"
                 "<span class=\"null\">NULL</span>",
                 "document.title.*gpj.*last");
        text_row("search", "table=messages&q=INVOICE+2020-01", "1 found in 3 rows", "<mark>invoice</mark>",
                 "document.title");
        text_row("sorted by time", "table=messages&sort=message_date_sent", "3 rows", "aria-sort=\"ascending\"",
                 "gpj.*document.title.*last");
        text_row("sorted backwards", "table=messages&sort=-subject", "3 rows", "aria-sort=\"descending\"",
                 "last.*document.title.*gpj");
        text_row("a whole row", "table=messages&row=3", "3 rows", "Row 3 of messages\n … 1,000 more characters",
                 "last");
        text_row("a hundred thousand rows", "table=recents&sort=-text&row=99998", "100,000 rows", "Row 3 of recents",
                 "text 4<.*text 3<");
        text_row("search in as many", "table=recents&q=text+99999", "1 found in 100,000 rows",
                 "<mark>99999</mark>\nholds no failure. It is the log of one run", "99999");
    }

    void browser_shows()
    {
        QFETCH(QString, hash);
        QFETCH(QString, found);
        QFETCH(QString, shown);
        QFETCH(QString, order);
        const QString browser = QStandardPaths::findExecutable("chromium"_s);
        if (browser.isEmpty()) {
            QSKIP("chromium is not installed: scripts/setup chromium");
        }
        QStringList arguments =
            "--headless --disable-gpu --window-size=1600,1000 --virtual-time-budget=5000 --dump-dom"_s.split(
                QLatin1Char(' '));
        arguments << "--user-data-dir="_s + path("browser"_s) << "file://"_s + path("page.html#"_s) + hash;
        if (geteuid() == 0) {
            arguments.prepend("--no-sandbox"_s); // it refuses to make one for root
        }
        QProcess process;
        QElapsedTimer timer;
        timer.start();
        process.start(browser, arguments);
        const finished_program program = finish_program(process);
        QCOMPARE(program.exit_code, 0);
        QVERIFY2(timer.elapsed() < 30000, qPrintable(QString::number(timer.elapsed()))); // with the browser's start
        const QString body = program.output.left(program.output.indexOf("<script type="_s));
        QVERIFY2(body.contains("<title>Mail artifacts</title>"_s), qPrintable(body.left(3000)));
        QVERIFY(!body.contains("<img"_s));
        QVERIFY2(body.contains("role=\"status\">"_s + found + QLatin1Char('<')), qPrintable(body));
        for (const QString &text : shown.split(QLatin1Char('\n'))) {
            QVERIFY2(body.contains(text), qPrintable(text + " is not in "_s + body));
        }
        const int rows_begin = body.indexOf("id=\"grid-body\""_s);
        const QString rows = body.mid(rows_begin, body.indexOf("</tbody>"_s, rows_begin) - rows_begin);
        QVERIFY2(rows.contains(QRegularExpression(order, QRegularExpression::DotMatchesEverythingOption)),
                 qPrintable(rows));
        QVERIFY(rows.count("<tr"_s) < 60);
    }

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    finished_program run(const QString &arguments, int exit_code = 0) const
    {
        return run_program(folder.path(), arguments, exit_code);
    }
    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(report_test)

#include "report_test.moc"
