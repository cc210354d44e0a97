// mail-extract as its users meet it: arguments in; exit code, output and files out.

#include "evidence/ios_file_tree.h"
#include "tests/host/samples.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>

#include <csignal>

namespace {

// Out: those of the lines that the output does not have.
QStringList missing_lines(const QString &output, QStringList lines)
{
    for (const QString &line : output.split(QLatin1Char('\n'))) {
        lines.removeAll(line);
    }
    return lines;
}

const QStringList none;

} // namespace

class mail_extract_test : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { make_samples(folder.path()); }

    void bad_input_is_refused_data()
    {
        text_columns("arguments", "told"); // what the sentence must name
        text_row("no command", "", "run, tabs, show, report and decipher");
        text_row("unknown command", "ruin ios", "\"ruin\"");
        text_row("unknown option", "run ios --result out --colour", "\"colour\"");
        text_row("option of Qt", "run ios --result out -platform x", "unknown option");
        text_row("no source argument", "run", "SOURCE");
        text_row("no result", "run ios", "--result DIR");
        text_row("missing value", "run ios --result", "--result");
        text_row("value twice", "run ios --result out --result out", "twice");
        text_row("too many arguments", "run ios out --result out", "\"out\"");
        text_row("missing source", "run none --result out", "\"none\"");
        text_row("source is a file", "run file --result out", "not a folder");
        text_row("source is nothing known", "run bare --result out", "--scheme macOS|iOS_UID");
        text_row("source is two things", "run two --result out", "macOS|iOS_Uniform");
        text_row("home without --home", "run mac/Users/alice --result out", "--home");
        text_row("home of no Users", "run alice --home --result out", "\"Users\"");
        text_row("home of the wrong scheme", "run ios --home --scheme iOS_Uniform --result out", "--home");
        text_row("unknown user", "run mac --user dave --result out", "alice, bob");
        text_row("user leads elsewhere", "run mac --user ../.. --result out", "NAME");
        text_row("unknown scheme", "run ios --scheme ios --result out", "iOS_Uniform");
        text_row("unknown tab", "run ios --tabs accounts,mails --result out", "accounts, messages");
        text_row("source number", "run ios --source-number 1a --result out", "\"1a\"");
        text_row("result is the source", "run ios --result ios", "inside the source");
        text_row("result in the source", "run ios --result ios/new/out", "inside the source");
        text_row("result in the source by link", "run ios --result link_to_ios/out", "inside the source");
        text_row("source by link", "run link_to_ios --result ios/out", "inside the source");
        text_row("result below a file", "run ios --result file/out", "is a file");
        text_row("result below a dangling link", "run ios --result dangling/out", "leads nowhere");
        text_row("result cannot be made", "run ios --result /proc/mail_extract/out", "/proc");
        text_row("no database in its place", "run ios --result taken", "not a SQLite database");
        text_row("result database in the source by link", "run ios --result linked", "inside the source");
        text_row("source among the working copies", "run holds/Artifacts_Result/Mail/tmp/mac --result holds",
                 "working copies");
        text_row("log in the source", "run ios --result out --log ios/log", "inside the source");
        text_row("log without a folder", "run ios --result out --log none/log", "none");
        text_row("log among the results", "run ios --result shown --log shown/Artifacts_Result/log",
                 "Artifacts_Result");
        text_row("cipher without log", "run ios --result out --encipher-log", "--log FILE");
        text_row("missing plug-in", "run ios --result out --plugin none.so", "\"none.so\"");
        text_row("plug-in does not load", "run ios --result out --plugin file", "does not load");
        text_row("no report", "report shown", "--html FILE");
        text_row("report of nothing", "report none --html new.html", "\"none\"");
        text_row("report over another file", "report shown --html file", "no report of mail-extract");
        text_row("report over the results", "report shown --html shown/Artifacts_Result/Mail/Mail.sqlite",
                 "no report of mail-extract");
        text_row("report over a folder", "report shown --html shown", "not a regular file");
        text_row("report over a link", "report shown --html link_to_file", "not a regular file");
        text_row("report without a folder", "report shown --html none/new.html", "none");
        text_row("show without a database", "show bare", "--result");
        text_row("show of an unknown table", "show shown mails", "messages, recents");
        text_row("show in two forms", "show shown messages --csv --jsonl", "one of them");
        text_row("show with a wrong limit", "show shown messages --limit ten", "\"ten\"");
        text_row("show of no database", "show file", "cannot be read");
        text_row("decipher nothing", "decipher none", "\"none\"");
        text_row("decipher no log", "decipher file", "no record");
    }

    void bad_input_is_refused()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, told);
        const QStringList before = state_of(folder.path());
        const finished_program program = run(arguments, 2);
        QCOMPARE(program.output, QString());
        QVERIFY2(program.errors.startsWith("mail-extract: "_s), qPrintable(program.errors));
        QCOMPARE(program.errors.count(QLatin1Char('\n')), 1);
        QVERIFY2(program.errors.contains(told), qPrintable(program.errors));
        QCOMPARE(state_of(folder.path()), before);
    }

    void permissions_are_told_data()
    {
        text_columns("closed", "exit_code", "told");
        text_row("result folder", "open", "2", "no permission to write results");
        text_row("result database", "open/Artifacts_Result/Mail/Mail.sqlite", "2", "no permission to read and write");
        text_row("log", "open/mail-extract.log", "2", "no permission to read and write the log");
        text_row("index", "ios/private/var/mobile/Library/Mail/Envelope Index", "1", "\nIncomplete: messages\n");
        text_row("accounts", "ios/private/var/mobile/Library/Accounts/Accounts3.sqlite", "1",
                 "\nIncomplete: accounts\n");
        text_row("mail files", "ios/private/var/mobile/Library/Mail/MessageData", "1", "\nIncomplete: messages\n");
        text_row("all of the mail", "ios/private/var/mobile/Library/Mail", "1", "\nIncomplete: possibly every table\n");
        text_row("one index of three", "volume/Users/jörg/Library/Mail/V9/MailData/Envelope Index", "1",
                 "\nIncomplete: all_attachments, messages\n");
        text_row("a home", "volume/Users/anna", "1", "\nIncomplete: possibly every table\n");
        text_row("all homes", "volume/Users", "1", "\nIncomplete: possibly every table\n");
    }

    void permissions_are_told()
    {
        QFETCH(QString, closed);
        QFETCH(QString, exit_code);
        QFETCH(QString, told);
        constexpr QFile::Permissions everything(0x7777);
        QVERIFY(QFile::setPermissions(folder.path(), everything) && QDir().mkpath(path("open"_s)));
        QVERIFY(QFile::setPermissions(path("open"_s), everything));
        const bool is_volume = closed.startsWith("volume"_s);
        const QString arguments =
            "run %1 --clear --result open"_s.arg(is_volume ? "volume --scheme macOS"_s : "ios --scheme iOS_Uniform"_s);
        const auto run_it = [&] { return run_program_without_privileges(folder.path(), arguments); };
        if (run_program_without_privileges(folder.path(), "--version"_s).exit_code != 0) {
            QSKIP("the program stands in a folder that is closed to other users");
        }
        const finished_program undisturbed = run_it();
        QVERIFY2(undisturbed.exit_code == 0, qPrintable(undisturbed.errors));

        const QFile::Permissions before = QFile::permissions(path(closed));
        QVERIFY(QFile::setPermissions(path(closed), QFile::Permissions()));
        const finished_program program = run_it();
        QVERIFY(QFile::setPermissions(path(closed), before));
        QCOMPARE(QString::number(program.exit_code), exit_code);
        const QString output = program.output + program.errors;
        QVERIFY2(output.contains(told), qPrintable(output));
        QVERIFY2(output.contains(QFileInfo(closed).fileName()), qPrintable(output));
    }

    void source_is_recognised_data()
    {
        text_columns("arguments", "scheme", "users"); // no users: none are told
        const auto add = [](const char *arguments, const char *scheme, const char *users) {
            text_row(arguments, arguments, scheme, users);
        };
        add("ios", "iOS_Uniform (iOS File System)", "");
        add("backup", "iOS_UID (iOS Backup)", "");
        // The folder "Shared" is no home, and the link beside it leads out of the source.
        add("mac", "macOS (macOS)", "alice, bob");
        add("mac --user alice", "macOS (macOS)", "alice");
        add("mac/Users/alice --home", "macOS (macOS)", "alice");
        add("windows", "winOS (Windows)", "carol");
        add("windows --user c:carol", "winOS (Windows)", "c:carol");
        add("two --scheme macOS", "macOS (macOS)", "a");
        add("bare --scheme winOS", "winOS (Windows)", "none found, name them with --user");
    }

    void source_is_recognised()
    {
        QFETCH(QString, arguments);
        QFETCH(QString, scheme);
        QFETCH(QString, users);
        const finished_program program = run("run %1 --result recognised"_s.arg(arguments));
        const QStringList told = program.output.split(QLatin1Char('\n'));
        QCOMPARE(told.filter("Scheme: "_s), QStringList{"Scheme: "_s + scheme});
        QCOMPARE(told.filter("Users: "_s), users.isEmpty() ? none : QStringList{"Users: "_s + users});
    }

    // Also not where a desktop would: a cache of fonts, a folder for sockets.
    void run_writes_results_alone()
    {
        const QString home = path("home"_s);
        const QString fonts =
            "<fontconfig><dir>/usr/share/fonts</dir><cachedir>%1/fonts</cachedir></fontconfig>"_s.arg(home);
        write_file(home + "/fonts.conf"_s, fonts.toUtf8());
        const QStringList before = state_of(home);
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.remove("XDG_RUNTIME_DIR"_s);
        environment.insert("FONTCONFIG_FILE"_s, home + "/fonts.conf"_s);
        for (const char *name : {"HOME", "TMPDIR", "XDG_CACHE_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"}) {
            environment.insert(QLatin1String(name), home);
        }
        process.setProcessEnvironment(environment);
        start_program(process, folder.path(), "run volume --result at_home"_s);
        QCOMPARE(finish_program(process).exit_code, 0);
        QCOMPARE(state_of(home), before);
    }

    void run_extracts_and_leaves_the_source_alone()
    {
        const QStringList source_before = state_of(path("ios"_s));
        const finished_program program = run("run ios --result case/new --source-number 7"_s);
        QCOMPARE(program.errors, QString());
        QCOMPARE(state_of(path("ios"_s)), source_before);

        QCOMPARE(missing_lines(program.output,
                               {"  messages         %1"_s.arg(sample_messages), "Failures in the log: none"_s}),
                 none);
        QVERIFY(program.output.contains(": messages (tab 2 of 2), 1 rows, "_s));
        for (const QChar character : program.output) {
            QVERIFY(character == QLatin1Char('\n') || character.isPrint());
        }
        QVERIFY(QFileInfo::exists(path("case/new/mail-extract.log"_s)));
        const QDir results(path("case/new/Artifacts_Result/Mail"_s));
        QCOMPARE(results.entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("Mail.sqlite"_s));

        const finished_program rows = run("show case/new messages --jsonl"_s);
        const QStringList lines = rows.output.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), sample_messages);
        for (const QString &line : lines) {
            const QJsonObject row = QJsonDocument::fromJson(line.toUtf8()).object();
            QCOMPARE(row.value("source_count_name"_s).toString(), "Source7"_s);
            QCOMPARE(row.value("os_scheme_display"_s).toString(), "iOS File System"_s);
        }
    }

    // Of 300 messages 210 and 30 lie in the two stores of anna and 60 in that of jörg.
    void run_extracts_every_user_of_a_volume()
    {
        const QStringList source_before = state_of(path("volume"_s));
        const finished_program volume = run("run volume --result case/volume"_s);
        QCOMPARE(volume.errors, QString());
        QCOMPARE(missing_lines(volume.output, {"Users: anna, jörg"_s, "  messages                 300"_s,
                                               "  open_attachments           7"_s}),
                 none);
        QVERIFY(volume.output.contains(": open_attachments (tab 9 of 9), "_s));

        const finished_program home = run("run volume/Users/jörg --home --tabs messages --result case/home"_s);
        QCOMPARE(missing_lines(home.output, {"Users: jörg"_s, "  messages          60"_s}), none);
        const finished_program tables = run("show case/home --csv"_s);
        QVERIFY2(tables.output.contains("emlx_list,5"_s), qPrintable(tables.output));
        QCOMPARE(state_of(path("volume"_s)), source_before);
    }

    // Attachments of Windows are not reported as finished, contacts of a backup not at all or up to twice.
    void progress_names_all_tabs_that_may_be_in_work()
    {
        const QString windows = run("run windows --result case/windows"_s).output;
        QVERIFY2(windows.contains(": all_attachments, messages (tabs 2-3 of 8), "_s), qPrintable(windows));
        const QString backup = run("run backup --result case/backup"_s).output;
        QVERIFY2(backup.contains(": contacts, recents (tabs 1-2 of 5), "_s), qPrintable(backup));
    }

    void run_continues_results_and_replaces_its_log()
    {
        const QString again = "run ios --result again --tabs messages"_s;
        const auto log_size = [this] { return QFileInfo(path("again/mail-extract.log"_s)).size(); };
        run(again);
        const qint64 size_of_one = log_size();

        const finished_program twice = run(again);
        QCOMPARE(missing_lines(twice.output, {"  messages         %1"_s.arg(2 * sample_messages)}), none);
        QVERIFY(twice.output.contains("%1 of these rows stood there before"_s.arg(sample_messages)));
        QVERIFY(!twice.output.contains("  accounts"_s));
        QCOMPARE(log_size(), size_of_one);

        const finished_program cleared = run(again + " --clear"_s);
        QCOMPARE(missing_lines(cleared.output, {"  messages         %1"_s.arg(sample_messages)}), none);
    }

    void database_held_by_another_process_is_told()
    {
        run("run ios --result held"_s);
        {
            QSqlDatabase holder = QSqlDatabase::addDatabase("QSQLITE"_s, "holder"_s);
            holder.setDatabaseName(path("held/Artifacts_Result/Mail/Mail.sqlite"_s));
            QVERIFY(holder.open() && QSqlQuery(holder).exec("BEGIN EXCLUSIVE"_s));
            const finished_program program = run("run ios --result held"_s, 2);
            QVERIFY2(program.errors.contains("database is locked"_s), qPrintable(program.errors));
        }
        QSqlDatabase::removeDatabase("holder"_s);
    }

    // An index that is no database fails its tab; the failures of an earlier run in the same log do not count again.
    void failures_are_told()
    {
        for (const QString &index : {"Envelope Index"_s, "Protected Index"_s}) {
            write_file(path("broken/private/var/mobile/Library/Mail/"_s + index),
                       "no database, although long enough to be one");
        }
        const auto failure_count = [](const finished_program &program) {
            return program.output.split(QLatin1Char('\n')).filter("Failures in the log: "_s);
        };
        for (const QString &arguments : {"--log plain.log"_s, "--log cipher.log --encipher-log"_s}) {
            const QString whole = "run broken --result failing "_s + arguments;
            const finished_program first = run(whole, 1);
            const QRegularExpression failure("FAILED.* (?i:error) :- file is not a database"_s);
            QVERIFY2(first.output.contains(failure), qPrintable(first.output));
            QCOMPARE(missing_lines(first.output, {"Incomplete: messages"_s}), none);
            QCOMPARE(failure_count(run(whole, 1)), failure_count(first));
        }
        QVERIFY(!QFileInfo::exists(path("failing/mail-extract.log"_s)));
        const finished_program log = run("decipher cipher.log"_s);
        QVERIFY(log.output.contains("[Artifacts Extraction][mail::pub_extract_artifacts]:-- START\n"_s));
        QVERIFY(log.output.endsWith(":-- END\n"_s));
    }

    void interrupt_keeps_the_rows()
    {
        constexpr int many_messages = 40000; // far more than are read before the signal arrives
        evidence::ios_file_tree tree(path("large"_s));
        for (int i = 0; i < many_messages; ++i) {
            tree.add_message({});
        }
        tree.finish();

        QProcess process;
        start_program(process, folder.path(), "run large --result stopped --tabs messages"_s);
        QByteArray output;
        while (!output.contains("Reading")) {
            QVERIFY(process.waitForReadyRead(patience_milliseconds));
            output += process.readAllStandardOutput();
        }
        QTest::qWait(20); // into the rows
        QCOMPARE(::kill(static_cast<pid_t>(process.processId()), SIGINT), 0);
        const finished_program program = finish_program(process);
        QCOMPARE(program.exit_code, 130);
        QVERIFY2(program.output.contains("Interrupted (the rows so far stay)"_s), qPrintable(program.output));

        const finished_program rows = run("show stopped messages --csv"_s);
        QVERIFY(rows.output.count("\r\n"_s) < many_messages);
        QVERIFY(!QFileInfo::exists(path("stopped/Artifacts_Result/Mail/tmp"_s)));
    }

    void help_fits_a_screen_and_the_manual_knows_its_options()
    {
        const QRegularExpression wide("^.{81,}$"_s, QRegularExpression::MultilineOption);
        const QRegularExpression option("^  -(-[a-z-]+)"_s, QRegularExpression::MultilineOption);
        const QString manual_path = SOURCE_FOLDER "/docs/mail-extract.1"_s;
        const QString manual = QString::fromUtf8(content_of(manual_path));
        for (const QString &command : {""_s, "run "_s, "tabs "_s, "show "_s, "report "_s, "decipher "_s}) {
            QVERIFY2(manual.contains(".Ss mail-extract "_s + command.trimmed()), qPrintable(command));
            const QString help = run(command + "--help"_s).output;
            QVERIFY(help.contains("Example:"_s));
            QVERIFY(help.count(QLatin1Char('\n')) < 25);
            QCOMPARE(wide.match(help).captured(), QString());
            for (auto options = option.globalMatch(help); options.hasNext();) {
                const QString name = options.next().captured(1);
                QVERIFY2(manual.contains("\n.It Fl "_s + name), qPrintable(name));
            }
        }
        const QString checker = QStandardPaths::findExecutable("mandoc"_s);
        if (checker.isEmpty()) {
            QSKIP("mandoc is not installed: scripts/setup mandoc");
        }
        QProcess lint;
        lint.start(checker, {"-Tlint"_s, manual_path});
        const finished_program checked = finish_program(lint);
        QCOMPARE(checked.output + checked.errors, QString());
    }

    void tabs_are_listed()
    {
        QStringList names;
        for (const QString &line : run("tabs"_s).output.split(QLatin1Char('\n'))) {
            names += line.section(QLatin1Char(' '), 0, 0, QString::SectionSkipEmpty);
        }
        QCOMPARE(names.join(QLatin1Char(' ')),
                 "macOS: signature accounts vip_contacts rules smart_mailboxes preferences messages "
                 "all_attachments open_attachments  iOS_UID: contacts recents accounts vip_contacts preferences  "
                 "iOS_Uniform: accounts messages  winOS: appointments all_attachments messages contacts "
                 "call_history mail_data received_attachments_files mailconversation "_s);
    }

    void show_lists_tables()
    {
        for (const char *given : {"shown", "shown/Artifacts_Result", "shown/Artifacts_Result/Mail",
                                  "shown/Artifacts_Result/Mail/Mail.sqlite"}) {
            const finished_program program = run("show %1 --csv"_s.arg(QLatin1String(given)));
            QCOMPARE(program.output, "table,rows,rows_by_source\r\n"
                                     "messages,3,\"Source1 1, Source2 2\"\r\n"
                                     "recents,0,\r\n"_s);
        }
    }

    void show_is_safe_to_read()
    {
        const finished_program program = run("show shown messages"_s);
        const QStringList lines{"  subject           | a,\"b\"\\r"_s,
                                "                    | c"_s,
                                "  message_date_sent | 1578307200 (2020-01-06 10:40:00 UTC)"_s,
                                "  message_date_sent | 600000000.5 (1989-01-05 10:40:00 UTC)"_s,
                                "  subject           | \\x1b[2J\\u202e"_s,
                                "3 of 3 rows of messages"_s};
        QCOMPARE(missing_lines(program.output, lines), none);
        QVERIFY(!program.output.contains("  cc"_s)); // NULL in every row
    }

    void show_is_exact()
    {
        QCOMPARE(run("show shown messages --csv --limit 2"_s).output,
                 "INT,subject,cc,message_date_sent,message_date_sent_utc,source_count_name\r\n"
                 "1,\"a,\"\"b\"\"\r\nc\",,1578307200,2020-01-06T10:40:00Z,Source1\r\n"
                 "2,\"\",,600000000.5,1989-01-05T10:40:00Z,Source2\r\n"_s);
        QCOMPARE(run("show shown messages --jsonl"_s).output.toUtf8(),
                 content_of(SOURCE_FOLDER "/tests/host/expected/shown.jsonl"_s));
    }

    void decipher_tells_damaged_records()
    {
        const QByteArray separator = "<[{()}]>";
        const QByteArray first = "AwKTeNL03p+uxQP6jby948y9aprnoNPiqMQk/a+miw==";
        const QByteArray second = "AwJcyTYOPkZfQBcG";
        QByteArray damaged = second;
        damaged[8] = 'X';
        write_file(path("log"_s), first + separator + damaged + separator + second + separator + first.left(20));
        const finished_program program = run("decipher log"_s, 1);
        QCOMPARE(program.output, "[t][TRAWL_BENCH]:-- Starts\n"
                                 "[record 2 does not decipher: it is damaged or cut off]\n"
                                 "Ends \u00e9\n"
                                 "[record 4 does not decipher: it is damaged or cut off]\n"_s);
    }

private:
    QString path(const QString &name) const { return folder.filePath(name); }
    finished_program run(const QString &arguments, int exit_code = 0) const
    {
        return run_program(folder.path(), arguments, exit_code);
    }

    QTemporaryDir folder;
};

QTEST_GUILESS_MAIN(mail_extract_test)
#include "mail_extract_test.moc"
