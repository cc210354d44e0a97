// The page that mail-extract report writes: as a file, and as a browser shows it.

#include "tests/host/samples.h"

#include <QCryptographicHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QRegularExpression>
#include <QStandardPaths>

#include <unistd.h>

namespace {

// Texts that would end the block of data, run a script or hide what they are, if they were more than text; and a table
// of many rows.
constexpr const char *database = R"(
CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), cc VARCHAR(1024), message VARCHAR(1024),
    message_date_sent INTEGER, mailbox_name VARCHAR(1024), mailbox_account_name VARCHAR(1024),
    os_scheme_display VARCHAR(1024), source_count_name VARCHAR(1024), source_file VARCHAR(1024), used_dates VARCHAR(1024));
INSERT INTO messages VALUES
    (1, '</script><script>document.title="run"</script>', NULL, 'invoice', 1578307200,
     '<img src=x onerror=document.title=1>', 'a&b', 'macOS', 'Source1', '/Users/<b>a</b>/Envelope Index', '1577836600;++::++;1577836700'),
    (2, '<!--<script>' || char(8238) || 'gpj', NULL, '', 600000000.5, 'INBOX', NULL, 'macOS', 'Source1',
     '/Users/<b>a</b>/Envelope Index', NULL),
    (3, 'last', NULL, printf('%.5000c', 'x'), NULL, 'INBOX', '', 'Windows', 'Source10', 'f', NULL),
    (4, 'INBOX', NULL, '', 'soon', '', NULL, 'Windows', 'Source10', 'f', NULL);
CREATE TABLE rules(INT INTEGER PRIMARY KEY);
CREATE TABLE recents(INT INTEGER PRIMARY KEY, text VARCHAR(1024), source_count_name VARCHAR(1024));
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 5000)
    INSERT INTO recents SELECT i, 'text ' || i, 'Source1' FROM n;
)";

// As many rows as a page holds of a table.
constexpr const char *large_database = R"(
CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), from_str VARCHAR(1024), to_str VARCHAR(1024),
    message VARCHAR(1024), message_date_sent INTEGER, mailbox_name VARCHAR(1024), source_count_name VARCHAR(1024));
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000)
    INSERT INTO messages SELECT i, 'subject' || (i * 7919 % 100003), 'sender' || (i % 977) || '@example.org',
        'Someone <someone' || (i % 31) || '@example.org>', printf('%.200c', 'x'), 1400000000 + i * 1009, 'INBOX', 'Source1'
    FROM n;
)";

// Does what an examiner does, and says how long each step took and the longest time in it in which the page stood
// still.
constexpr const char *examiner = R"(
(async () => {
  const done = async (name, begin, is_done) => {
    let longest = 0;
    for (let since = performance.now(); !is_done(); since = performance.now()) {
      await new Promise((go_on) => setTimeout(go_on, 5));
      longest = Math.max(longest, performance.now() - since);
    }
    console.log(`STEP ${name} ${Math.round(performance.now() - begin)} ${Math.round(longest)}.`);
  };
  const found = document.getElementById("found");
  const rows = document.getElementById("grid-body");
  await done("shown", 0, () => found.textContent === "100,000 rows" && rows.childElementCount > 5);
  const search = document.getElementById("search");
  search.value = "subject99999";
  search.dispatchEvent(new Event("input"));
  await done("searched", performance.now(), () => found.textContent === "1 found in 100,000 rows");
  search.value = "";
  search.dispatchEvent(new Event("input"));
  await done("emptied", performance.now(), () => found.textContent === "100,000 rows");
  document.querySelector('#grid-head button[title="Sort by subject"]').click();
  await done("sorted", performance.now(), () => rows.textContent.includes("subject2sender"));
  const box = document.getElementById("grid");
  box.scrollTop = box.scrollHeight;
  await done("scrolled", performance.now(), () => rows.textContent.includes("subject100002sender"));
  console.log("STEP end 0 0.");
})();
)";

} // namespace

class report_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        make_database(path("case"_s), database);
        write_log(QDateTime::currentDateTime(), "END");
        for (int i = 0; i < 2; ++i) { // a report may be written again
            const finished_program program = run("report case --html page.html"_s);
            QCOMPARE(program.errors, QString());
            QVERIFY2(program.output.contains("2 tables, 5004 rows"_s), qPrintable(program.output));
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
        QVERIFY2(program.output.contains("first 2 of 4 rows of messages (show --csv gives all)"_s),
                 qPrintable(program.output));
        const QByteArray page = content_of(path("cut.html"_s));
        QVERIFY(page.contains("onerror"));
        QVERIFY(!page.contains("\"last\""));
    }

    // A log speaks for the results only where it ends with their last change.
    void the_log_beside_the_results_is_told()
    {
        const auto told_log = [this] {
            run("report case --html log.html"_s);
            const QByteArray page = content_of(path("log.html"_s));
            const QByteArray begin = "data-block=\"summary\">";
            const int from = page.indexOf(begin) + begin.size();
            const QByteArray json = page.mid(from, page.indexOf("</script>", from) - from);
            return QJsonDocument::fromJson(json).object().value("log"_s).toObject();
        };
        const QDateTime now = QDateTime::currentDateTime();
        write_log(now, "Insert query ----FAILED----\n[t][TRAWL_BENCH][mail::pub_extract_artifacts]:-- END");
        QJsonObject log = told_log();
        QCOMPARE(log.value("count"_s).toInt(), 1); // and the last line has no time
        QVERIFY(log.contains("changed"_s));
        write_log(now.addSecs(-3600), "END");
        log = told_log();
        QCOMPARE(log.value("count"_s).toInt(), 0);
        QCOMPARE(static_cast<qint64>(log.value("end"_s).toDouble()), now.addSecs(-3600).toSecsSinceEpoch());
        QVERIFY(log.contains("changed"_s));
        write_log(now, "END");
        log = told_log();
        QVERIFY(log.contains("end"_s) && !log.contains("changed"_s));
        QVERIFY(QFile::remove(path("case/mail-extract.log"_s)));
        log = told_log();
        QCOMPARE(log.keys(), QStringList{"path"_s});
    }

    void browser_shows_data()
    {
        text_columns("hash", "found", "shown", "order"); // what is shown: texts with line ends between; the places of
                                                         // texts in the rows drawn, as one pattern
        text_row("markup is text", "", "4 rows",
                 "&lt;/script&gt;&lt;script&gt;document.title=\"run\"&lt;/script&gt;\n"
                 "&lt;img src=x onerror=document.title=1&gt;\n"
                 ">\\u202e</span>gpj\n"
                 "/Users/&lt;b&gt;a&lt;/b&gt;/Envelope Index\n"
                 "2020-01-06 10:40:00<span class=\"seconds\">1578307200</span>\n"
                 "1989-01-05 10:40:00<span class=\"seconds\">600000000.5</span>\n"
                 "<span class=\"null\">NULL</span>",
                 "document.title.*gpj.*last");
        text_row("search", "table=messages&q=INVOICE+2020-01", "1 found in 4 rows", "<mark>invoice</mark>",
                 "document.title");
        text_row("sorted by time", "table=messages&sort=message_date_sent", "4 rows", "aria-sort=\"ascending\"",
                 "gpj.*document.title.*last");
        text_row("sorted backwards", "table=messages&sort=-subject", "4 rows", "aria-sort=\"descending\"",
                 "last.*INBOX.*document.title.*gpj");
        text_row("a whole row", "table=messages&row=3", "4 rows", "Row 3 of messages\n … 1,000 more characters",
                 "last");
        text_row("several times", "table=messages&row=1", "4 rows",
                 "<dd>2019-12-31 23:56:40; 2019-12-31 23:58:20<span class=\"seconds\">1577836600;++::++;1577836700",
                 "last");
        // The bar of a mailbox, and a source whose name begins another's, lead to their rows alone.
        text_row(
            "rows of a bar", "table=messages&f=mailbox_name%3DINBOX&f=mailbox_account_name%3D", "2 found in 4 rows",
            "\"#table=messages&amp;f=mailbox_name%3DINBOX&amp;f=mailbox_account_name%3D\"><title>INBOX: 2</title>\n"
            "1 rows without a value are not in the picture\n"
            "2 rows without a date that can be read are not in the picture\n"
            ">mailbox_name = INBOX ×</button>",
            "gpj.*last");
        text_row("rows of a source", "table=messages&f=source_count_name%3DSource1", "2 found in 4 rows",
                 "\"#table=messages&amp;f=source_count_name%3DSource1\"\n"
                 "<p class=\"notice plain\">No failure stands in <code>",
                 "document.title.*gpj");
        text_row("many rows", "table=recents&sort=-text&row=4998", "5,000 rows", "Row 3 of recents",
                 "text 4<.*text 3<");
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
        QStringList arguments = browser_arguments("--virtual-time-budget=5000 --dump-dom"_s);
        arguments << "file://"_s + path("page.html#"_s) + hash;
        QProcess process;
        process.start(browser, arguments);
        const finished_program program = finish_program(process);
        QCOMPARE(program.exit_code, 0);
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

    void large_table_stays_quick()
    {
        make_database(path("large"_s), large_database);
        run("report large --html large.html"_s);
        QByteArray page = content_of(path("large.html"_s));
        const QByteArray hash = QCryptographicHash::hash(examiner, QCryptographicHash::Sha256).toBase64();
        page.replace("script-src ", "script-src 'sha256-" + hash + "' ");
        page.replace("</body>", "<script>" + QByteArray(examiner) + "</script></body>");
        write_file(path("large.html"_s), page);
        QStringList arguments = browser_arguments("--enable-logging=stderr --log-level=0"_s);
        QProcess process;
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start(QStandardPaths::findExecutable("chromium"_s), arguments << "file://"_s + path("large.html"_s));
        if (!process.waitForStarted()) {
            QSKIP("chromium is not installed: scripts/setup chromium");
        }
        QByteArray told;
        while (!told.contains("STEP end") && process.waitForReadyRead(patience_milliseconds / 2)) {
            told += process.readAll();
        }
        process.terminate();
        QVERIFY(process.waitForFinished(patience_milliseconds));
        constexpr int still_milliseconds = 1000;
        for (const auto &[step, most_milliseconds] :
             {std::pair("shown", 20000), {"searched", 5000}, {"emptied", 5000}, {"sorted", 5000}, {"scrolled", 1000}}) {
            const QRegularExpression measured("STEP %1 (\\d+) (\\d+)\\."_s.arg(QLatin1String(step)));
            const QRegularExpressionMatch match = measured.match(QString::fromUtf8(told));
            QVERIFY2(match.hasMatch(), told.right(3000).constData());
            QVERIFY2(match.captured(1).toInt() <= most_milliseconds, qPrintable(match.captured(0)));
            QVERIFY2(match.captured(2).toInt() <= still_milliseconds, qPrintable(match.captured(0)));
        }
    }

private:
    QStringList browser_arguments(const QString &options) const
    {
        QStringList arguments{"--headless"_s, "--disable-gpu"_s, "--window-size=1600,1000"_s,
                              "--user-data-dir="_s + path("browser"_s)};
        if (geteuid() == 0) {
            arguments << "--no-sandbox"_s; // it refuses to make one for root
        }
        return arguments + options.split(QLatin1Char(' '));
    }
    QString path(const QString &name) const { return folder.filePath(name); }
    void write_log(const QDateTime &time, const char *last_words) const
    {
        const QByteArray when = QLocale::c().toString(time, "yyyy-MMM-ddThh-mm-ss"_s).toLatin1();
        write_file(path("case/mail-extract.log"_s),
                   '[' + when + "][TRAWL_BENCH][mail::pub_extract_artifacts]:-- " + last_words + '\n');
    }
    finished_program run(const QString &arguments, int exit_code = 0) const
    {
        return run_program(folder.path(), arguments, exit_code);
    }
    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(report_test)

#include "report_test.moc"
