#include "host/progress_display.h"

#include "host/terminal.h"

#include <algorithm>

progress_display::progress_display(const QString &source, int tabs)
    : source_text(escaped_for_terminal(source)), tab_total(tabs)
{
    timer.start();
    show();
}

void progress_display::slot_rows(qint64 records)
{
    rows_so_far = records;
    show();
}

void progress_display::slot_tabs(int tab_count)
{
    tabs_so_far = tab_count;
    show();
}

QString progress_display::line() const
{
    const qint64 milliseconds = timer.elapsed();
    const qint64 rate = milliseconds > 0 ? rows_so_far * 1000 / milliseconds : 0;
    const QString counts = QStringLiteral(": %1 of %2 tabs, %3 rows, %4 rows/s")
                               .arg(QString::number(tabs_so_far), QString::number(tab_total),
                                    QString::number(rows_so_far), QString::number(rate));
    const QString begin = QStringLiteral("Reading ");
    if (!stdout_is_terminal()) {
        return begin + source_text + counts;
    }
    // A line that wraps cannot be redrawn: the front of a long path gives way.
    const int room = std::max(terminal_width() - 1 - begin.size() - counts.size(), 4);
    const QString source =
        source_text.size() <= room ? source_text : QStringLiteral("...") + source_text.right(room - 3);
    return begin + source + counts;
}

void progress_display::show()
{
    const QString new_line = line();
    if (new_line == line_shown) {
        return;
    }
    if (stdout_is_terminal()) {
        print(QLatin1Char('\r') + new_line.leftJustified(line_shown.size()));
    } else {
        print_line(new_line);
    }
    line_shown = new_line;
    flush_output();
}

void progress_display::finish()
{
    if (stdout_is_terminal()) {
        print_line();
    }
}
