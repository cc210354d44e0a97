/// The works that can be measured: for each its evidence, its floor and what the plug-in is asked to do.
#pragma once

#include "bench/stopwatch.h"
#include "evidence/sqlite_file.h"

#include <QString>

#include <array>

namespace bench {

/// What the evidence of a run is to hold.
struct evidence_request
{
    QString root;
    qint64 size = 0;
    qint64 emlx_count = -1; ///< mail files; negative: as the evidence has it. Works without mail files ignore it.
    evidence::sqlite_storage storage = evidence::sqlite_storage::plain;
};

/// A table that floor and plug-in both fill.
struct compared_table
{
    const char *table;
    const char *columns; ///< those that both fill
    const char *key;     ///< tells the rows apart and orders them
};

struct work
{
    const char *name;
    const char *description;
    const char *item; ///< what is counted
    std::array<qint64, 2> default_sizes;

    void (*make_evidence)(const evidence_request &request);

    const char *scheme; ///< what the plug-in is told
    const char *tabs;   ///< with commas between them
    const char *user;   ///< of the source; null: none is named

    /// Fills the table of the work in the database, which does not stand yet. In: the root, ending in a slash.
    void (*run_floor)(const QString &root, const QString &database_path, stopwatch &watch);

    const char *table;   ///< where the rows of both lie
    bool is_row_an_item; ///< as many rows are due as items; else as many as the floor gives
    const char *columns; ///< as of a compared table
    const char *key;
    const std::array<compared_table, 4> *further_tables = nullptr; ///< of works that fill several; may end early
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
