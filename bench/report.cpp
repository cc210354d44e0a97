#include "bench/report.h"

#include <cstdio>

namespace bench {

namespace {

void print_contender(const measurement &result, const char *who, const contender &contender)
{
    std::printf("%-17s %9lld  %-8s %9.4f %11.0f %7.2f %9.1f  ", result.what->name, static_cast<long long>(result.size),
                who, contender.seconds, static_cast<double>(result.size) / contender.seconds,
                contender.seconds / result.floor.seconds, contender.peak_megabytes);
    for (const phase &phase : contender.phases) {
        std::printf(" %s %.4f", phase.name.toUtf8().constData(), phase.seconds);
    }
    std::printf("\n");
}

} // namespace

void print_header()
{
    std::printf("%-17s %9s  %-8s %9s %11s %7s %9s   %s\n", "work", "size", "who", "seconds", "items/s", "ratio",
                "peak MB", "seconds by phase");
}

void print(const measurement &result)
{
    print_contender(result, "floor", result.floor);
    print_contender(result, "plug-in", result.plugin);
    std::fflush(stdout);
}

void print_growth(const QVector<measurement> &results)
{
    for (int index = 1; index < results.size(); ++index) {
        const measurement &first = results.first();
        const measurement &later = results.at(index);
        std::printf("%-17s growth from %lld to %lld %s (x %.2f): floor x %.2f, plug-in x %.2f\n", first.what->name,
                    static_cast<long long>(first.size), static_cast<long long>(later.size), first.what->item,
                    static_cast<double>(later.size) / static_cast<double>(first.size),
                    later.floor.seconds / first.floor.seconds, later.plugin.seconds / first.plugin.seconds);
    }
}

} // namespace bench
