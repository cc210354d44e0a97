#include "host/command_run.h"

#include "host/command_line.h"
#include "host/extraction.h"
#include "host/log_reader.h"
#include "host/operation_tables.h"
#include "host/plugin_library.h"
#include "host/result_database.h"
#include "host/run_request.h"
#include "host/terminal.h"
#include "host/unreadable_files.h"

#include <QFileInfo>

#include <algorithm>
#include <csignal>
#include <map>

namespace {

constexpr int failures_shown = 10;

using rows_by_tab = std::map<QString, qint64>;

// The rows that the source has in the tables of the selected tabs; none where there is no database yet.
rows_by_tab count_rows(const run_request &request)
{
    rows_by_tab rows;
    const QString path = result_database_path(request.places.result_directory);
    if (!QFileInfo::exists(path)) {
        return rows;
    }
    const result_database database(path);
    for (const QString &tab : request.tabs) {
        rows[tab] = database.rows_of_source(tab, request.source_number);
    }
    return rows;
}

qint64 total(const rows_by_tab &rows)
{
    qint64 sum = 0;
    for (const auto &tab : rows) {
        sum += tab.second;
    }
    return sum;
}

// A database that an ended run has left in disorder is no reason to stop: the plug-in opens it for writing, and so puts
// it in order.
qint64 count_rows_before(const run_request &request)
{
    try {
        return total(count_rows(request));
    } catch (const unusable_input &) {
        return 0;
    }
}

void print_opening(const run_request &request)
{
    const auto &source = request.source_info;
    print_line(QStringLiteral("Source %1: %2")
                   .arg(QString::number(request.source_number), escaped_for_terminal(request.source)));
    print_line(
        QStringLiteral("Scheme: %1 (%2)").arg(source.os_scheme_internal_QString, source.os_scheme_display_QString));
    QStringList users;
    for (const auto &account : source.system_account_QList) {
        users += account.domain_user.isEmpty() ? account.system_user
                                               : account.system_user + QLatin1Char(':') + account.domain_user;
    }
    if (request.scheme->has_home_folders) {
        print_line(QStringLiteral("Users: %1")
                       .arg(users.isEmpty() ? QStringLiteral("none found, name them with --user")
                                            : escaped_for_terminal(users.join(QStringLiteral(", ")))));
    }
    print_line(QStringLiteral("Tabs: %1").arg(request.tabs.join(QStringLiteral(", "))));
    flush_output();
}

void print_rows(const run_request &request, const rows_by_tab &rows)
{
    const QString heading = QStringLiteral("Artifact");
    const QString sum_label = QStringLiteral("all");
    int name_width = heading.size();
    for (const QString &tab : request.tabs) {
        name_width = std::max(name_width, tab.size());
    }
    const auto print_entry = [&](const QString &name, const QString &count) {
        print_line(QStringLiteral("  %1  %2").arg(name.leftJustified(name_width), count.rightJustified(10)));
    };
    print_line();
    print_entry(heading, QStringLiteral("Rows"));
    for (const QString &tab : request.tabs) {
        print_entry(tab, QString::number(rows.at(tab)));
    }
    print_entry(sum_label, QString::number(total(rows)));
    print_line();
}

void print_failures(const log_failures &failures, const QString &log_file)
{
    if (failures.count == 0) {
        print_line(QStringLiteral("Failures in the log: none"));
        return;
    }
    print_line(QStringLiteral("Failures in the log: %1").arg(failures.count));
    for (const QString &line : failures.first) {
        print_line(QStringLiteral("  ") + escaped_for_terminal(line));
    }
    if (failures.count > failures.told) {
        print_line(QStringLiteral("  and %1 more, see %2")
                       .arg(QString::number(failures.count - failures.told), escaped_for_terminal(log_file)));
    }
}

void print_unreadable(const QStringList &files)
{
    if (files.isEmpty()) {
        return;
    }
    print_line(QStringLiteral("Parts of the source that cannot be read: %1").arg(files.size()));
    for (const QString &file : files) { // they stand nowhere else
        print_line(QStringLiteral("  ") + escaped_for_terminal(file));
    }
}

// The tables that may lack rows, as the failures have it. What an unreadable file would have filled is not known.
void print_incomplete_tables(const log_failures &failures, bool has_unreadable_files)
{
    if (has_unreadable_files) {
        print_line(QStringLiteral("Incomplete: possibly every table"));
        return;
    }
    QStringList tables;
    for (const QString &operation : failures.operations) {
        const QStringList filled = tables_filled_by(operation);
        if (filled.isEmpty()) {
            print_line(QStringLiteral("Incomplete: possibly every table"));
            return;
        }
        tables += filled;
    }
    tables.removeDuplicates();
    tables.sort();
    if (!tables.isEmpty()) {
        print_line(QStringLiteral("Incomplete: %1").arg(tables.join(QLatin1String(", "))));
    }
}

log_failures failures_of(const run_request &request, qint64 log_begin)
{
    log_reader log(request.places.log_file,
                   request.encipher_log ? log_reader::form::enciphered : log_reader::form::plain, log_begin);
    return failures_in(log, failures_shown);
}

// Out: whether the rows could be counted.
bool print_result(const run_request &request, qint64 rows_before)
{
    try {
        const rows_by_tab rows = count_rows(request);
        if (rows.empty()) {
            print_line(QStringLiteral("\nNo result database was made."));
            return false;
        }
        print_rows(request, rows);
    } catch (const unusable_input &unreadable) {
        print_line(QLatin1Char('\n') + escaped_for_terminal(unreadable.sentence));
        return false;
    }
    if (rows_before > 0 && !request.clear_older_rows) {
        print_line(QStringLiteral("%1 of these rows stood there before this run, under the same source number "
                                  "(--clear removes older rows first)")
                       .arg(rows_before));
    }
    return true;
}

} // namespace

int command_run(const QStringList &arguments)
{
    listen_for_unreadable_files();
    const run_request request = checked_run_request(arguments);
    const qint64 rows_before = count_rows_before(request);
    const std::unique_ptr<mail> plugin = load_plugin(request.plugin_file);
    create_output_places(request.places);
    const qint64 log_begin = QFileInfo(request.places.log_file).size();

    std::signal(SIGPIPE, SIG_IGN); // whoever reads our output may leave; the run ends in good order all the same
    print_opening(request);
    const extraction_outcome outcome = extract(*plugin, request);

    const bool has_result = print_result(request, rows_before);
    const log_failures failures = failures_of(request, log_begin);
    print_failures(failures, request.places.log_file);
    print_unreadable(unreadable_files());
    print_incomplete_tables(failures, !unreadable_files().isEmpty());
    print_line(QStringLiteral("Result database: %1")
                   .arg(escaped_for_terminal(result_database_path(request.places.result_directory))));
    print_line(QStringLiteral("Log: %1").arg(escaped_for_terminal(request.places.log_file)));
    print_line(
        QStringLiteral("%1 after %2 s")
            .arg(outcome.interrupted ? QStringLiteral("Interrupted (the rows so far stay)") : QStringLiteral("Done"),
                 QString::number(outcome.seconds, 'f', 2)));
    if (outcome.interrupted) {
        return exit_interrupted;
    }
    const bool is_whole = failures.count == 0 && unreadable_files().isEmpty() && has_result;
    return is_whole ? exit_done : exit_done_with_failures;
}
