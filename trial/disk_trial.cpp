#include "trial/trials.h"

#include "evidence/files.h"
#include "evidence/sample_random.h"
#include "tests/support/tree_snapshot.h"
#include "trial/extraction_child.h"
#include "trial/result_rows.h"

#include <cstdio>
#include <fstream>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace trial {

namespace {

namespace fs = std::filesystem;

constexpr uint64_t least_kilobytes = 8;
constexpr uint64_t most_kilobytes = 2000;
constexpr int exit_without_disk = 125;

// A name space of the calling process's own, in which it may mount and is who it was.
bool enter_name_space()
{
    const uid_t user = ::geteuid();
    const gid_t group = ::getegid();
    if (user == 0) {
        return ::unshare(CLONE_NEWNS) == 0;
    }
    if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
    std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
    return true;
}

// A file system of that size at the folder, which the calling process alone sees.
bool mount_small_disk(const fs::path &folder, uint64_t kilobytes)
{
    const std::string size = "size=" + std::to_string(kilobytes) + "k,mode=777";
    return enter_name_space() && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           ::mount("none", folder.c_str(), "tmpfs", 0, size.c_str()) == 0;
}

child_outcome run_on_small_disk(const workplace &place, const scheme &source_scheme, const fs::path &folder,
                                uint64_t kilobytes)
{
    fs::create_directories(folder);
    misfortune full_disk;
    full_disk.prepare = [&] {
        if (!mount_small_disk(folder, kilobytes)) {
            ::_exit(exit_without_disk);
        }
    };
    return run_extraction(place, source_scheme, {}, full_disk);
}

// The closing table is what tells of the rows: the disk is gone with the run.
QByteArray closing_table(const QByteArray &output)
{
    const int begin = output.indexOf("\n  Artifact ");
    return begin < 0 ? QByteArray() : output.mid(begin, output.indexOf("\n\n", begin) - begin);
}

// Out: the line that names the tables that may lack rows; empty when there is none.
QByteArray incomplete_line(const QByteArray &output)
{
    const int begin = output.indexOf("\nIncomplete: ");
    return begin < 0 ? QByteArray() : output.mid(begin + 1, output.indexOf('\n', begin + 1) - begin - 1);
}

// Out: the tables of the whole closing table that have other numbers of rows in this one, and are not named in the
// line.
QByteArrayList untold_tables(const QByteArray &table, const QByteArray &whole_table, const QByteArray &line)
{
    QByteArrayList untold;
    const QByteArrayList rows = table.split('\n');
    for (const QByteArray &whole_row : whole_table.split('\n')) {
        const QByteArray name = whole_row.simplified().split(' ').first();
        const bool is_told = name == "all" || line.contains("every table") ||
                             line.mid(line.indexOf(':') + 1).replace(',', ' ').simplified().split(' ').contains(name);
        if (!rows.contains(whole_row) && !is_told) {
            untold += name;
        }
    }
    return untold;
}

QString finding_of(const child_outcome &outcome, const QByteArray &whole_table)
{
    const QString fault = outcome.fault();
    QString finding = fault;
    if (fault.isEmpty() && outcome.exit_code == 0 && closing_table(outcome.output) != whole_table) {
        finding = QStringLiteral("it calls itself done, and has not all rows");
    } else if (fault.isEmpty() && outcome.exit_code == 1) {
        const QByteArrayList untold =
            untold_tables(closing_table(outcome.output), whole_table, incomplete_line(outcome.output));
        if (!untold.isEmpty()) {
            finding =
                QStringLiteral("it does not say that rows are missing in ") + QString::fromUtf8(untold.join(", "));
        }
    } else if (fault.isEmpty() && (outcome.exit_code < 0 || outcome.exit_code > 2)) {
        finding = QStringLiteral("it ended with exit code %1").arg(outcome.exit_code);
    }
    return finding.isEmpty() ? finding : finding + QLatin1Char('\n') + QString::fromUtf8(outcome.output);
}

} // namespace

int try_full_disks(const trial_request &request)
{
    const workplace place;
    request.source_scheme->write(text_of(place.sample()), request.source_scheme->large_size);
    place.renew_source();
    const child_outcome undisturbed = run_extraction(place, *request.source_scheme);
    const QByteArray whole_table = closing_table(undisturbed.output);
    if (undisturbed.exit_code != 0 || whole_table.isEmpty()) {
        throw evidence::evidence_error(QStringLiteral("The extraction of the whole sample fails."));
    }
    int findings = 0;
    int failures = 0;
    for (uint64_t seed = request.seed; seed < request.seed + static_cast<uint64_t>(request.count); ++seed) {
        place.remove_result();
        const tree_snapshot source(text_of(place.source()));
        evidence::sample_random random(seed);
        const bool is_under_copies = random.one_in(2);
        const uint64_t kilobytes = least_kilobytes + random.below(1 + random.below(most_kilobytes));
        const fs::path folder = is_under_copies ? place.database().parent_path() / "tmp" : place.result();
        const child_outcome outcome = run_on_small_disk(place, *request.source_scheme, folder, kilobytes);
        if (outcome.exit_code == exit_without_disk) {
            std::printf("disk: left out, for this user can mount nothing here\n");
            return findings;
        }
        failures += outcome.exit_code == 1 ? 1 : 0;
        const QString circumstances =
            QStringLiteral("  %1 KiB under the %2\n")
                .arg(QString::number(kilobytes), is_under_copies ? QLatin1String("copies") : QLatin1String("results"));
        findings += report("disk", request, seed, circumstances, finding_of(outcome, whole_table) + source.changes());
    }
    std::printf("%s: %d of %d runs with findings, %d ran out of disk\n", request.source_scheme->name, findings,
                request.count, failures);
    return findings;
}

} // namespace trial
