/// The trials: each runs the extraction many times under one kind of misfortune and tells what must not have happened.
#pragma once

#include "trial/schemes.h"

#include <cstdint>

namespace trial {

struct trial_request
{
    const scheme *source_scheme = nullptr;
    int count = 0;
    uint64_t seed = 1; ///< of the first run; each further one has the next
};

/// Damaged evidence. Out: the number of runs with findings, which are printed with the command that repeats them; so
/// for all trials.
int try_mutations(const trial_request &request);
/// The process killed.
int try_kills(const trial_request &request);
/// Cancelled from another thread, in this process.
int try_cancels(const trial_request &request);
/// Disks that are full after some kilobytes, under the results or under the working copies. Says so and finds nothing
/// where the system lets this user mount nothing.
int try_full_disks(const trial_request &request);

/// Prints what a run of the trial has found. Out: 1 when that is something, else 0.
int report(const char *trial, const trial_request &request, uint64_t seed, const QString &circumstances,
           const QString &finding);

} // namespace trial
