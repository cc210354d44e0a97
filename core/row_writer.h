/// The one way a row gets into the result database: a statement prepared once, values bound, executed. Each value
/// stands beside the name of its column, and the writer checks once that names and order are those of the statement.
#pragma once

#include "core/operation_log.h"
#include "core/result_session.h"

#include <QString>

#include <vector>

class extractor_frame;

/// A null text is stored as NULL, an empty one as an empty text.
struct column_value
{
    const char *column;
    QString value;
};

using row_values = std::vector<column_value>;

/// Which rows the record count takes in. None: rows that serve another tab only.
enum class row_count
{
    inserted,
    attempted,
    none
};

class row_writer
{
public:
    /// In: an INSERT of the form "insert into table(a,b,…) values(0,?,…)", one value for each column. All arguments
    /// outlive the writer.
    row_writer(extractor_frame &frame, result_session &destination, const operation_log &log, const char *statement,
               const failure_text &texts, row_count counted = row_count::inserted);

    /// Inserts a row of the values for the statement's "?", in their order. Out: whether the row stands. A failure
    /// is logged with the texts.
    bool insert(const row_values &values);
    /// The id of the row inserted last.
    qint64 last_row_id() const { return destination.database().last_row_id(); }

private:
    bool prepare(const row_values &values);
    bool execute(const row_values &values);

    extractor_frame &frame;
    result_session &destination;
    const operation_log &log;
    const char *statement_text;
    const failure_text &texts;
    row_count counted;
    sqlite_statement statement;
    QString prepare_error; // kept, since a statement that failed once is not tried again
};
