#include "host/progress_display.h"

#include "host/terminal.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr std::chrono::seconds redrawing_pause{1};
constexpr qint64 piped_pause = 10000; // milliseconds

// 0:07, 12:30, 1:02:03
QString duration_text(qint64 milliseconds)
{
    constexpr qint64 minute = 60;
    constexpr qint64 hour = 60 * minute;
    const qint64 seconds = milliseconds / 1000;
    const auto two_digits = [](qint64 number) { return QStringLiteral("%1").arg(number, 2, 10, QLatin1Char('0')); };
    return seconds < hour ? QStringLiteral("%1:%2").arg(QString::number(seconds / minute), two_digits(seconds % minute))
                          : QStringLiteral("%1:%2:%3")
                                .arg(QString::number(seconds / hour), two_digits(seconds % hour / minute),
                                     two_digits(seconds % minute));
}

} // namespace

progress_display::progress_display(const QString &source, const QStringList &works)
    : source_text(escaped_for_terminal(source)), steps(works)
{
    timer.start();
    show();
    if (stdout_is_terminal()) {
        redrawing = std::thread([this] { redraw_each_second(); });
    }
}

progress_display::~progress_display()
{
    stop_redrawing();
}

void progress_display::slot_rows(qint64 records)
{
    const std::lock_guard<std::mutex> lock(mutex);
    rows_so_far = records;
    show();
}

void progress_display::slot_tabs(int tab_count)
{
    const std::lock_guard<std::mutex> lock(mutex);
    tabs_so_far = tab_count;
    show();
}

void progress_display::redraw_each_second()
{
    std::unique_lock<std::mutex> lock(mutex);
    while (!end_wanted.wait_for(lock, redrawing_pause, [this] { return is_over; })) {
        show();
    }
}

void progress_display::stop_redrawing()
{
    {
        const std::lock_guard<std::mutex> lock(mutex);
        is_over = true;
    }
    end_wanted.notify_all();
    if (redrawing.joinable()) {
        redrawing.join();
    }
}

QString progress_display::work() const
{
    return tabs_so_far < steps.size() ? steps.at(tabs_so_far) : QStringLiteral("closing");
}

QString progress_display::line(bool is_last) const
{
    const qint64 milliseconds = timer.elapsed();
    const qint64 rate = milliseconds > 0 ? rows_so_far * 1000 / milliseconds : 0;
    const QString counts =
        is_last ? QStringLiteral(" in %1").arg(duration_text(milliseconds))
                : QStringLiteral(": %1, %2 rows, %3 rows/s, %4")
                      .arg(work(), QString::number(rows_so_far), QString::number(rate), duration_text(milliseconds));
    const QString begin = is_last ? QStringLiteral("Read ") : QStringLiteral("Reading ");
    if (!stdout_is_terminal()) {
        return begin + source_text + counts;
    }
    // A line that wraps cannot be redrawn: the front of a long path gives way, on a narrow terminal the last counts
    // too.
    const int width = terminal_width() - 1;
    const int room = std::max(width - begin.size() - counts.size(), 4);
    const QString source =
        source_text.size() <= room ? source_text : QStringLiteral("...") + source_text.right(room - 3);
    return (begin + source + counts).left(width);
}

void progress_display::show()
{
    const bool is_closing = tabs_so_far >= steps.size();
    const bool is_due = stdout_is_terminal() ||
                        (!is_closing && (tabs_so_far != tabs_shown || timer.elapsed() - shown_at >= piped_pause));
    if (is_due) {
        put(line(false));
    }
}

void progress_display::put(const QString &line)
{
    tabs_shown = tabs_so_far;
    shown_at = timer.elapsed();
    if (line == line_shown) {
        return;
    }
    if (stdout_is_terminal()) {
        print(QLatin1Char('\r') + line.leftJustified(line_shown.size()));
    } else {
        print_line(line);
    }
    line_shown = line;
    flush_output();
}

void progress_display::finish()
{
    stop_redrawing();
    put(line(true));
    if (stdout_is_terminal()) {
        print_line();
    }
}
