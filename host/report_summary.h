/// What a report says of a result database as a whole, counted over all of its rows.
#pragma once

#include "host/result_database.h"

#include <QJsonArray>
#include <QJsonObject>

/// Which rows came from where: objects with table, source, scheme, user, file and rows, the largest first within a
/// table and source. Of more than a hundred files of one source the others stand in one entry, which has "others" for
/// how many.
QJsonArray report_sources(const result_database &database);

/// Pictures of the tables that have rows and what they show: title, table, column, the rows "without" a value that can
/// be shown, and either "days", pairs of a day since 1970 and its rows, where "step" days count as one, or "values":
/// value, second value, rows, and the pairs of column and text that find just these rows. "others" and "other_rows" are
/// the values past the first fifteen.
QJsonArray report_pictures(const result_database &database);

/// The database itself: path, size, hash of its file.
QJsonObject report_database(const result_database &database);

/// The failures in the log that a run without a log of its own leaves beside the results: path, count, first lines and
/// the time of its last line, "end"; nothing but the path where no log stands there. "changed" is the last change of
/// the database, told where that log cannot be of the run that made it.
QJsonObject report_log(const result_database &database);
