#include "host/row_printer.h"

#include "host/terminal.h"
#include "host/time_columns.h"
#include "host/value_text.h"

#include <algorithm>

namespace {

class csv_printer : public row_printer
{
public:
    explicit csv_printer(const QStringList &columns) : row_printer(columns)
    {
        row_values names;
        for (const QString &name : columns) {
            names.append(name);
        }
        csv_printer::print_row(names);
    }

    void print_row(const row_values &values) override
    {
        QString line;
        for (int i = 0; i < values.size(); ++i) {
            line += i > 0 ? QStringLiteral(",") : QString();
            line += field(values.at(i));
        }
        print(line + QStringLiteral("\r\n"));
    }

private:
    static QString field(const QVariant &value)
    {
        if (value.isNull()) {
            return QString();
        }
        QString text = value_text(value);
        if (stdout_is_terminal()) {
            text = escaped_for_terminal(text);
        }
        const bool needs_quotes = text.isEmpty() || std::any_of(text.begin(), text.end(), [](QChar character) {
                                      return character == QLatin1Char(',') || character == QLatin1Char('"') ||
                                             character == QLatin1Char('\r') || character == QLatin1Char('\n');
                                  });
        if (!needs_quotes) {
            return text;
        }
        text.replace(QLatin1Char('"'), QStringLiteral("\"\""));
        return QLatin1Char('"') + text + QLatin1Char('"');
    }
};

class json_lines_printer : public row_printer
{
public:
    using row_printer::row_printer;

    void print_row(const row_values &values) override
    {
        QString line;
        for (int i = 0; i < values.size(); ++i) {
            line += line.isEmpty() ? QLatin1Char('{') : QLatin1Char(',');
            line += json_text(column_names.at(i)) + QLatin1Char(':') + json_value(values.at(i));
        }
        print_line(line + QLatin1Char('}'));
    }
};

class record_printer : public row_printer
{
public:
    record_printer(const QString &table, const QStringList &columns, const QVector<int> &shown)
        : row_printer(columns), table_name(escaped_for_terminal(table)), shown_columns(shown)
    {
        for (const int column : shown) {
            name_width = std::max(name_width, columns.at(column).size());
        }
    }

    void print_row(const row_values &values) override
    {
        print_line(QStringLiteral("%1 row %2").arg(table_name, QString::number(++row_count)));
        for (const int column : shown_columns) {
            print_column(column_names.at(column), values.at(column));
        }
        print_line();
    }

private:
    // A text of several lines keeps them, each behind the bar, so that no line of it can pass for another column.
    void print_column(const QString &name, const QVariant &value) const
    {
        QString label = escaped_for_terminal(name);
        if (value.isNull()) {
            print_line(QStringLiteral("  %1 | (NULL)").arg(label.leftJustified(name_width)));
            return;
        }
        const QStringList lines = value_text(value).split(QLatin1Char('\n'));
        const QString date = is_time_column(name) ? utc_text(value) : QString();
        for (const QString &line : lines) {
            print_line(QStringLiteral("  ") + label.leftJustified(name_width) + QStringLiteral(" | ") +
                       escaped_for_terminal(line) + (date.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(date)));
            label.clear();
        }
    }

    const QString table_name;
    const QVector<int> shown_columns;
    int name_width = 0;
    qint64 row_count = 0;
};

} // namespace

std::unique_ptr<row_printer> make_csv_printer(const QStringList &columns)
{
    return std::make_unique<csv_printer>(columns);
}

std::unique_ptr<row_printer> make_json_lines_printer(const QStringList &columns)
{
    return std::make_unique<json_lines_printer>(columns);
}

std::unique_ptr<row_printer> make_record_printer(const QString &table, const QStringList &columns,
                                                 const QVector<int> &shown)
{
    return std::make_unique<record_printer>(table, columns, shown);
}
