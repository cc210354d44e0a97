#include "trial/trials.h"

#include "evidence/files.h"
#include "tests/support/tree_snapshot.h"
#include "trial/extraction_child.h"
#include "trial/leaning.h"
#include "trial/tree_damage.h"

#include <algorithm>
#include <cstdio>

namespace trial {

namespace {

constexpr int exit_unusable = 2;

// Out: whether the extraction may refuse the source: a backup that calls itself encrypted, a user without the folder by
// which a home is known.
bool may_refuse(const scheme &source_scheme, const tree_damage &damage)
{
    const QStringList users = users_of(source_scheme);
    return damage.damaged.count("Manifest.plist") > 0 || damage.damaged.count("Users") > 0 ||
           std::any_of(users.begin(), users.end(), [&](const QString &user) {
               const std::string home = "Users/" + user.toStdString();
               return damage.damaged.count(home) > 0 || damage.damaged.count(home + "/AppData") > 0;
           });
}

bool takes_permissions_alone(const tree_damage &damage)
{
    const QStringList lines = damage.description.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    return std::all_of(lines.begin(), lines.end(),
                       [](const QString &line) { return line.startsWith(QLatin1String("  permissions taken: ")); });
}

QString finding_of(const workplace &place, const trial_request &request, const result_rows &whole,
                   const tree_damage &damage)
{
    const tree_snapshot source(text_of(place.source()));
    const tree_snapshot outside(text_of(place.outside()));
    const child_outcome outcome = run_extraction(place, *request.source_scheme);
    QString finding = outcome.fault();
    if (finding.isEmpty() && outcome.exit_code == exit_unusable && may_refuse(*request.source_scheme, damage)) {
        return {};
    }
    if (finding.isEmpty() && outcome.exit_code != 0 && outcome.exit_code != 1) {
        finding = QStringLiteral("it ended with exit code %1").arg(outcome.exit_code);
    }
    if (!finding.isEmpty()) {
        return finding + QLatin1Char('\n') + QString::fromUtf8(outcome.output);
    }
    finding += source.changes();
    finding += outside.changes();
    finding += place.strangers();
    finding += integrity_fault(place.database(), place.scratch());
    const result_rows present = read_rows(place.database());
    if (outcome.exit_code == 0 && takes_permissions_alone(damage) && !missing_rows(whole, present).isEmpty()) {
        finding += QStringLiteral("it calls itself done, although what it was not allowed to read is missing\n");
    }
    return finding + missing_rows(rows_without(*request.source_scheme, whole, damage.damaged), present);
}

} // namespace

int try_mutations(const trial_request &request)
{
    const workplace place;
    request.source_scheme->write(text_of(place.sample()), request.source_scheme->small_size);
    place.renew_source();
    const tree_snapshot source(text_of(place.source()));
    if (run_extraction(place, *request.source_scheme).exit_code != 0 || !source.changes().isEmpty()) {
        throw evidence::evidence_error(QStringLiteral("The extraction of the whole sample fails."));
    }
    const result_rows whole = read_rows(place.database());
    int findings = 0;
    size_t compared = 0;
    for (uint64_t seed = request.seed; seed < request.seed + static_cast<uint64_t>(request.count); ++seed) {
        place.renew_source();
        place.remove_result();
        const tree_damage damage = damage_tree(place.source(), place.outside(), seed);
        compared += count_of(rows_without(*request.source_scheme, whole, damage.damaged));
        findings += report("mutate", request, seed, damage.description, finding_of(place, request, whole, damage));
    }
    std::printf("%s: %d of %d damaged trees with findings; %.0f of 100 rows were due in spite of the damage\n",
                request.source_scheme->name, findings, request.count,
                100.0 * static_cast<double>(compared) / static_cast<double>(count_of(whole)) / request.count);
    return findings;
}

} // namespace trial
