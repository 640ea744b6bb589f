#include <benchmark/benchmark.h>

#include <QtCore/QtGlobal>

#include <cstdlib>

#include "benchmarks.h"
#include "support/measure.h"

int main(int argc, char** argv)
{
    using namespace plc::bench;

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return EXIT_FAILURE;
    if (!baselineAgrees())
        return EXIT_FAILURE;

    registerValueBenchmarks();
    registerResolutionBenchmarks();
    registerCycleBenchmarks();
    registerRebuildBenchmarks();
    registerOneShotBenchmarks();
    registerImageMemoryBenchmarks();
    registerChosenInputBenchmarks();
    benchmark::AddCustomContext("qt_version", qVersion());
    benchmark::RunSpecifiedBenchmarks();
    Shared::drop();
    benchmark::Shutdown();
    return EXIT_SUCCESS;
}
