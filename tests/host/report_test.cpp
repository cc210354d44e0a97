// The page that mail-extract report writes: as a file, and as a browser shows it.

#include "tests/host/samples.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace {

constexpr int many_rows = 5000;

// Texts that would end the block of data, run a script or hide what they are, if they were more than text.
constexpr const char *statements[] = {
    "CREATE TABLE messages(INT INTEGER PRIMARY KEY, subject VARCHAR(1024), cc VARCHAR(1024), message VARCHAR(1024), "
    "message_date_sent INTEGER, mailbox_name VARCHAR(1024), mailbox_account_name VARCHAR(1024), os_scheme_display "
    "VARCHAR(1024), source_count_name VARCHAR(1024), source_file VARCHAR(1024))",
    "INSERT INTO messages VALUES(1, '</script><script>document.title=\"run\"</script>', NULL, 'invoice', 1578307200, "
    "'<img src=x onerror=document.title=1>', 'a&b', 'macOS', 'Source1', '/Users/<b>a</b>/Envelope Index')",
    "INSERT INTO messages VALUES(2, '<!--<script>' || char(8238) || 'gpj', NULL, '', 600000000.5, 'INBOX', NULL, "
    "'macOS', "
    "'Source1', '/Users/<b>a</b>/Envelope Index')",
    "INSERT INTO messages VALUES(3, 'last', NULL, printf('%.5000c', 'x'), NULL, 'INBOX', NULL, 'Windows', 'Source2', "
    "'f')",
    "CREATE TABLE recents(INT INTEGER PRIMARY KEY, text VARCHAR(1024), source_count_name VARCHAR(1024))",
    "CREATE TABLE rules(INT INTEGER PRIMARY KEY)",
};

bool make_database(const QString &path)
{
    bool succeeded = write_file(path, QByteArray());
    {
        QSqlDatabase database = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), path);
        database.setDatabaseName(path);
        succeeded = database.open() && succeeded;
        QSqlQuery query(database);
        for (const char *statement : statements) {
            succeeded = query.exec(QString::fromLatin1(statement)) && succeeded;
        }
        succeeded =
            query.exec(QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1)"
                                      "INSERT INTO recents SELECT i, 'text ' || i, 'Source1' FROM n")
                           .arg(many_rows)) &&
            succeeded;
    }
    QSqlDatabase::removeDatabase(path);
    return succeeded;
}

} // namespace

class report_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void unfit_places_are_refused_data();
    void unfit_places_are_refused();
    void only_the_own_script_may_run();
    void cut_tables_are_told();

    void browser_shows_data();
    void browser_shows();

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    finished_program run(const QString &arguments) const { return run_program(folder.path(), arguments); }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir folder;
};

void report_test::initTestCase()
{
    QVERIFY(folder.isValid());
    QVERIFY(make_database(path(QStringLiteral("case/Artifacts_Result/Mail/Mail.sqlite"))));
    QVERIFY(write_file(path(QStringLiteral("notes.html")), "<!DOCTYPE html>"));
    QVERIFY(QFile::link(QStringLiteral("page.html"), path(QStringLiteral("link.html"))));
    for (int i = 0; i < 2; ++i) { // a report may be written again
        const finished_program program = run(QStringLiteral("report case --html page.html"));
        QCOMPARE(program.errors, QString());
        QCOMPARE(program.exit_code, 0);
        QVERIFY2(program.output.contains(QLatin1String("2 tables, 5003 rows")), qPrintable(program.output));
    }
}

void report_test::unfit_places_are_refused_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("told");
    const auto add = [](const char *arguments, const char *told) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments) << QString::fromLatin1(told);
    };
    add("report case", "--html FILE");
    add("report none --html new.html", "\"none\"");
    add("report case --html notes.html", "no report of mail-extract");
    add("report case --html case/Artifacts_Result/Mail/Mail.sqlite", "no report of mail-extract");
    add("report case --html case", "not a regular file");
    add("report case --html link.html", "not a regular file");
    add("report case --html none/new.html", "none");
}

void report_test::unfit_places_are_refused()
{
    QFETCH(QString, arguments);
    QFETCH(QString, told);
    const QStringList before = state_of(folder.path());
    const finished_program program = run(arguments);
    QCOMPARE(program.exit_code, 2);
    QVERIFY2(program.errors.contains(told), qPrintable(program.errors));
    QCOMPARE(state_of(folder.path()), before);
}

// Looks at the file as a browser's parser would: where elements begin, and what the policy lets run.
void report_test::only_the_own_script_may_run()
{
    const QByteArray page = content(QStringLiteral("page.html"));
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

void report_test::cut_tables_are_told()
{
    const finished_program program = run(QStringLiteral("report case --html cut.html --limit 2"));
    QCOMPARE(program.exit_code, 0);
    QVERIFY2(program.output.contains(QLatin1String("first 2 of 3 rows of messages (show --csv gives all)")),
             qPrintable(program.output));
    const QByteArray page = content(QStringLiteral("cut.html"));
    QVERIFY(page.contains("onerror"));
    QVERIFY(!page.contains("\"last\""));
}

void report_test::browser_shows_data()
{
    QTest::addColumn<QString>("hash");
    QTest::addColumn<QString>("found");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QString>("order"); // the places of texts in the rows drawn, as one pattern

    QTest::newRow("markup is text")
        << QString() << QStringLiteral("3 rows")
        << QStringList{QStringLiteral("&lt;/script&gt;&lt;script&gt;document.title=\"run\"&lt;/script&gt;"),
                       QStringLiteral("&lt;img src=x onerror=document.title=1&gt;"),
                       QStringLiteral(">\\u202e</span>gpj"),
                       QStringLiteral("/Users/&lt;b&gt;a&lt;/b&gt;/Envelope Index"),
                       QStringLiteral("2020-01-06 10:40:00<span class=\"seconds\">1578307200</span>"),
                       QStringLiteral("1989-01-05 10:40:00<span class=\"seconds\">600000000.5</span>"),
                       QStringLiteral("<span class=\"null\">NULL</span>")}
        << QStringLiteral("document.title.*gpj.*last");
    QTest::newRow("search") << QStringLiteral("table=messages&q=INVOICE+2020-01") << QStringLiteral("1 found in 3 rows")
                            << QStringList{QStringLiteral("<mark>invoice</mark>")} << QStringLiteral("document.title");
    QTest::newRow("sorted by time") << QStringLiteral("table=messages&sort=message_date_sent")
                                    << QStringLiteral("3 rows")
                                    << QStringList{QStringLiteral("aria-sort=\"ascending\"")}
                                    << QStringLiteral("gpj.*document.title.*last");
    QTest::newRow("sorted backwards") << QStringLiteral("table=messages&sort=-subject") << QStringLiteral("3 rows")
                                      << QStringList{QStringLiteral("aria-sort=\"descending\"")}
                                      << QStringLiteral("last.*document.title.*gpj");
    QTest::newRow("a whole row") << QStringLiteral("table=messages&row=3") << QStringLiteral("3 rows")
                                 << QStringList{QStringLiteral("Row 3 of messages"),
                                                QStringLiteral(" … 1,000 more characters")}
                                 << QStringLiteral("last");
    QTest::newRow("many rows") << QStringLiteral("table=recents&sort=-text&row=4998") << QStringLiteral("5,000 rows")
                               << QStringList{QStringLiteral("Row 3 of recents")} << QStringLiteral("text 4<.*text 3<");
}

void report_test::browser_shows()
{
    QFETCH(QString, hash);
    QFETCH(QString, found);
    QFETCH(QStringList, shown);
    QFETCH(QString, order);
    const QString browser = QStandardPaths::findExecutable(QStringLiteral("chromium"));
    if (browser.isEmpty()) {
        QSKIP("chromium is not installed: scripts/setup chromium");
    }
    QStringList arguments{QStringLiteral("--headless"),
                          QStringLiteral("--disable-gpu"),
                          QStringLiteral("--window-size=1600,1000"),
                          QStringLiteral("--virtual-time-budget=5000"),
                          QStringLiteral("--user-data-dir=") + path(QStringLiteral("browser")),
                          QStringLiteral("--dump-dom"),
                          QStringLiteral("file://") + path(QStringLiteral("page.html#")) + hash};
    if (geteuid() == 0) {
        arguments.prepend(QStringLiteral("--no-sandbox")); // it refuses to make one for root
    }
    QProcess process;
    process.start(browser, arguments);
    const finished_program program = finish_program(process);
    QCOMPARE(program.exit_code, 0);
    const QString body = program.output.left(program.output.indexOf(QLatin1String("<script type=")));
    QVERIFY2(body.contains(QLatin1String("<title>Mail artifacts</title>")), qPrintable(body.left(3000)));
    QVERIFY(!body.contains(QLatin1String("<img")));
    QVERIFY2(body.contains(QLatin1String("role=\"status\">") + found + QLatin1Char('<')), qPrintable(body));
    for (const QString &text : shown) {
        QVERIFY2(body.contains(text), qPrintable(text + QStringLiteral(" is not in ") + body));
    }
    const int rows_begin = body.indexOf(QLatin1String("id=\"grid-body\""));
    const QString rows = body.mid(rows_begin, body.indexOf(QLatin1String("</tbody>"), rows_begin) - rows_begin);
    QVERIFY2(rows.contains(QRegularExpression(order, QRegularExpression::DotMatchesEverythingOption)),
             qPrintable(rows));
    QVERIFY(rows.count(QLatin1String("<tr")) < 60);
}

QTEST_GUILESS_MAIN(report_test)

#include "report_test.moc"
