#include "bench/measurement.h"

#include "bench/row_comparison.h"
#include "evidence/files.h"

#include <QDir>

#include <algorithm>

namespace bench {

namespace {

QString evidence_root(const measurement_plan &plan)
{
    return plan.folder + QLatin1String("evidence/");
}

child_job job_for(const measurement_plan &plan, role who)
{
    child_job job;
    job.who = who;
    job.work = QLatin1String(plan.what->name);
    job.root = evidence_root(plan);
    job.result_directory = plan.folder + (who == role::plugin ? QLatin1String("plug-in/") : QLatin1String("floor/"));
    job.size = plan.size;
    job.emlx_count = plan.emlx_count;
    job.rows_in_wal = plan.rows_in_wal;
    return job;
}

void make_evidence(const measurement_plan &plan)
{
    QDir(evidence_root(plan)).removeRecursively();
    run_in_child(job_for(plan, role::evidence));
}

child_report run_once(const measurement_plan &plan, role who)
{
    const child_job job = job_for(plan, who);
    QDir(job.result_directory).removeRecursively();
    evidence::make_folder(job.result_directory);
    child_report report = run_in_child(job);
    const qint64 rows = row_count(*plan.what, result_database_path(job));
    const qint64 due = plan.what->is_row_an_item || who == role::floor
                           ? plan.size
                           : row_count(*plan.what, result_database_path(job_for(plan, role::floor)));
    if (rows != due && (plan.what->is_row_an_item || who == role::plugin)) {
        throw evidence::evidence_error(QStringLiteral("The %1 gave %2 rows where %3 were due.")
                                           .arg(who == role::floor ? QLatin1String("floor") : QLatin1String("plug-in"))
                                           .arg(rows)
                                           .arg(due));
    }
    return report;
}

double median(QVector<double> values)
{
    std::sort(values.begin(), values.end());
    const int middle = values.size() / 2;
    return values.size() % 2 == 1 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
}

template <typename number_function>
double median_of(const QVector<child_report> &reports, number_function number_of)
{
    QVector<double> values;
    for (const child_report &report : reports) {
        values.append(number_of(report));
    }
    return median(values);
}

contender medians(const QVector<child_report> &reports)
{
    contender result;
    result.seconds = median_of(reports, [](const child_report &report) { return report.seconds(); });
    result.peak_megabytes = median_of(reports, [](const child_report &report) { return report.peak_megabytes; });
    result.phases = reports.first().phases;
    for (int index = 0; index < result.phases.size(); ++index) {
        result.phases[index].seconds =
            median_of(reports, [index](const child_report &report) { return report.phases.at(index).seconds; });
    }
    return result;
}

} // namespace

measurement measure(const measurement_plan &plan)
{
    make_evidence(plan);
    run_once(plan, role::floor);
    run_once(plan, role::plugin);
    QVector<child_report> floor_reports;
    QVector<child_report> plugin_reports;
    for (int run = 0; run < plan.runs; ++run) {
        floor_reports.append(run_once(plan, role::floor));
        plugin_reports.append(run_once(plan, role::plugin));
    }
    return {plan.what, plan.size, medians(floor_reports), medians(plugin_reports)};
}

QString check(const measurement_plan &plan)
{
    make_evidence(plan);
    run_once(plan, role::floor);
    run_once(plan, role::plugin);
    return first_difference(*plan.what, result_database_path(job_for(plan, role::floor)),
                            result_database_path(job_for(plan, role::plugin)));
}

} // namespace bench
