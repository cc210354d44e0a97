/// The forms in which rows leave the program.
#pragma once

#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVector>

#include <memory>

/// A row's values as SQLite holds them: integer, real, text, bytes or NULL.
using row_values = QVector<QVariant>;

class row_printer
{
public:
    explicit row_printer(QStringList columns) : column_names(std::move(columns)) {}
    virtual ~row_printer() = default;
    row_printer(const row_printer &) = delete;
    row_printer &operator=(const row_printer &) = delete;

    virtual void print_row(const row_values &values) = 0;

protected:
    const QStringList column_names;
};

/// RFC 4180 with a header. NULL is an empty field, an empty text a quoted one. On a terminal control characters are
/// shown as escapes.
std::unique_ptr<row_printer> make_csv_printer(const QStringList &columns);

/// One JSON object a line: integers and reals as numbers, NULL as null, bytes as text in hexadecimal. A real that JSON
/// cannot hold is the text "Infinity" or "-Infinity".
std::unique_ptr<row_printer> make_json_lines_printer(const QStringList &columns);

/// For reading: a block a row, a line a column, times with their date, control characters as escapes. Shows only the
/// columns of these indexes.
std::unique_ptr<row_printer> make_record_printer(const QString &table, const QStringList &columns,
                                                 const QVector<int> &shown);
