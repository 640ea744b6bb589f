// test_faults [--runs COUNT] [--seed NUMBER] [GoogleTest options]
//
//   --runs  runs to make, each with a seed of its own from 1 on; 30 unless given
//   --seed  the only seed to run; with --runs the first one

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <QtCore/QCoreApplication>

#include "faults/run_options.h"

namespace {

bool takeNumber(const char* option, const char* value, std::uint32_t* number)
{
    char* end = nullptr;
    const unsigned long parsed = value ? std::strtoul(value, &end, 10) : 0;
    if (!value || end == value || *end != '\0') {
        std::fprintf(stderr, "%s needs a number, for example: %s 1000\n", option, option);
        return false;
    }
    *number = std::uint32_t(parsed);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    plc::faults::RunOptions& options = plc::faults::runOptions();
    options.program = argv[0];
    bool hasRuns = false;
    bool hasSeed = false;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const bool isRuns = std::strcmp(argv[i], "--runs") == 0;
        const bool isSeed = std::strcmp(argv[i], "--seed") == 0;
        if (!isRuns && !isSeed) {
            argv[kept++] = argv[i];
            continue;
        }
        const char* option = argv[i++];
        if (!takeNumber(option, i < argc ? argv[i] : nullptr,
                        isRuns ? &options.runs : &options.firstSeed))
            return EXIT_FAILURE;
        hasRuns = hasRuns || isRuns;
        hasSeed = hasSeed || isSeed;
    }
    argc = kept;
    argv[argc] = nullptr;
    if (hasSeed && !hasRuns)
        options.runs = 1;
    const QCoreApplication application(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
