/// The runs of one work at one size.
#pragma once

#include "bench/child_run.h"
#include "bench/works.h"

namespace bench {

struct measurement_plan
{
    const work *what = nullptr;
    qint64 size = 0;
    qint64 emlx_count = -1; ///< mail files of the evidence; negative: as it has them
    int runs = 5;
    bool rows_in_wal = false; ///< the evidence's databases hold their rows in "-wal"
    QString folder;           ///< an existing one, ending in a slash; everything is written below it
};

/// Medians over the runs.
struct contender
{
    double seconds = 0;
    double peak_megabytes = 0;
    QVector<phase> phases;
};

struct measurement
{
    const work *what = nullptr;
    qint64 size = 0;
    contender floor;
    contender plugin;
};

/// Makes the evidence, then runs floor and plug-in in turn: a warm-up each, then the counted runs. A run that does not
/// give the rows due throws evidence::evidence_error, as everything that fails does.
measurement measure(const measurement_plan &plan);

/// Runs both once. Out: the first difference of their rows as a sentence, or an empty text.
QString check(const measurement_plan &plan);

} // namespace bench
