/// How far a run is, told on standard output as the plug-in reports it.
#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QString>

/// On a terminal one line, redrawn in place; else a line for each change, without control characters.
class progress_display : public QObject
{
    Q_OBJECT

public:
    /// In: what is being read, as shown; how many tabs will be reported as finished.
    progress_display(const QString &source, int tabs);

    /// Ends the redrawn line.
    void finish();

public Q_SLOTS:
    void slot_rows(qint64 records);
    void slot_tabs(int tab_count);

private:
    QString line() const;
    void show();

    const QString source_text;
    const int tab_total;
    qint64 rows_so_far = 0;
    int tabs_so_far = 0;
    QElapsedTimer timer;
    QString line_shown;
};
