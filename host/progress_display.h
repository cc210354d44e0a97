/// How far a run is, told on standard output as the plug-in reports it.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <mutex>
#include <thread>

/// On a terminal one line, redrawn in place and at least once a second, since a step without rows reports nothing. Else
/// a line for each tab and, within a tab, one every ten seconds at most, without control characters.
class progress_display : public QObject
{
    Q_OBJECT

public:
    /// In: what is being read, as shown; what is in work by the count of tabs reported as finished.
    progress_display(const QString &source, const QStringList &works);
    ~progress_display() override;

    /// Says in a last line what was read. Not how many rows: not every row that is stored is reported.
    void finish();

public Q_SLOTS:
    void slot_rows(qint64 records);
    void slot_tabs(int tab_count);

private:
    void redraw_each_second();
    void stop_redrawing();
    QString work() const;
    QString line(bool is_last) const;
    void show();
    void put(const QString &line);

    const QString source_text;
    const QStringList steps;
    QElapsedTimer timer;

    std::mutex mutex; // over all that follows
    std::condition_variable end_wanted;
    bool is_over = false;
    qint64 rows_so_far = 0;
    int tabs_so_far = 0;
    int tabs_shown = -1;
    qint64 shown_at = 0; // milliseconds after the start
    QString line_shown;

    std::thread redrawing; // on a terminal
};
