/// The rows of floor and plug-in beside each other.
#pragma once

#include "bench/works.h"

#include <QString>

namespace bench {

/// Compares type and text of every column of the work, row by row in the order of its key. Out: the first difference as
/// a sentence, or an empty text when there is none.
QString first_difference(const work &work, const QString &floor_database, const QString &plugin_database);

/// Out: how many rows the table of the work has.
qint64 row_count(const work &work, const QString &database);

} // namespace bench
