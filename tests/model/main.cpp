// test_model [--steps COUNT] [--seed NUMBER] [GoogleTest options]
//
//   --steps  steps over all seeds together; 20000 unless given
//   --seed   the seed to run instead of the usual ones

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "model/run_options.h"
#include "support/qt_differences.h"

namespace {

bool takeNumber(const char* option, const char* value, std::uint32_t& number)
{
    char* end = nullptr;
    const unsigned long parsed = value ? std::strtoul(value, &end, 10) : 0;
    if (!value || end == value || *end != '\0') {
        std::fprintf(stderr, "%s needs a number, for example: %s 1000000\n", option, option);
        return false;
    }
    number = std::uint32_t(parsed);
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    plc::model::RunOptions& options = plc::model::runOptions();
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const bool isSteps = std::strcmp(argv[i], "--steps") == 0;
        const bool isSeed = std::strcmp(argv[i], "--seed") == 0;
        std::uint32_t number = 0;
        if (!isSteps && !isSeed) {
            argv[kept++] = argv[i];
            continue;
        }
        const char* option = argv[i++];
        if (!takeNumber(option, i < argc ? argv[i] : nullptr, number))
            return EXIT_FAILURE;
        if (isSteps)
            options.steps = number;
        else
            options.seeds.assign(1, number);
    }
    argc = kept;
    argv[argc] = nullptr;
    // It warns of the odd number bases that broken symbol lists hold.
    plc::test::silenceQt();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
