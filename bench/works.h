/// The works that can be measured: for each its evidence, its floor and what the plug-in is asked to do.
#pragma once

#include "bench/stopwatch.h"
#include "evidence/sqlite_file.h"

#include <QString>

#include <array>

namespace bench {

struct work
{
    const char *name;
    const char *description;
    const char *item; ///< what is counted
    std::array<qint64, 2> default_sizes;

    void (*make_evidence)(const QString &root, qint64 size, evidence::sqlite_storage storage);

    const char *scheme; ///< what the plug-in is told
    const char *tab;

    /// Fills the table of the work in the database, which does not stand yet. In: the root, ending in a slash.
    void (*run_floor)(const QString &root, const QString &database_path, stopwatch &watch);

    const char *table;   ///< where the rows of both lie
    const char *columns; ///< those that both fill
    const char *key;     ///< tells the rows apart and orders them
};

/// Out: null when there is no such work.
const work *work_named(const QString &name);

/// Out: every work in the order of the table.
QVector<const work *> all_works();

/// What every run says about its source, so that the rows of floor and plug-in are the same.
constexpr int source_number = 1;
constexpr const char *source_count_name = "Source1";
constexpr const char *scheme_display = "Benchmark";

} // namespace bench
