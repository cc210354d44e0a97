#include "trial/trials.h"

#include "evidence/files.h"
#include "evidence/sample_random.h"
#include "tests/support/tree_snapshot.h"
#include "trial/plugin_run.h"
#include "trial/result_rows.h"

#include <chrono>
#include <cstdio>
#include <thread>

namespace trial {

namespace {

using std::chrono::microseconds;
using std::chrono::steady_clock;

// Rows that a later tab completes: a run that was cancelled between has them as the first tab wrote them.
constexpr const char *completed_later = "signature";

QString finding_of(const workplace &place, plugin_run &plugin, const result_rows &whole, microseconds moment,
                   size_t *rows_so_far)
{
    std::thread canceller;
    plugin.run(place, false, [&] {
        canceller = std::thread([&plugin, moment] {
            std::this_thread::sleep_for(moment);
            plugin.cancel();
        });
    });
    canceller.join();
    QString finding = integrity_fault(place.database(), place.scratch());
    result_rows so_far = read_rows(place.database());
    *rows_so_far += count_of(so_far);
    so_far.erase(completed_later);
    const QString strange = missing_rows(so_far, whole);
    if (!strange.isEmpty()) {
        finding += QLatin1String("cancelled, it has rows that a whole run has not:\n") + strange;
    }

    plugin.run(place, true);
    const result_rows rows = read_rows(place.database());
    finding += missing_rows(whole, rows);
    const QString surplus = missing_rows(distinct(rows), whole);
    return finding + (surplus.isEmpty() ? QString() : QLatin1String("beyond a whole run:\n") + surplus);
}

} // namespace

int try_cancels(const trial_request &request)
{
    const workplace place;
    request.source_scheme->write(text_of(place.sample()), request.source_scheme->large_size);
    place.renew_source();
    plugin_run plugin(*request.source_scheme);
    const tree_snapshot before(text_of(place.source())); // rows hold access times, which it sets
    const steady_clock::time_point start = steady_clock::now();
    plugin.run(place, false);
    const auto duration = std::chrono::duration_cast<microseconds>(steady_clock::now() - start).count();
    const result_rows whole = read_rows(place.database());
    if (count_of(whole) == 0 || !before.changes().isEmpty()) {
        throw evidence::evidence_error(QStringLiteral("The extraction of the whole sample gives no rows."));
    }
    int findings = 0;
    size_t rows_so_far = 0;
    for (uint64_t seed = request.seed; seed < request.seed + static_cast<uint64_t>(request.count); ++seed) {
        place.remove_result();
        const tree_snapshot source(text_of(place.source()));
        evidence::sample_random random(seed);
        const microseconds moment(random.below(static_cast<uint64_t>(duration)));
        const QString finding = finding_of(place, plugin, whole, moment, &rows_so_far);
        findings += report("cancel", request, seed, QStringLiteral("  cancelled after %1 us\n").arg(moment.count()),
                           finding + source.changes());
    }
    std::printf("%s: %d of %d runs with findings; %.0f of 100 rows when they were cancelled\n",
                request.source_scheme->name, findings, request.count,
                100.0 * static_cast<double>(rows_so_far) / static_cast<double>(count_of(whole)) / request.count);
    return findings;
}

} // namespace trial
