/// mail-trial: runs the extraction under every kind of misfortune and looks at what is left.
#include "evidence/files.h"
#include "trial/trials.h"

#include <QApplication>

#include <cstdio>
#include <limits>

namespace trial {

namespace {

constexpr int exit_done = 0;
constexpr int exit_findings = 1;
constexpr int exit_unusable = 2;

struct trial_kind
{
    const char *name;
    const char *description;
    int (*run)(const trial_request &request);
};

// clang-format off
constexpr trial_kind kinds[] = {
    {"mutate", "evidence that is damaged at random",              try_mutations},
    {"kill",   "the process killed at random moments",            try_kills},
    {"cancel", "cancelled at random moments, by another thread",  try_cancels},
    {"disk",   "disks that are full after some kilobytes",        try_full_disks},
};
// clang-format on

QString usage()
{
    QString text = QStringLiteral("Wanted: TRIAL SCHEME COUNT [SEED].\nTrials:");
    for (const trial_kind &kind : kinds) {
        text += QStringLiteral("\n  %1  %2").arg(QLatin1String(kind.name), -8).arg(QLatin1String(kind.description));
    }
    text += QStringLiteral("\nSchemes: all");
    for (const scheme &each : schemes()) {
        text += QLatin1String(", ") + QLatin1String(each.name);
    }
    return text;
}

const trial_kind &kind_of(const QString &name)
{
    for (const trial_kind &kind : kinds) {
        if (name == QLatin1String(kind.name)) {
            return kind;
        }
    }
    throw evidence::evidence_error(usage());
}

uint64_t number_of(const QString &text)
{
    bool is_number = false;
    const uint64_t number = text.toULongLong(&is_number);
    if (!is_number) {
        throw evidence::evidence_error(usage());
    }
    return number;
}

int run(const QStringList &arguments)
{
    if (arguments.size() < 4 || arguments.size() > 5) {
        throw evidence::evidence_error(usage());
    }
    const trial_kind &kind = kind_of(arguments.at(1));
    trial_request request;
    request.count = static_cast<int>(std::min<uint64_t>(number_of(arguments.at(3)), std::numeric_limits<int>::max()));
    request.seed = arguments.size() > 4 ? number_of(arguments.at(4)) : 1;
    const bool is_all = arguments.at(2) == QLatin1String("all");
    if (request.count == 0 || (!is_all && scheme_named(arguments.at(2)) == nullptr)) {
        throw evidence::evidence_error(usage());
    }
    int findings = 0;
    for (const scheme &each : schemes()) {
        if (is_all || arguments.at(2) == QLatin1String(each.name)) {
            request.source_scheme = &each;
            findings += kind.run(request);
            std::fflush(stdout);
        }
    }
    return findings > 0 ? exit_findings : exit_done;
}

} // namespace

int report(const char *trial, const trial_request &request, uint64_t seed, const QString &circumstances,
           const QString &finding)
{
    if (finding.isEmpty()) {
        return 0;
    }
    std::printf("FOUND by scripts/trial %s %s 1 %llu\n%s%s\n", trial, request.source_scheme->name,
                static_cast<unsigned long long>(seed), circumstances.toUtf8().constData(),
                finding.toUtf8().constData());
    std::fflush(stdout);
    return 1;
}

} // namespace trial

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "minimal"); // the plug-in object is a widget, and needs no fonts
    const QApplication application(argc, argv);
    try {
        return trial::run(QCoreApplication::arguments());
    } catch (const evidence::evidence_error &failure) {
        std::fprintf(stderr, "mail-trial: %s\n", failure.what());
        return trial::exit_unusable;
    }
}
