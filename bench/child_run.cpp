#include "bench/child_run.h"

#include "bench/plugin_run.h"
#include "bench/works.h"
#include "evidence/files.h"

#include <QCoreApplication>

#include <array>
#include <csignal>
#include <cstdio>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace bench {

namespace {

const auto child_word = QStringLiteral("--child");
constexpr int argument_count = 9;
constexpr int report_descriptor = 3;
constexpr double kilobytes_per_megabyte = 1024;

QStringList arguments_of(const child_job &job)
{
    return {child_word,
            QString::number(static_cast<int>(job.who)),
            job.work,
            job.root,
            job.result_directory,
            QString::number(job.size),
            QString::number(job.emlx_count),
            QString::number(job.rows_in_wal ? 1 : 0)};
}

child_job job_of(const QStringList &arguments)
{
    child_job job;
    job.who = static_cast<role>(arguments.at(2).toInt());
    job.work = arguments.at(3);
    job.root = arguments.at(4);
    job.result_directory = arguments.at(5);
    job.size = arguments.at(6).toLongLong();
    job.emlx_count = arguments.at(7).toLongLong();
    job.rows_in_wal = arguments.at(8) == QLatin1String("1");
    return job;
}

/// The parent ignores the interrupt so that it lives to remove its folder; the child dies of it.
[[noreturn]] void become(const QStringList &arguments, int report_end)
{
    std::vector<QByteArray> texts{QCoreApplication::applicationFilePath().toUtf8()};
    texts.reserve(static_cast<size_t>(arguments.size()) + 1);
    for (const QString &argument : arguments) {
        texts.push_back(argument.toUtf8());
    }
    std::vector<char *> words;
    words.reserve(texts.size() + 1);
    for (QByteArray &text : texts) {
        words.push_back(text.data());
    }
    words.push_back(nullptr);
    std::signal(SIGINT, SIG_DFL);
    if (report_end != report_descriptor) {
        ::dup2(report_end, report_descriptor);
        ::close(report_end);
    }
    ::execv(words.front(), words.data());
    std::perror("mail-bench: starting itself");
    ::_exit(1);
}

QVector<phase> read_phases(int descriptor)
{
    QByteArray report;
    std::array<char, 512> buffer = {};
    ssize_t count = 0;
    while ((count = ::read(descriptor, buffer.data(), buffer.size())) > 0) {
        report.append(buffer.data(), static_cast<int>(count));
    }
    QVector<phase> phases;
    for (const QByteArray &line : report.split('\n')) {
        const QList<QByteArray> words = line.split(' ');
        if (words.size() == 2) {
            phases.append({QString::fromUtf8(words.first()), words.last().toDouble()});
        }
    }
    return phases;
}

void write_phases(const QVector<phase> &phases)
{
    for (const phase &each : phases) {
        ::dprintf(report_descriptor, "%s %.9f\n", each.name.toUtf8().constData(), each.seconds);
    }
}

void do_job(const child_job &job)
{
    const work &work = *work_named(job.work);
    stopwatch watch;
    switch (job.who) {
    case role::evidence:
        work.make_evidence({job.root, job.size, job.emlx_count,
                            job.rows_in_wal ? evidence::sqlite_storage::wal_only : evidence::sqlite_storage::plain});
        ::sync(); // the runs to come shall not wait for the evidence to reach the disk
        watch.lap("evidence");
        break;
    case role::floor:
        work.run_floor(job.root, result_database_path(job), watch);
        break;
    case role::plugin:
        run_plugin(work, job.root, job.result_directory, watch);
        break;
    }
    write_phases(watch.phases());
}

} // namespace

double child_report::seconds() const
{
    double sum = 0;
    for (const phase &each : phases) {
        sum += each.seconds;
    }
    return sum;
}

QString result_database_path(const child_job &job)
{
    return job.who == role::plugin ? plugin_database_path(job.result_directory)
                                   : job.result_directory + QLatin1String("floor.sqlite");
}

child_report run_in_child(const child_job &job)
{
    std::array<int, 2> ends = {};
    if (::pipe(ends.data()) != 0) {
        throw evidence::evidence_error(QStringLiteral("No pipe can be made."));
    }
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        become(arguments_of(job), ends[1]);
    }
    ::close(ends[1]);
    child_report report;
    report.phases = read_phases(ends[0]);
    ::close(ends[0]);
    int status = 0;
    rusage usage = {};
    if (child < 0 || ::wait4(child, &status, 0, &usage) != child || status != 0) {
        throw evidence::evidence_error(QStringLiteral("A run of the work %1 did not end well.").arg(job.work));
    }
    report.peak_megabytes = static_cast<double>(usage.ru_maxrss) / kilobytes_per_megabyte;
    return report;
}

bool is_child(const QStringList &arguments)
{
    return arguments.size() == argument_count && arguments.at(1) == child_word;
}

int run_child(const QStringList &arguments)
{
    try {
        do_job(job_of(arguments));
        return 0;
    } catch (const evidence::evidence_error &failure) {
        std::fprintf(stderr, "mail-bench: %s\n", failure.what());
        return 1;
    }
}

} // namespace bench
