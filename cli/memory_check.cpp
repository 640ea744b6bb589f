#include "cli/memory_check.h"

#include "cli/console.h"
#include "cli/value_lines.h"
#include "project/memory_layout.h"
#include "project/project.h"

namespace plc::cli {
namespace {

constexpr int kMostOverlaps = 1000;

/// All variables of a project, with their labels.
struct PlacedVariables {
    QVector<project::Variable> variables;
    QStringList labels;
};

PlacedVariables variablesOf(const project::Project& project)
{
    PlacedVariables all;
    for (const project::ScopeDefinition& scope : project.scopes) {
        for (const project::Variable& variable : scope.variables) {
            all.variables.append(variable);
            all.labels.append(scope.name + QLatin1Char('.') + variable.name);
        }
    }
    return all;
}

QString overlapText(const PlacedVariables& all, const project::SharedMemory& shared, bool isWanted)
{
    return QStringLiteral("area %1: %2 and %3 share byte %4%5")
        .arg(all.variables[shared.first].area)
        .arg(all.labels[shared.first], all.labels[shared.second])
        .arg(shared.byte)
        .arg(isWanted ? QStringLiteral(", as an overlay") : QString());
}

QString overlapJson(const PlacedVariables& all, const project::SharedMemory& shared, bool isWanted)
{
    JsonLine line;
    line.add("found", QStringLiteral("overlap"));
    line.add("area", qint64(all.variables[shared.first].area));
    line.add("byte", shared.byte);
    line.add("first", all.labels[shared.first]);
    line.add("second", all.labels[shared.second]);
    line.addFlag("overlay", isWanted);
    return line.text();
}

QString gapText(const project::MemoryGap& gap)
{
    return QStringLiteral("area %1: %2 free from %3 to %4")
        .arg(gap.area)
        .arg(gap.end - gap.first == 1 ? QStringLiteral("1 byte")
                                      : QStringLiteral("%1 bytes").arg(gap.end - gap.first))
        .arg(gap.first)
        .arg(gap.end - 1);
}

QString gapJson(const project::MemoryGap& gap)
{
    JsonLine line;
    line.add("found", QStringLiteral("gap"));
    line.add("area", qint64(gap.area));
    line.add("first", gap.first);
    line.add("bytes", gap.end - gap.first);
    return line.text();
}

/// Returns how many overlaps nobody wants.
int printOverlaps(const PlacedVariables& all, bool json)
{
    const QVector<project::SharedMemory> overlaps =
        project::allSharedMemory(all.variables, kMostOverlaps);
    int unwanted = 0;
    for (const project::SharedMemory& shared : overlaps) {
        const bool isWanted =
            all.variables[shared.first].overlay || all.variables[shared.second].overlay;
        print(json ? overlapJson(all, shared, isWanted) : overlapText(all, shared, isWanted));
        unwanted += isWanted ? 0 : 1;
    }
    if (int(overlaps.size()) == kMostOverlaps)
        complain(QStringLiteral("there may be more than these %1 overlaps").arg(kMostOverlaps));
    return unwanted;
}

} // namespace

int checkMemory(const QString& projectFile, int smallestGap, bool json)
{
    const Expected<project::Project> project =
        project::loadProject(projectFile, project::SharedMemoryRule::Allowed);
    if (!project) {
        complain(project.error().text);
        return kExitUsage;
    }
    const PlacedVariables all = variablesOf(*project);
    const int unwanted = printOverlaps(all, json);
    for (const project::MemoryGap& gap :
         project::memoryGaps(all.variables, project->areas, smallestGap))
        print(json ? gapJson(gap) : gapText(gap));
    if (unwanted == 0)
        return kExitDone;
    complain(QStringLiteral("variables share memory at %1; move one of each two, or mark the one "
                            "that lies there on purpose with \"overlay\": true")
                 .arg(unwanted == 1 ? QStringLiteral("1 place")
                                    : QStringLiteral("%1 places").arg(unwanted)));
    return kExitRefused;
}

} // namespace plc::cli
