/// A piece of work in a process of its own, so that its peak memory is its own.
#pragma once

#include "bench/stopwatch.h"

#include <QStringList>

namespace bench {

enum class role
{
    evidence,
    floor,
    plugin
};

struct child_job
{
    role who = role::floor;
    QString work;
    QString root;             ///< of the evidence, ending in a slash
    QString result_directory; ///< ending in a slash; floor and plug-in
    qint64 size = 0;          ///< evidence
    qint64 emlx_count = -1;   ///< evidence; negative: as it has it
    bool rows_in_wal = false; ///< evidence
};

struct child_report
{
    QVector<phase> phases;
    double peak_megabytes = 0;

    double seconds() const;
};

/// Out: the result database that a job of floor or plug-in fills.
QString result_database_path(const child_job &job);

/// Starts this program again with the job and waits for it. A child that fails has said why; evidence::evidence_error
/// is thrown then.
child_report run_in_child(const child_job &job);

/// Out: whether these are the arguments of a child.
bool is_child(const QStringList &arguments);

/// The child's side. Out: the exit code.
int run_child(const QStringList &arguments);

} // namespace bench
