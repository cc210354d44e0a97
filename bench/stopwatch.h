/// The time of a run, piece by piece.
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <QVector>

namespace bench {

struct phase
{
    QString name;
    double seconds = 0;
};

class stopwatch
{
public:
    stopwatch() { timer.start(); }

    /// Names what was done since the lap before, or since the start.
    void lap(const char *name)
    {
        laps.append({QString::fromLatin1(name), static_cast<double>(timer.nsecsElapsed()) / 1e9});
        timer.start();
    }

    const QVector<phase> &phases() const { return laps; }

private:
    QElapsedTimer timer;
    QVector<phase> laps;
};

} // namespace bench
