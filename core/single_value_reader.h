/// The rows of a statement value by value, for where one of them is larger than a value of a source may be: SQLite ends
/// the statement there, and all rows behind would be lost with it.
#pragma once

#include "core/operation_log.h"
#include "core/sqlite_database.h"

#include <QByteArrayList>
#include <QString>

#include <vector>

class single_value_reader
{
public:
    /// In: a statement of the form "select columns from tables [where conditions]", without commas in its columns, the
    /// conditions joined by AND; what names a row in it, such as "ROWID".
    single_value_reader(sqlite_database &database, const operation_log &log, const QByteArray &statement,
                        const QByteArray &row_id);

    /// In: the values for the statement's "?".
    void start(const std::vector<QString> &values);
    /// Steps to the next row, or past some more of them, in the order of the statement. What of the row is too large is
    /// logged.
    sqlite_statement::outcome next(qint64 rows_passed = 0);

    /// A value of the row in hand, by its position in the statement; null for one that is too large.
    QString text(int position) const;
    QByteArray bytes(int position) const;

private:
    struct column
    {
        QByteArray name;
        sqlite_statement statement;
        bool has_value = false;
    };

    bool is_whole() const;

    const operation_log &log;
    sqlite_statement rows;
    std::vector<column> columns;
    int bound_count = 0;
};
