/// Runs the plug-in as a host does, in a QApplication without a screen, from the library beside this program.
#pragma once

#include "bench/stopwatch.h"
#include "bench/works.h"

namespace bench {

/// Out: where the plug-in library is looked for.
QString plugin_path();

/// In: the root of the evidence, ending in a slash, and the result directory, ending in a slash. A library
/// that does not load throws evidence::evidence_error.
void run_plugin(const work &work, const QString &root, const QString &result_directory, stopwatch &watch);

/// Out: the result database of a run with that result directory.
QString plugin_database_path(const QString &result_directory);

} // namespace bench
