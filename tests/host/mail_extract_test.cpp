// mail-extract as its users meet it: arguments in; exit code, output and files out.

#include "evidence/ios_file_tree.h"
#include "tests/host/samples.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

namespace {

bool has_line(const QString &output, const QString &line)
{
    return output.split(QLatin1Char('\n')).contains(line);
}

} // namespace

class mail_extract_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    void bad_input_is_refused_data();
    void bad_input_is_refused();
    void permissions_are_told_data();
    void permissions_are_told();

    void source_is_recognised_data();
    void source_is_recognised();

    void run_writes_results_alone();
    void run_extracts_and_leaves_the_source_alone();
    void run_extracts_every_user_of_a_volume();
    void run_continues_results_and_replaces_its_log();
    void enciphered_log_deciphers();
    void database_held_by_another_process_is_told();
    void failures_are_told();
    void interrupt_keeps_the_rows();

    void help_fits_a_screen_data();
    void help_fits_a_screen();
    void manual_knows_all_options();
    void tabs_are_listed();

    void show_lists_tables();
    void show_is_safe_to_read();
    void show_is_exact_data();
    void show_is_exact();

    void decipher_tells_damaged_records();

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    finished_program run(const QString &arguments) const { return run_program(folder.path(), arguments); }

    QTemporaryDir folder;
};

void mail_extract_test::initTestCase()
{
    QVERIFY(folder.isValid());
    QVERIFY(make_samples(folder.path()));
}

void mail_extract_test::bad_input_is_refused_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("told"); // what the sentence must name

    const auto add = [](const char *name, const char *arguments, const char *told) {
        QTest::newRow(name) << QString::fromLatin1(arguments) << QString::fromLatin1(told);
    };
    add("no command", "", "run, tabs, show, report and decipher");
    add("unknown command", "ruin ios", "\"ruin\"");
    add("unknown option", "run ios --result out --colour", "\"colour\"");
    add("option of Qt", "run ios --result out -platform x", "unknown option");
    add("no source argument", "run", "SOURCE");
    add("no result", "run ios", "--result DIR");
    add("missing value", "run ios --result", "--result");
    add("value twice", "run ios --result out --result out", "twice");
    add("too many arguments", "run ios out --result out", "\"out\"");
    add("missing source", "run none --result out", "\"none\"");
    add("source is a file", "run file --result out", "not a folder");
    add("source is nothing known", "run bare --result out", "--scheme macOS|iOS_UID");
    add("source is two things", "run two --result out", "macOS|iOS_Uniform");
    add("home without --home", "run mac/Users/alice --result out", "--home");
    add("home of no Users", "run alice --home --result out", "\"Users\"");
    add("home of the wrong scheme", "run ios --home --scheme iOS_Uniform --result out", "--home");
    add("unknown user", "run mac --user dave --result out", "alice, bob");
    add("user leads elsewhere", "run mac --user ../.. --result out", "NAME");
    add("unknown scheme", "run ios --scheme ios --result out", "iOS_Uniform");
    add("unknown tab", "run ios --tabs accounts,mails --result out", "accounts, messages");
    add("tab of another scheme", "run ios --tabs rules --result out", "accounts, messages");
    add("source number", "run ios --source-number 1a --result out", "\"1a\"");
    add("result is the source", "run ios --result ios", "inside the source");
    add("result in the source", "run ios --result ios/new/out", "inside the source");
    add("result in the source by link", "run ios --result link_to_ios/out", "inside the source");
    add("source by link", "run link_to_ios --result ios/out", "inside the source");
    add("result below a file", "run ios --result file/out", "is a file");
    add("result below a dangling link", "run ios --result dangling/out", "leads nowhere");
    add("result cannot be made", "run ios --result /proc/mail_extract/out", "/proc");
    add("no database in its place", "run ios --result taken", "not a SQLite database");
    add("result database in the source by link", "run ios --result linked", "inside the source");
    add("source among the working copies", "run holds/Artifacts_Result/Mail/tmp/mac --result holds", "working copies");
    add("log in the source", "run ios --result out --log ios/log", "inside the source");
    add("log without a folder", "run ios --result out --log none/log", "none");
    add("log among the results", "run ios --result shown --log shown/Artifacts_Result/log", "Artifacts_Result");
    add("cipher without log", "run ios --result out --encipher-log", "--log FILE");
    add("missing plug-in", "run ios --result out --plugin none.so", "\"none.so\"");
    add("plug-in does not load", "run ios --result out --plugin file", "does not load");
    add("show without a database", "show bare", "--result");
    add("show of an unknown table", "show shown mails", "messages, recents");
    add("show in two forms", "show shown messages --csv --jsonl", "one of them");
    add("show with a wrong limit", "show shown messages --limit ten", "\"ten\"");
    add("show of no database", "show file", "cannot be read");
    add("decipher nothing", "decipher none", "\"none\"");
    add("decipher no log", "decipher file", "no record");
}

void mail_extract_test::bad_input_is_refused()
{
    QFETCH(QString, arguments);
    QFETCH(QString, told);
    const QStringList before = state_of(folder.path());
    const finished_program program = run(arguments);
    QCOMPARE(program.exit_code, 2);
    QCOMPARE(program.output, QString());
    QVERIFY2(program.errors.startsWith(QLatin1String("mail-extract: ")), qPrintable(program.errors));
    QCOMPARE(program.errors.count(QLatin1Char('\n')), 1);
    QVERIFY2(program.errors.contains(told), qPrintable(program.errors));
    QCOMPARE(state_of(folder.path()), before);
}

void mail_extract_test::permissions_are_told_data()
{
    QTest::addColumn<QString>("closed");
    QTest::addColumn<int>("exit_code");
    QTest::addColumn<QString>("told");

    QTest::newRow("result folder") << "open" << 2 << "no permission to write results";
    QTest::newRow("result database") << "open/Artifacts_Result/Mail/Mail.sqlite" << 2
                                     << "no permission to read and write";
    QTest::newRow("log") << "open/mail-extract.log" << 2 << "no permission to read and write the log";
    QTest::newRow("index") << "ios/private/var/mobile/Library/Mail/Envelope Index" << 1 << "\nIncomplete: messages\n";
    QTest::newRow("accounts") << "ios/private/var/mobile/Library/Accounts/Accounts3.sqlite" << 1
                              << "\nIncomplete: accounts\n";
    QTest::newRow("mail files") << "ios/private/var/mobile/Library/Mail/MessageData" << 1 << "\nIncomplete: messages\n";
    QTest::newRow("all of the mail") << "ios/private/var/mobile/Library/Mail" << 1
                                     << "\nIncomplete: possibly every table\n";
}

void mail_extract_test::permissions_are_told()
{
    QFETCH(QString, closed);
    QFETCH(int, exit_code);
    QFETCH(QString, told);
    constexpr QFile::Permissions everything(0x7777);
    QVERIFY(QFile::setPermissions(folder.path(), everything) && QDir().mkpath(path(QStringLiteral("open"))));
    QVERIFY(QFile::setPermissions(path(QStringLiteral("open")), everything));
    const QString arguments = QStringLiteral("run ios --scheme iOS_Uniform --clear --result open");
    const auto run_it = [&] { return run_program_without_privileges(folder.path(), arguments); };
    if (run_program_without_privileges(folder.path(), QStringLiteral("--version")).exit_code != 0) {
        QSKIP("the program stands in a folder that is closed to other users");
    }
    const finished_program undisturbed = run_it();
    QVERIFY2(undisturbed.exit_code == 0, qPrintable(undisturbed.errors));

    const QFile::Permissions before = QFile::permissions(path(closed));
    QVERIFY(QFile::setPermissions(path(closed), QFile::Permissions()));
    const finished_program program = run_it();
    QVERIFY(QFile::setPermissions(path(closed), before));
    QCOMPARE(program.exit_code, exit_code);
    const QString output = program.output + program.errors;
    QVERIFY2(output.contains(told), qPrintable(output));
    QVERIFY2(output.contains(QFileInfo(closed).fileName()), qPrintable(output));
}

void mail_extract_test::source_is_recognised_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("scheme");
    QTest::addColumn<QString>("users"); // empty: none are told

    const auto add = [](const char *arguments, const char *scheme, const char *users) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments) << QString::fromLatin1(scheme)
                                 << QString::fromLatin1(users);
    };
    add("ios", "iOS_Uniform (iOS File System)", "");
    add("backup", "iOS_UID (iOS Backup)", "");
    add("mac", "macOS (macOS)", "alice, bob"); // the folder "Shared" is no home, and the link leads out of the source
    add("mac --user alice", "macOS (macOS)", "alice");
    add("mac/Users/alice --home", "macOS (macOS)", "alice");
    add("windows", "winOS (Windows)", "carol");
    add("windows --user c:carol", "winOS (Windows)", "c:carol");
    add("two --scheme macOS", "macOS (macOS)", "a");
    add("bare --scheme winOS", "winOS (Windows)", "none found, name them with --user");
}

void mail_extract_test::source_is_recognised()
{
    QFETCH(QString, arguments);
    QFETCH(QString, scheme);
    QFETCH(QString, users);
    const finished_program program = run(QStringLiteral("run %1 --result recognised").arg(arguments));
    QVERIFY2(has_line(program.output, QStringLiteral("Scheme: ") + scheme), qPrintable(program.output));
    QCOMPARE(program.output.contains(QLatin1String("Users: ")), !users.isEmpty());
    QVERIFY2(users.isEmpty() || has_line(program.output, QStringLiteral("Users: ") + users),
             qPrintable(program.output));
}

// Also not where a desktop would: a cache of fonts, a folder for sockets.
void mail_extract_test::run_writes_results_alone()
{
    const QString home = path(QStringLiteral("home"));
    QVERIFY(write_file(home + QLatin1String("/fonts.conf"), QStringLiteral("<fontconfig><dir>/usr/share/fonts</dir>"
                                                                           "<cachedir>%1/fonts</cachedir></fontconfig>")
                                                                .arg(home)
                                                                .toUtf8()));
    const QStringList before = state_of(home);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("XDG_RUNTIME_DIR"));
    environment.insert(QStringLiteral("FONTCONFIG_FILE"), home + QLatin1String("/fonts.conf"));
    for (const char *name : {"HOME", "TMPDIR", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
        environment.insert(QLatin1String(name), home);
    }
    process.setProcessEnvironment(environment);
    start_program(process, folder.path(), QStringLiteral("run volume --result at_home"));
    QCOMPARE(finish_program(process).exit_code, 0);
    QCOMPARE(state_of(home), before);
}

void mail_extract_test::run_extracts_and_leaves_the_source_alone()
{
    const QStringList source_before = state_of(path(QStringLiteral("ios")));
    const finished_program program = run(QStringLiteral("run ios --result case/new --source-number 7"));
    QCOMPARE(program.errors, QString());
    QCOMPARE(program.exit_code, 0);
    QCOMPARE(state_of(path(QStringLiteral("ios"))), source_before);

    QVERIFY(has_line(program.output, QStringLiteral("  messages         %1").arg(sample_messages)));
    QVERIFY(has_line(program.output, QStringLiteral("Failures in the log: none")));
    QVERIFY(program.output.contains(QLatin1String(": messages (tab 2 of 2), 1 rows, ")));
    QVERIFY(program.output.contains(QStringLiteral(": 2 of 2 tabs, %1 rows, ").arg(sample_messages + 1)));
    for (const QChar character : program.output) {
        QVERIFY(character == QLatin1Char('\n') || character.isPrint());
    }
    QVERIFY(QFileInfo::exists(path(QStringLiteral("case/new/mail-extract.log"))));
    const QDir results(path(QStringLiteral("case/new/Artifacts_Result/Mail")));
    QCOMPARE(results.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList(QStringLiteral("Mail.sqlite")));

    const finished_program rows = run(QStringLiteral("show case/new messages --jsonl"));
    const QStringList lines = rows.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QCOMPARE(lines.size(), sample_messages);
    for (const QString &line : lines) {
        const QJsonObject row = QJsonDocument::fromJson(line.toUtf8()).object();
        QCOMPARE(row.value(QLatin1String("source_count_name")).toString(), QStringLiteral("Source7"));
        QCOMPARE(row.value(QLatin1String("os_scheme_display")).toString(), QStringLiteral("iOS File System"));
    }
}

// Of 300 messages 210 and 30 lie in the two stores of anna and 60 in that of jörg.
void mail_extract_test::run_extracts_every_user_of_a_volume()
{
    const QStringList source_before = state_of(path(QStringLiteral("volume")));
    const finished_program volume = run(QStringLiteral("run volume --result case/volume"));
    QCOMPARE(volume.errors, QString());
    QCOMPARE(volume.exit_code, 0);
    QVERIFY(has_line(volume.output, QStringLiteral("Users: anna, jörg")));
    QVERIFY(has_line(volume.output, QStringLiteral("  messages                 300")));
    QVERIFY(has_line(volume.output, QStringLiteral("  open_attachments           7")));
    QVERIFY(volume.output.contains(QLatin1String(": 9 of 9 tabs, ")));

    const finished_program home =
        run(QStringLiteral("run volume/Users/jörg --home --tabs messages --result case/home"));
    QCOMPARE(home.exit_code, 0);
    QVERIFY(has_line(home.output, QStringLiteral("Users: jörg")));
    QVERIFY(has_line(home.output, QStringLiteral("  messages          60")));
    const finished_program tables = run(QStringLiteral("show case/home --csv"));
    QVERIFY2(tables.output.contains(QLatin1String("emlx_list,5")), qPrintable(tables.output));
    QCOMPARE(state_of(path(QStringLiteral("volume"))), source_before);
}

void mail_extract_test::run_continues_results_and_replaces_its_log()
{
    const QString again = QStringLiteral("run ios --result again --tabs messages");
    const auto log_size = [this] { return QFileInfo(path(QStringLiteral("again/mail-extract.log"))).size(); };
    QCOMPARE(run(again).exit_code, 0);
    const qint64 size_of_one = log_size();

    const QString twice = run(again).output;
    QVERIFY(has_line(twice, QStringLiteral("  messages         %1").arg(2 * sample_messages)));
    QVERIFY(twice.contains(QStringLiteral("%1 of these rows stood there before").arg(sample_messages)));
    QVERIFY(!twice.contains(QLatin1String("  accounts")));
    QCOMPARE(log_size(), size_of_one);

    QVERIFY(has_line(run(again + QStringLiteral(" --clear")).output,
                     QStringLiteral("  messages         %1").arg(sample_messages)));
}

void mail_extract_test::enciphered_log_deciphers()
{
    const finished_program program = run(QStringLiteral("run ios --result secret --log secret.log --encipher-log"));
    QCOMPARE(program.exit_code, 0);
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("secret/mail-extract.log"))));
    const finished_program log = run(QStringLiteral("decipher secret.log"));
    QCOMPARE(log.exit_code, 0);
    QVERIFY(log.output.contains(QLatin1String("[Artifacts Extraction][mail::pub_extract_artifacts]:-- START\n")));
    QVERIFY(log.output.endsWith(QLatin1String(":-- END\n")));
}

void mail_extract_test::database_held_by_another_process_is_told()
{
    QCOMPARE(run(QStringLiteral("run ios --result held")).exit_code, 0);
    {
        QSqlDatabase holder = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("holder"));
        holder.setDatabaseName(path(QStringLiteral("held/Artifacts_Result/Mail/Mail.sqlite")));
        QVERIFY(holder.open() && QSqlQuery(holder).exec(QStringLiteral("BEGIN EXCLUSIVE")));
        const finished_program program = run(QStringLiteral("run ios --result held"));
        QCOMPARE(program.exit_code, 2);
        QVERIFY2(program.errors.contains(QLatin1String("database is locked")), qPrintable(program.errors));
    }
    QSqlDatabase::removeDatabase(QStringLiteral("holder"));
}

// An index that is no database fails its tab; the failures of an earlier run in the same log do not count again.
void mail_extract_test::failures_are_told()
{
    for (const char *index : {"Envelope Index", "Protected Index"}) {
        const QString index_path =
            path(QStringLiteral("broken/private/var/mobile/Library/Mail/") + QLatin1String(index));
        QVERIFY(write_file(index_path, "no database, although long enough to be one"));
    }
    const auto failure_count = [](const finished_program &program) {
        return program.output.split(QLatin1Char('\n')).filter(QStringLiteral("Failures in the log: "));
    };
    for (const char *arguments : {"--log plain.log", "--log cipher.log --encipher-log"}) {
        const QString whole = QStringLiteral("run broken --result failing ") + QLatin1String(arguments);
        const finished_program first = run(whole);
        QCOMPARE(first.exit_code, 1);
        QVERIFY2(first.output.contains(QLatin1String("FAILED")), qPrintable(first.output));
        QVERIFY2(has_line(first.output, QStringLiteral("Incomplete: messages")), qPrintable(first.output));
        QCOMPARE(failure_count(run(whole)), failure_count(first));
    }
}

void mail_extract_test::interrupt_keeps_the_rows()
{
    constexpr int many_messages = 40000; // far more than are read before the signal arrives
    evidence::ios_file_tree tree(path(QStringLiteral("large")));
    evidence::ios_message message;
    message.mailbox = tree.add_mailbox(QStringLiteral("imap://account/INBOX"));
    message.subject = tree.add_subject(QStringLiteral("Hello"));
    for (int i = 0; i < many_messages; ++i) {
        tree.add_message(message);
    }
    tree.finish();

    QProcess process;
    start_program(process, folder.path(), QStringLiteral("run large --result stopped --tabs messages"));
    QByteArray output;
    while (!output.contains("Reading")) {
        QVERIFY(process.waitForReadyRead(patience_milliseconds));
        output += process.readAllStandardOutput();
    }
    QTest::qWait(20); // into the rows
    QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
    const finished_program program = finish_program(process);
    QCOMPARE(program.exit_code, 130);
    QVERIFY2(program.output.contains(QLatin1String("Interrupted (the rows so far stay)")), qPrintable(program.output));

    const finished_program rows = run(QStringLiteral("show stopped messages --csv"));
    QCOMPARE(rows.exit_code, 0);
    QVERIFY(rows.output.count(QLatin1String("\r\n")) < many_messages);
    QVERIFY(!QFileInfo::exists(path(QStringLiteral("stopped/Artifacts_Result/Mail/tmp"))));
}

void mail_extract_test::help_fits_a_screen_data()
{
    QTest::addColumn<QString>("arguments");
    for (const char *arguments :
         {"--help", "run --help", "tabs --help", "show --help", "report --help", "decipher --help"}) {
        QTest::newRow(arguments) << QString::fromLatin1(arguments);
    }
}

void mail_extract_test::help_fits_a_screen()
{
    QFETCH(QString, arguments);
    const finished_program program = run(arguments);
    QCOMPARE(program.exit_code, 0);
    QVERIFY(program.output.contains(QLatin1String("Example:")));
    const QStringList lines = program.output.split(QLatin1Char('\n'));
    QVERIFY(lines.size() <= 25);
    for (const QString &line : lines) {
        QVERIFY2(line.size() <= 80, qPrintable(line));
    }
}

void mail_extract_test::manual_knows_all_options()
{
    const QString manual_path = QStringLiteral(SOURCE_FOLDER "/docs/mail-extract.1");
    QFile file(manual_path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll());
    for (const char *command : {"run", "tabs", "show", "report", "decipher"}) {
        QVERIFY2(manual.contains(QStringLiteral(".Ss mail-extract %1\n").arg(QLatin1String(command))), command);
        const QString help = run(QLatin1String(command) + QStringLiteral(" --help")).output;
        auto option =
            QRegularExpression(QStringLiteral("^  -(-[a-z-]+)"), QRegularExpression::MultilineOption).globalMatch(help);
        while (option.hasNext()) {
            const QString name = option.next().captured(1);
            QVERIFY2(manual.contains(QStringLiteral("\n.It Fl ") + name), qPrintable(name));
        }
    }
    const QString checker = QStandardPaths::findExecutable(QStringLiteral("mandoc"));
    if (checker.isEmpty()) {
        QSKIP("mandoc is not installed: scripts/setup mandoc");
    }
    QProcess lint;
    lint.start(checker, {QStringLiteral("-Tlint"), manual_path});
    const finished_program checked = finish_program(lint);
    QCOMPARE(checked.output + checked.errors, QString());
}

void mail_extract_test::tabs_are_listed()
{
    const finished_program program = run(QStringLiteral("tabs"));
    QCOMPARE(program.exit_code, 0);
    QStringList names;
    for (const QString &line : program.output.split(QLatin1Char('\n'))) {
        names += line.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
    }
    const QString expected =
        QStringLiteral("macOS: signature accounts vip_contacts rules smart_mailboxes preferences messages "
                       "all_attachments open_attachments  iOS_UID: contacts recents accounts vip_contacts preferences  "
                       "iOS_Uniform: accounts messages  winOS: appointments all_attachments messages contacts "
                       "call_history mail_data received_attachments_files mailconversation ");
    QCOMPARE(names.join(QLatin1Char(' ')), expected);
}

void mail_extract_test::show_lists_tables()
{
    for (const char *given : {"shown", "shown/Artifacts_Result", "shown/Artifacts_Result/Mail",
                              "shown/Artifacts_Result/Mail/Mail.sqlite"}) {
        const finished_program program = run(QStringLiteral("show %1 --csv").arg(QLatin1String(given)));
        QCOMPARE(program.exit_code, 0);
        QCOMPARE(program.output, QStringLiteral("table,rows,rows_by_source\r\n"
                                                "messages,3,\"Source1 1, Source2 2\"\r\n"
                                                "recents,0,\r\n"));
    }
}

void mail_extract_test::show_is_safe_to_read()
{
    const finished_program program = run(QStringLiteral("show shown messages"));
    QCOMPARE(program.exit_code, 0);
    for (const char *line : {"  subject           | a,\"b\"\\r", "                    | c",
                             "  message_date_sent | 1578307200 (2020-01-06 10:40:00 UTC)",
                             "  message_date_sent | 600000000.5 (1989-01-05 10:40:00 UTC)",
                             "  subject           | \\x1b[2J\\u202e", "3 of 3 rows of messages"}) {
        QVERIFY2(has_line(program.output, QString::fromLatin1(line)), qPrintable(program.output));
    }
    QVERIFY(!program.output.contains(QLatin1String("  cc"))); // NULL in every row
}

void mail_extract_test::show_is_exact_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QString>("output");

    QTest::newRow("csv") << QStringLiteral("--csv --limit 2")
                         << QStringLiteral(
                                "INT,subject,cc,message_date_sent,message_date_sent_utc,source_count_name\r\n"
                                "1,\"a,\"\"b\"\"\r\nc\",,1578307200,2020-01-06T10:40:00Z,Source1\r\n"
                                "2,\"\",,600000000.5,1989-01-05T10:40:00Z,Source2\r\n");
    QTest::newRow("jsonl")
        << QStringLiteral("--jsonl")
        << QStringLiteral(
               R"({"INT":1,"subject":"a,\"b\"\u000d\u000ac","cc":null,"message_date_sent":1578307200,"message_date_sent_utc":"2020-01-06T10:40:00Z","source_count_name":"Source1"}
{"INT":2,"subject":"","cc":null,"message_date_sent":600000000.5,"message_date_sent_utc":"1989-01-05T10:40:00Z","source_count_name":"Source2"}
{"INT":3,"subject":"\u001b[2J\u202e","cc":null,"message_date_sent":"Infinity","message_date_sent_utc":null,"source_count_name":"Source2"}
)");
}

void mail_extract_test::show_is_exact()
{
    QFETCH(QString, arguments);
    QFETCH(QString, output);
    const finished_program program = run(QStringLiteral("show shown messages ") + arguments);
    QCOMPARE(program.exit_code, 0);
    QCOMPARE(program.output, output);
}

void mail_extract_test::decipher_tells_damaged_records()
{
    const QByteArray separator = "<[{()}]>";
    const QByteArray first = "AwKTeNL03p+uxQP6jby948y9aprnoNPiqMQk/a+miw==";
    const QByteArray second = "AwJcyTYOPkZfQBcG";
    QByteArray damaged = second;
    damaged[8] = 'X';
    QVERIFY(write_file(path(QStringLiteral("log")),
                       first + separator + damaged + separator + second + separator + first.left(20)));
    const finished_program program = run(QStringLiteral("decipher log"));
    QCOMPARE(program.exit_code, 1);
    QCOMPARE(program.output, QStringLiteral("[t][TRAWL_BENCH]:-- Starts\n"
                                            "[record 2 does not decipher: it is damaged or cut off]\n"
                                            "Ends \u00e9\n"
                                            "[record 4 does not decipher: it is damaged or cut off]\n"));
}

QTEST_GUILESS_MAIN(mail_extract_test)
#include "mail_extract_test.moc"
