/// mail-extract in a process of its own, bounded in time and memory.
#pragma once

#include "trial/schemes.h"
#include "trial/workplace.h"

#include <QByteArray>
#include <QStringList>

#include <chrono>
#include <functional>
#include <optional>

namespace trial {

struct child_outcome
{
    int exit_code = -1; ///< -1: it was ended by a signal
    int signal = 0;
    bool timed_out = false;
    std::chrono::microseconds duration{0};
    QByteArray output; ///< of both streams

    /// Out: what must not happen whatever the evidence holds: a signal, a report of a sanitizer, no end in time; empty
    /// when nothing of it did.
    QString fault() const;
};

/// What befalls a run.
struct misfortune
{
    std::optional<std::chrono::microseconds> killed_after;
    std::function<void()> prepare; ///< called in the child before the extraction starts there
};

/// Runs the extraction of the workplace's source into its result folder. In: further arguments for it.
child_outcome run_extraction(const workplace &place, const scheme &source_scheme, const QStringList &arguments = {},
                             const misfortune &what = {});

} // namespace trial
