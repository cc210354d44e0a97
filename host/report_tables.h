/// The rows of the result tables as blocks of a report page.
#pragma once

#include "host/report_page.h"
#include "host/result_database.h"

#include <QJsonArray>

struct report_limits
{
    int rows_of_a_table = 100000;
    int characters_of_a_value = 4000;
    qint64 bytes_of_a_table = 200LL * 1024 * 1024; // what a browser still opens
};

/// Writes the tables that have rows, row by row, without columns that are empty throughout. Each table is blocks
/// "rows-N" of arrays of rows. A text past the limit is a pair: its beginning and its length. Integers that JavaScript
/// cannot hold, and reals, are texts. Out: the tables in the order of N, with name, rows, embedded rows, columns and
/// which of these hold times. Throws unusable_input where the database cannot be read.
QJsonArray write_report_tables(report_page &page, const result_database &database, const report_limits &limits);
