#include "trial/trials.h"

#include "evidence/files.h"
#include "evidence/sample_random.h"
#include "tests/support/tree_snapshot.h"
#include "trial/extraction_child.h"
#include "trial/result_rows.h"

#include <cstdio>

namespace trial {

namespace {

using std::chrono::microseconds;

QString finding_of(const workplace &place, const scheme &source_scheme, const result_rows &whole, bool *was_killed,
                   microseconds moment)
{
    const child_outcome killed = run_extraction(place, source_scheme, {}, {moment, {}});
    *was_killed = killed.exit_code < 0;
    QString finding = integrity_fault(place.database(), place.scratch());
    const child_outcome second = run_extraction(place, source_scheme, {QStringLiteral("--clear")});
    if (second.exit_code != 0) {
        return finding + QStringLiteral("the second run ended with exit code %1, signal %2\n%3")
                             .arg(QString::number(second.exit_code), QString::number(second.signal),
                                  QString::fromUtf8(second.output));
    }
    const result_rows rows = read_rows(place.database());
    finding += missing_rows(whole, rows);
    const QString surplus = missing_rows(distinct(rows), whole);
    return finding + (surplus.isEmpty() ? QString() : QLatin1String("beyond a whole run:\n") + surplus);
}

} // namespace

int try_kills(const trial_request &request)
{
    const workplace place;
    request.source_scheme->write(text_of(place.sample()), request.source_scheme->large_size);
    place.renew_source();
    const tree_snapshot before(text_of(place.source())); // rows hold access times, which it sets
    const child_outcome undisturbed = run_extraction(place, *request.source_scheme);
    if (undisturbed.exit_code != 0 || !before.changes().isEmpty()) {
        throw evidence::evidence_error(QStringLiteral("The extraction of the whole sample fails."));
    }
    const result_rows whole = read_rows(place.database());
    int findings = 0;
    int kills = 0;
    for (uint64_t seed = request.seed; seed < request.seed + static_cast<uint64_t>(request.count); ++seed) {
        place.remove_result();
        const tree_snapshot source(text_of(place.source()));
        evidence::sample_random random(seed);
        const microseconds moment(random.below(static_cast<uint64_t>(undisturbed.duration.count())));
        bool was_killed = false;
        const QString finding = finding_of(place, *request.source_scheme, whole, &was_killed, moment);
        kills += was_killed ? 1 : 0;
        findings += report("kill", request, seed, QStringLiteral("  killed after %1 us\n").arg(moment.count()),
                           finding + source.changes());
    }
    std::printf("%s: %d of %d runs with findings, %d killed before their end\n", request.source_scheme->name, findings,
                request.count, kills);
    return findings;
}

} // namespace trial
