#include "cli/plan_command.h"

#include <QtCore/QElapsedTimer>

#include <optional>

#include "cli/command_context.h"
#include "cli/console.h"
#include "cli/point_text.h"
#include "cli/progress.h"
#include "cli/value_lines.h"
#include "host/report/scan_plan.h"
#include "options/readers.h"

namespace plc::cli {
namespace {

constexpr int kTimeDecimals = 3;
constexpr double kPercent = 100;
constexpr double kLongestRoundTrip = 60 * 1000; // ms
constexpr double kSlowestNetwork = 0.001;       // Mbit/s
constexpr double kFastestNetwork = 100000;      // Mbit/s

/// The project's cyclic values. Returns nothing after complaining when one is wrong or there are
/// none.
QVector<host::DataPoint> cyclicPoints(const CommandContext& context)
{
    const host::DataPointFinder finder = finderFor(context);
    QVector<host::DataPoint> points;
    for (const project::CyclicLabel& label : context.project.cyclic) {
        const Expected<host::DataPoint> point =
            finder.find(label.label, label.elements, label.station);
        if (!point) {
            complain(point.error().text);
            return {};
        }
        points.append(*point);
    }
    if (points.isEmpty())
        complain(QStringLiteral("the project has no cyclic labels; there is nothing to plan"));
    return points;
}

host::ScanPlan bestPlan(const host::NetworkModel& network, const host::ScanPlan& asItIs,
                        host::ScanPlanner* planner)
{
    QElapsedTimer clock;
    clock.start();
    std::optional<Progress> progress;
    return planner->best(network, asItIs, [&](int done, int total) {
        if (!progress)
            progress.emplace(QStringLiteral("planning"), QStringLiteral("settings"), total, 0);
        progress->advance(done, clock.elapsed());
    });
}

void printRow(const char* name, const QString& asItIs, const QString& best)
{
    print(QStringLiteral("%1%2%3").arg(QLatin1String(name), -24).arg(asItIs, 14).arg(best, 14));
}

template <typename TextOf>
void printRow(const char* name, const host::ScanPlan& asItIs, const host::ScanPlan& best,
              TextOf textOf)
{
    printRow(name, textOf(asItIs), textOf(best));
}

template <typename Number>
void printNumbers(const char* name, const host::ScanPlan& asItIs, const host::ScanPlan& best,
                  Number host::ScanPlan::*number)
{
    printRow(name, QString::number(asItIs.*number), QString::number(best.*number));
}

void printTable(const host::ScanPlan& asItIs, const host::ScanPlan& best,
                const host::NetworkModel& network)
{
    printRow("", QStringLiteral("project"), QStringLiteral("best"));
    printNumbers("maxReadBytes", asItIs, best, &host::ScanPlan::maxReadBytes);
    printNumbers("read entries", asItIs, best, &host::ScanPlan::entries);
    printNumbers("requests (round trips)", asItIs, best, &host::ScanPlan::requests);
    printNumbers("bytes sent", asItIs, best, &host::ScanPlan::bytesSent);
    printNumbers("bytes received", asItIs, best, &host::ScanPlan::bytesReceived);
    printRow("gap bytes", asItIs, best, [](const host::ScanPlan& plan) {
        return QStringLiteral("%1 %").arg(host::gapShare(plan) * kPercent, 0, 'f', 1);
    });
    printRow("time of a scan", asItIs, best, [&network](const host::ScanPlan& plan) {
        return QStringLiteral("%1 ms").arg(host::scanTime(plan, network), 0, 'f', kTimeDecimals);
    });
}

QString planJson(const char* kind, const host::ScanPlan& plan, const host::NetworkModel& network)
{
    JsonLine line;
    line.add("plan", QString::fromLatin1(kind));
    line.add("maxReadBytes", qint64(plan.maxReadBytes));
    line.add("entries", qint64(plan.entries));
    line.add("requests", qint64(plan.requests));
    line.add("bytesSent", plan.bytesSent);
    line.add("bytesReceived", plan.bytesReceived);
    line.add("memoryBytes", plan.memoryBytes);
    line.add("gapBytes", plan.gapBytes);
    line.add("scanTime", host::scanTime(plan, network), kTimeDecimals);
    return line.text();
}

int planScan(const PlanOptions& options, const CommandContext& context, host::DriverClaim driver)
{
    const QVector<host::DataPoint> points = cyclicPoints(context);
    if (points.isEmpty())
        return kExitUsage;
    const host::NetworkModel network{options.roundTrip, options.bandwidth};
    host::ScanPlanner planner(std::move(driver), context.runtimeSettings(), points);
    const host::ScanPlan asItIs = planner.plan(context.project.settings.maxReadBytes);
    const host::ScanPlan best = bestPlan(network, asItIs, &planner);
    if (options.json) {
        print(planJson("project", asItIs, network));
        print(planJson("best", best, network));
        return kExitDone;
    }
    print(QStringLiteral("%1: %2 cyclic values of %3 bytes; a round trip takes %4 ms at %5 Mbit/s")
              .arg(context.project.name)
              .arg(points.size())
              .arg(planner.valueBytes())
              .arg(network.roundTrip)
              .arg(network.bandwidth));
    printTable(asItIs, best, network);
    return kExitDone;
}

int plan(const PlanOptions& options)
{
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return planScan(options, context, std::move(driver));
    });
}

} // namespace

const Command kPlanCommand = {
    "plan",
    {"[PROJECT]", 0, 1, "at most one project file", options::kCompleteProject},
    "show what one scan of the project's cyclic labels takes, and the setting that makes it "
    "shortest",
    {kDurationNote},
    makeOptions<PlanOptions>,
    execute<PlanOptions, plan>};

options::Table PlanOptions::table()
{
    return options::Table{
               {"--rtt DURATION", "round-trip time to the PLC and back (1ms)",
                options::duration(&roundTrip, {options::kMillisecond, 0, kLongestRoundTrip}),
                options::kCompleteNothing,
                "Time of a round trip to the PLC and back, with the time that the PLC takes; 1ms "
                "if not given."},
               {"--mbit N", "speed of the network in Mbit/s (100)",
                options::number(&bandwidth, kSlowestNetwork, kFastestNetwork),
                options::kCompleteNothing, "Speed of the network in Mbit/s; 100 if not given."},
           } +
           ProjectOptions::table();
}

/// The argument is another way to name the project.
Expected<void> PlanOptions::check()
{
    if (!arguments.isEmpty())
        projectFile = arguments.takeFirst();
    return {};
}

} // namespace plc::cli
