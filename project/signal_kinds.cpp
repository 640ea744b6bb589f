#include "project/signal_kinds.h"

#include <limits>

#include "project/signal.h"

namespace plc::project {
namespace {

constexpr double kLowest = std::numeric_limits<double>::lowest();
// Shorter times are below what a simulated PLC resolves.
constexpr double kShortestSeconds = 0.01;

constexpr SignalParameter kPeriod = {"period", true, 0.0, kShortestSeconds};
constexpr SignalParameter kInterval = {"interval", true, 0.0, kShortestSeconds};
constexpr SignalParameter kPhase = {"phase", false, 0.0, kLowest};
constexpr SignalParameter kSpread = {"spread", false, 0.0, kLowest};
constexpr SignalParameter kEnd = {nullptr, false, 0.0, 0.0};

constexpr SignalParameter required(const char* name)
{
    return {name, true, 0.0, kLowest};
}

constexpr SignalKind kSignalKinds[] = {
    {kConstantSignal, {kEnd}},
    {"ramp", {required("from"), required("to"), kPeriod, kPhase, kSpread, kEnd}},
    {"sine", {required("mean"), required("amplitude"), kPeriod, kPhase, kSpread, kEnd}},
    {"square",
     {{"low", false, 0.0, kLowest},
      {"high", false, 1.0, kLowest},
      {"duty", false, 0.5, 0.0},
      kPeriod,
      kPhase,
      kSpread,
      kEnd}},
    {"counter", {required("from"), required("to"), {"step", false, 1.0, 0.0}, kInterval, kEnd}},
    {"walk", {required("minimum"), required("maximum"), {"step", true, 0.0, 0.0}, kInterval, kEnd}},
    {"clock", {kInterval, kEnd}},
    {nullptr, {kEnd}}};

} // namespace

const SignalKind* findSignalKind(const QString& name)
{
    for (const SignalKind* kind = kSignalKinds; kind->name; ++kind) {
        if (name == QLatin1String(kind->name))
            return kind;
    }
    return nullptr;
}

QStringList signalKindNames()
{
    QStringList names;
    for (const SignalKind* kind = kSignalKinds; kind->name; ++kind)
        names.append(QString::fromLatin1(kind->name));
    return names;
}

double signalParameter(const Signal& signal, const char* name)
{
    const SignalKind* kind = findSignalKind(signal.kind);
    if (!kind)
        return 0.0;
    for (const SignalParameter* known = kind->parameters; known->name; ++known) {
        if (qstrcmp(known->name, name) == 0)
            return signal.parameters.value(QLatin1String(name)).toDouble(known->defaultValue);
    }
    return 0.0;
}

} // namespace plc::project
