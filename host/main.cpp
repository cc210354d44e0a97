/// mail-extract: a host for the mail plug-in on the command line.

#include "host/command_decipher.h"
#include "host/command_line.h"
#include "host/command_report.h"
#include "host/command_run.h"
#include "host/command_show.h"
#include "host/command_tabs.h"
#include "host/terminal.h"

#include <QApplication>
#include <QString>
#include <QStringList>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <memory>

#include <langinfo.h>

namespace {

constexpr char general_help[] = R"(mail-extract reads the mail data of an evidence source with the mail plug-in
and keeps what it read as rows of a SQLite result database. The source is never
changed.

Usage: mail-extract COMMAND ...

  run SOURCE --result DIR   read a source
  tabs                      the kinds of sources and what can be read of each
  show DIR [TABLE]          the rows that runs have stored
  report DIR --html FILE    the same as a page to look at, search and print
  decipher LOG              an enciphered log as plain lines

mail-extract COMMAND --help tells more of a command, --version the version.

Example:
  mail-extract run /evidence/iphone --result /case
  mail-extract show /case messages

Exit codes: 0 done; 1 done, with failures in the log; 2 wrong use or unusable
input; 130 interrupted.
)";

constexpr char run_help[] = R"(Usage: mail-extract run SOURCE --result DIR [options]

Reads the folder SOURCE; the rows go to DIR/Artifacts_Result/Mail/Mail.sqlite.
  --scheme NAME        macOS, iOS_UID, iOS_Uniform or winOS (default: auto)
  --home               SOURCE is one home folder, as in .../Users/alice
  --user NAME[:DOMAIN] a user to read (macOS, winOS); may be repeated
                       (default: all home folders below SOURCE/Users)
  --tabs LIST          names with commas between (default: all), see "tabs"
  --source-number N    the number of the source in the case (default: 1)
  --clear              first remove older rows of the tabs, of all sources
  --attribute NAME     a further file attribute (macOS); may be repeated
  --log FILE           append the log to FILE (default: DIR/mail-extract.log,
                       which each run replaces)
  --encipher-log       encipher what is written to FILE
  --plugin FILE        the plug-in (default: libmail.so beside mail-extract)
Interrupt once to end the run in good order: the rows so far stay.

Example:
  mail-extract run /evidence/iphone --result /case --tabs messages
)";

constexpr char tabs_help[] = R"(Usage: mail-extract tabs

Lists the schemes (kinds of sources) and the tabs of each in the order of work.
A tab is one kind of artifact and bears the name of its result table.

Example:
  mail-extract tabs
)";

constexpr char show_help[] = R"(Usage: mail-extract show DIR [TABLE] [--limit N] [--csv | --jsonl]

DIR is the folder that was given to run as --result, or the database itself.
Without TABLE: the tables and how many rows they hold. With TABLE: its rows.
  --limit N   at most N rows (default: 20 for reading, else all)
  --csv       all columns as CSV (RFC 4180): NULL is empty, an empty text ""
  --jsonl     all columns as JSON, one object a line

For reading, columns without any value are left out, times have their date in
UTC beside them, and control characters are shown as escapes (\x1b). CSV and
JSON have a column NAME_utc behind each time (2020-01-06T10:40:00Z).

Example:
  mail-extract show /case messages --limit 5
  mail-extract show /case messages --csv > messages.csv
)";

constexpr char report_help[] = R"(Usage: mail-extract report DIR --html FILE [--limit N]

Writes one page for a browser: what was extracted from which source, rows per
artifact, pictures of messages over time and per mailbox, and the tables, to be
searched and sorted. The page needs no network and fetches nothing; text of the
evidence is shown in it, never run.
  --html FILE  the page; an older report of that name is replaced
  --limit N    at most N rows of each table (default: 100000); the page says
               where a table is cut. "show --csv" gives all rows.

DIR is the folder that was given to run as --result, or the database itself. A
view of the page is kept by its address:
  case.html#table=messages&q=invoice&sort=-message_date_sent

Example:
  mail-extract report /case --html case.html
)";

constexpr char decipher_help[] = R"(Usage: mail-extract decipher LOG

Prints a log that was written with --encipher-log as plain lines. A record that
does not decipher gives a line with its number; the exit code is then 1.

Example:
  mail-extract decipher /case/run.log > run.txt
)";

struct command_entry
{
    const char *name;
    const char *help;
    int (*run)(const QStringList &arguments);
    bool needs_plugin;
};

constexpr command_entry commands[] = {
    {"run", run_help, command_run, true},
    {"tabs", tabs_help, command_tabs, false},
    {"show", show_help, command_show, false},
    {"report", report_help, command_report, false},
    {"decipher", decipher_help, command_decipher, false},
};

// File names and log lines pass through the local encoding, which loses text where that is ASCII. No display is needed,
// although the plug-in object is a widget, and no fonts: who looks for them writes a cache into the home folder.
void prepare_environment()
{
    if (setlocale(LC_ALL, "") == nullptr || std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0) {
        setenv("LC_ALL", "C.UTF-8", 1);
        setlocale(LC_ALL, "");
    }
    setenv("QT_QPA_PLATFORM", "minimal", 1);
}

// Qt's warnings name no cause that our own sentences do not.
void drop_message(QtMsgType, const QMessageLogContext &, const QString &) {}

bool asks_for(const QStringList &arguments, const char *option, const char *short_option)
{
    const int end = arguments.indexOf(QStringLiteral("--"));
    const QStringList options = arguments.mid(0, end);
    return options.contains(QLatin1String(option)) || options.contains(QLatin1String(short_option));
}

const command_entry &find_command(const QString &name)
{
    for (const command_entry &command : commands) {
        if (name == QLatin1String(command.name)) {
            return command;
        }
    }
    const QString known =
        QStringLiteral("the commands are run, tabs, show, report and decipher (see mail-extract --help)");
    throw unusable_input{name.isEmpty() ? QStringLiteral("no command given: %1").arg(known)
                                        : QStringLiteral("there is no command \"%1\": %2").arg(name, known)};
}

// Where the session has no folder for sockets, Qt makes one among the temporary files at its start. Nothing here needs
// it, so that it finds no place for it.
std::unique_ptr<QCoreApplication> make_widget_application(int &argument_count, char **arguments)
{
    const QByteArray folder = qgetenv("TMPDIR");
    setenv("TMPDIR", "/dev/null", 1);
    auto application = std::make_unique<QApplication>(argument_count, arguments);
    folder.isNull() ? unsetenv("TMPDIR") : setenv("TMPDIR", folder.constData(), 1);
    return application;
}

int run_command(const command_entry &command, const QStringList &arguments, char *program_name)
{
    // Qt gets no arguments: it would take those that it knows out of ours.
    int argument_count = 1;
    char *only_argument[] = {program_name, nullptr};
    const std::unique_ptr<QCoreApplication> application =
        command.needs_plugin ? make_widget_application(argument_count, only_argument)
                             : std::make_unique<QCoreApplication>(argument_count, only_argument);
    const int code = command.run(arguments);
    if (output_failed() && code == exit_done) {
        throw unusable_input{QStringLiteral("the output could not be written in full")};
    }
    return code;
}

int dispatch(const QStringList &arguments, char *program_name)
{
    const QString first = arguments.value(0);
    if (asks_for({first}, "--version", "-v")) {
        print_line(QStringLiteral("mail-extract " MAIL_EXTRACT_VERSION));
        return exit_done;
    }
    if (asks_for({first}, "--help", "-h")) {
        print(QLatin1String(general_help));
        return exit_done;
    }
    const command_entry &command = find_command(first);
    const QStringList rest = arguments.mid(1);
    if (asks_for(rest, "--help", "-h")) {
        print(QLatin1String(command.help));
        return exit_done;
    }
    return run_command(command, rest, program_name);
}

} // namespace

int main(int argc, char *argv[])
{
    prepare_environment();
    qInstallMessageHandler(drop_message);
    QStringList arguments;
    for (int i = 1; i < argc; ++i) {
        arguments += QString::fromLocal8Bit(argv[i]);
    }
    try {
        return dispatch(arguments, argc > 0 ? argv[0] : nullptr);
    } catch (const unusable_input &wrong) {
        print_error(wrong.sentence);
        return exit_unusable;
    }
}
