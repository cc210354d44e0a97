/// mail-bench: the plug-in's speed and memory against the least that any program must do for the same rows.
#include "bench/child_run.h"
#include "bench/measurement.h"
#include "bench/plugin_run.h"
#include "bench/report.h"
#include "bench/works.h"
#include "evidence/files.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include <algorithm>
#include <csignal>
#include <cstdio>

namespace {

using namespace bench;
using evidence::evidence_error;

constexpr int exit_done = 0;
constexpr int exit_different = 1;
constexpr int exit_unusable = 2;

struct bench_request
{
    QVector<const work *> works;
    QVector<qint64> sizes;  ///< empty: each work's own
    qint64 emlx_count = -1; ///< negative: as the evidence has it
    int runs = 0;
    bool is_check = false;
    bool rows_in_wal = false;
    QString folder;
};

QString description()
{
    QString text = QStringLiteral("Runs the plug-in as a host does and, in turn with it, the floor: the least that any "
                                  "program must do for the same rows.\n\nWorks:");
    for (const work *each : all_works()) {
        text += QStringLiteral("\n  %1  %2").arg(QLatin1String(each->name), QLatin1String(each->description));
    }
    return text + QStringLiteral("\n  all  every work at its own sizes");
}

void add_options(QCommandLineParser &parser)
{
    parser.setApplicationDescription(description());
    parser.addPositionalArgument(QStringLiteral("WORK"), QStringLiteral("what to measure"));
    parser.addOptions(
        {{QStringLiteral("size"), QStringLiteral("how many items; several sizes show the growth"), QStringLiteral("N")},
         {QStringLiteral("emlx"),
          QStringLiteral("how many mail files a mail store has, nearly one a message unless told"),
          QStringLiteral("N")},
         {QStringLiteral("runs"), QStringLiteral("counted runs each, 5 unless told"), QStringLiteral("N"),
          QStringLiteral("5")},
         {QStringLiteral("dir"), QStringLiteral("where the evidence and the results are written for the time being"),
          QStringLiteral("FOLDER"), QDir::tempPath()},
         {QStringLiteral("wal"), QStringLiteral("evidence of a running device: its rows stand in \"-wal\" files")},
         {QStringLiteral("check"), QStringLiteral("compare the rows of floor and plug-in instead of measuring")},
         {{QStringLiteral("h"), QStringLiteral("help")}, QStringLiteral("this text")}});
}

qint64 count_of(const QString &option, const QString &text)
{
    bool is_number = false;
    const qint64 number = text.toLongLong(&is_number);
    if (!is_number || number < 1) {
        throw evidence_error(QStringLiteral("--%1 wants a whole number above 0, not \"%2\".").arg(option, text));
    }
    return number;
}

QVector<const work *> works_of(const QStringList &words)
{
    if (words.size() != 1) {
        throw evidence_error(QStringLiteral("Wanted: mail-bench WORK; --help tells more."));
    }
    if (words.first() == QLatin1String("all")) {
        return all_works();
    }
    const work *chosen = work_named(words.first());
    if (chosen == nullptr) {
        throw evidence_error(QStringLiteral("There is no work named \"%1\"; --help lists them.").arg(words.first()));
    }
    return {chosen};
}

bench_request request_of(const QCommandLineParser &parser)
{
    bench_request request;
    request.works = works_of(parser.positionalArguments());
    for (const QString &size : parser.values(QStringLiteral("size"))) {
        request.sizes.append(count_of(QStringLiteral("size"), size));
    }
    std::sort(request.sizes.begin(), request.sizes.end());
    if (parser.isSet(QStringLiteral("emlx"))) {
        request.emlx_count = count_of(QStringLiteral("emlx"), parser.value(QStringLiteral("emlx")));
    }
    request.runs = static_cast<int>(count_of(QStringLiteral("runs"), parser.value(QStringLiteral("runs"))));
    request.is_check = parser.isSet(QStringLiteral("check"));
    request.rows_in_wal = parser.isSet(QStringLiteral("wal"));
    request.folder = QDir(parser.value(QStringLiteral("dir"))).absolutePath();
    if (!QFileInfo::exists(plugin_path())) {
        throw evidence_error(QStringLiteral("The plug-in is not there: %1.").arg(plugin_path()));
    }
    return request;
}

QVector<qint64> sizes_of(const work &work, const bench_request &request)
{
    if (!request.sizes.isEmpty()) {
        return request.sizes;
    }
    return {work.default_sizes.begin(), work.default_sizes.end()};
}

bool check_work(measurement_plan plan, const QVector<qint64> &sizes)
{
    for (const qint64 size : sizes) {
        plan.size = size;
        const QString difference = check(plan);
        std::printf("%s %lld: %s\n", plan.what->name, static_cast<long long>(size),
                    difference.isEmpty() ? "the rows are the same" : difference.toUtf8().constData());
        if (!difference.isEmpty()) {
            return false;
        }
    }
    return true;
}

void measure_work(measurement_plan plan, const QVector<qint64> &sizes)
{
    QVector<measurement> results;
    for (const qint64 size : sizes) {
        plan.size = size;
        results.append(measure(plan));
        print(results.last());
    }
    print_growth(results);
}

int run_request(const bench_request &request)
{
    const QTemporaryDir folder(request.folder + QLatin1String("/mail-bench-XXXXXX"));
    if (!folder.isValid()) {
        throw evidence_error(QStringLiteral("Nothing can be written below %1.").arg(request.folder));
    }
    if (!qEnvironmentVariableIsSet("XDG_RUNTIME_DIR")) {
        qputenv("XDG_RUNTIME_DIR", folder.path().toUtf8()); // or Qt complains in every run
    }
    measurement_plan plan;
    plan.runs = request.runs;
    plan.rows_in_wal = request.rows_in_wal;
    plan.emlx_count = request.emlx_count;
    plan.folder = folder.path() + QLatin1Char('/');
    if (!request.is_check) {
        print_header();
    }
    bool is_same = true;
    for (const work *each : request.works) {
        plan.what = each;
        if (request.is_check) {
            is_same = check_work(plan, sizes_of(*each, request)) && is_same;
        } else {
            measure_work(plan, sizes_of(*each, request));
        }
    }
    return is_same ? exit_done : exit_different;
}

int run_parent(const QStringList &arguments)
{
    try {
        QCommandLineParser parser;
        add_options(parser);
        if (!parser.parse(arguments)) {
            throw evidence_error(parser.errorText());
        }
        if (parser.isSet(QStringLiteral("help"))) {
            std::printf("%s\nExample: mail-bench ios-uniform --size 10000 --size 100000\n",
                        parser.helpText().toUtf8().constData());
            return exit_done;
        }
        std::signal(SIGINT, SIG_IGN); // the run under way dies of it, and this process removes the folder
        return run_request(request_of(parser));
    } catch (const evidence_error &failure) {
        std::fprintf(stderr, "mail-bench: %s\n", failure.what());
        return exit_unusable;
    }
}

} // namespace

int main(int argc, char *argv[])
{
    QStringList arguments;
    for (int index = 0; index < argc; ++index) {
        arguments.append(QString::fromUtf8(argv[index]));
    }
    if (is_child(arguments)) {
        return run_child(arguments);
    }
    const QCoreApplication application(argc, argv);
    return run_parent(arguments);
}
