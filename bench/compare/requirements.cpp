#include "requirements.h"

#include <cstdio>

namespace plc::bench {
namespace {

struct Requirement {
    Work work;
    int delay;
    double timesLibmodbus; ///< Values a second, at least.
};

constexpr Requirement kRequirements[] = {{Work::Block, 0, 1.5},     {Work::Block, 1, 3.5},
                                         {Work::Block, 10, 3.5},    {Work::Scattered, 1, 80},
                                         {Work::Scattered, 10, 80}, {Work::Writes, 1, 30},
                                         {Work::Writes, 10, 30}};

} // namespace

bool checkRequirements(const std::vector<Result>& results)
{
    bool good = true;
    for (const Requirement& requirement : kRequirements) {
        const Result* host = find(results, requirement.work, requirement.delay, Peer::Host);
        if (!host)
            continue;
        const double ratio = speedRatio(results, *host, Peer::Libmodbus);
        const bool isReached = ratio >= requirement.timesLibmodbus;
        std::printf("%s  (%c) %d ms: %.1f times libmodbus, at least %.1f\n",
                    isReached ? "reached" : "MISSED ", letterOf(requirement.work),
                    requirement.delay, ratio, requirement.timesLibmodbus);
        good = good && isReached;
    }
    return good;
}

} // namespace plc::bench
