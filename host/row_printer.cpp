#include "host/row_printer.h"

#include "host/terminal.h"

#include <QDateTime>
#include <QLocale>

#include <algorithm>
#include <cmath>

namespace {

// Columns that hold seconds since 1970.
constexpr const char *time_columns[] = {"application_install_timestamp",
                                        "arrival_timestamp",
                                        "content_creation_date",
                                        "content_modification_date",
                                        "creation_date",
                                        "creation_timestamp",
                                        "date_added",
                                        "date_opened",
                                        "dateoflastsync",
                                        "emlx_file_date_created",
                                        "end_timestamp",
                                        "event_timestamp",
                                        "exp_time",
                                        "file_modification_date",
                                        "first_date",
                                        "fs_content_change_date",
                                        "fs_creation_date",
                                        "last_access_timestamp",
                                        "last_date",
                                        "last_mailed_timestamp",
                                        "last_used_date",
                                        "mailed_timestamp",
                                        "message_date_received",
                                        "message_date_sent",
                                        "message_last_view_date",
                                        "modification_date",
                                        "modification_timestamp",
                                        "recent_interaction_date",
                                        "start_timestamp",
                                        "timestamp"};

bool is_time_column(const QString &name)
{
    return std::any_of(std::begin(time_columns), std::end(time_columns),
                       [&](const char *column) { return name == QLatin1String(column); });
}

// All digits that the number has, and a point, so that a real stays one: 600000000.0, not 6e+08.
QString real_text(double number)
{
    constexpr double longest_written_out = 1e15;
    if (!std::isfinite(number)) {
        return number > 0 ? QStringLiteral("Infinity") : QStringLiteral("-Infinity");
    }
    const bool is_long = std::fabs(number) >= longest_written_out;
    const QString text = QString::number(number, is_long ? 'g' : 'f', QLocale::FloatingPointShortest);
    return is_long || text.contains(QLatin1Char('.')) ? text : text + QStringLiteral(".0");
}

QString value_text(const QVariant &value)
{
    switch (static_cast<QMetaType::Type>(value.type())) {
    case QMetaType::Double:
        return real_text(value.toDouble());
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    default:
        return value.toString();
    }
}

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

private:
    static QString json_value(const QVariant &value)
    {
        if (value.isNull()) {
            return QStringLiteral("null");
        }
        switch (static_cast<QMetaType::Type>(value.type())) {
        case QMetaType::Int:
        case QMetaType::LongLong:
            return value.toString();
        case QMetaType::Double:
            return std::isfinite(value.toDouble()) ? value_text(value) : json_text(value_text(value));
        default:
            return json_text(value_text(value));
        }
    }

    // What could harm a terminal is written as an escape, which means the same to every reader.
    static QString json_text(const QString &text)
    {
        QString quoted(QLatin1Char('"'));
        for (const QChar character : text) {
            if (character == QLatin1Char('"') || character == QLatin1Char('\\')) {
                quoted += QLatin1Char('\\');
                quoted += character;
            } else if (is_unsafe_for_terminal(character)) {
                quoted += QStringLiteral("\\u%1").arg(character.unicode(), 4, 16, QLatin1Char('0'));
            } else {
                quoted += character;
            }
        }
        return quoted + QLatin1Char('"');
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

QString utc_text(const QVariant &seconds)
{
    constexpr double first_second = -62135596800.0; // 0001-01-01
    constexpr double last_second = 253402300799.0;  // 9999-12-31
    bool is_number = false;
    const double number = seconds.toDouble(&is_number);
    if (!is_number || !(number >= first_second && number <= last_second)) {
        return QString();
    }
    return QLocale::c().toString(QDateTime::fromSecsSinceEpoch(static_cast<qint64>(std::floor(number)), Qt::UTC),
                                 QStringLiteral("yyyy-MM-dd HH:mm:ss 'UTC'"));
}

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
