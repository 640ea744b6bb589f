#include "simulator/signals.h"

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>

#include <cmath>

#include "project/memory_layout.h"
#include "project/signal.h"
#include "project/signal_kinds.h"
#include "simulator/value_access.h"

namespace plc::simulator {
namespace {

constexpr qint64 kMillisecondsPerDay = qint64(24) * 60 * 60 * 1000;
constexpr double kTwoPi = 6.283185307179586;
/// Steps that a counter or walk makes up for after a pause; more would be seen by nobody.
constexpr qint64 kMostStepsAtOnce = 1000;

qint64 limited(qint64 count)
{
    return qMin(count, kMostSignalValues + 1);
}

qint64 countIn(const project::Variable& variable, const SignalCounts& counts)
{
    const qint64 each = variable.structure ? counts.value(variable.structure.get())
                                           : qint64(variable.signal ? 1 : 0);
    return each == 0 ? 0 : limited(each * project::elementCount(variable));
}

/// Structures may hold one another many times over: each is counted once.
SignalCounts countInStructures(const project::Project& project)
{
    SignalCounts counts;
    for (const auto& structure : project.structures) {
        qint64 count = 0;
        for (const project::Variable& member : structure->members)
            count = limited(count + countIn(member, counts));
        counts.insert(structure.get(), count);
    }
    return counts;
}

/// Part of the period that has passed, from 0 to 1.
double phaseAt(double periods)
{
    return periods - std::floor(periods);
}

/// Milliseconds since midnight in UTC, in steps of so many seconds.
double timeOfDay(double interval)
{
    const double now = double(QDateTime::currentMSecsSinceEpoch() % kMillisecondsPerDay);
    const double step = interval * 1000.0;
    return std::floor(now / step) * step;
}

/// `value` brought back into from..to as a counter runs over.
double wrapped(double value, double from, double to, double step)
{
    if (!(value > to) || step <= 0.0)
        return value;
    const double stepsInOneRound = std::floor((to - from) / step) + 1.0;
    return from + std::fmod(value - from, stepsInOneRound * step);
}

} // namespace

qint64 countSignalValues(const project::Project& project)
{
    const SignalCounts counts = countInStructures(project);
    qint64 count = 0;
    for (const project::ScopeDefinition& scope : project.scopes) {
        for (const project::Variable& variable : scope.variables)
            count = limited(count + countIn(variable, counts));
    }
    return count;
}

Signals::Parameters::Parameters(const project::Signal& signal)
    : kind(signal.kind == QLatin1String("ramp")      ? Kind::Ramp
           : signal.kind == QLatin1String("sine")    ? Kind::Sine
           : signal.kind == QLatin1String("square")  ? Kind::Square
           : signal.kind == QLatin1String("counter") ? Kind::Counter
           : signal.kind == QLatin1String("clock")   ? Kind::Clock
                                                     : Kind::Walk),
      from(project::signalParameter(signal, "from")),
      to(project::signalParameter(signal, "to")),
      mean(project::signalParameter(signal, "mean")),
      amplitude(project::signalParameter(signal, "amplitude")),
      low(project::signalParameter(signal, "low")),
      high(project::signalParameter(signal, "high")),
      duty(project::signalParameter(signal, "duty")),
      minimum(project::signalParameter(signal, "minimum")),
      maximum(project::signalParameter(signal, "maximum")),
      step(project::signalParameter(signal, "step")),
      period(project::signalParameter(signal, "period")),
      interval(project::signalParameter(signal, "interval")),
      phase(project::signalParameter(signal, "phase")),
      spread(project::signalParameter(signal, "spread"))
{
}

Signals::Signals(const project::Project& project, PlcMemory* memory, quint32 seed)
    : m_memory(memory), m_random(seed), m_structureCounts(countInStructures(project))
{
    for (const project::ScopeDefinition& scope : project.scopes) {
        for (const project::Variable& variable : scope.variables) {
            project::LabelTarget area;
            area.area = variable.area;
            m_ordinals.clear();
            addVariable(variable, area);
        }
    }
    for (LiveValue& value : m_values)
        storeStart(&value);
}

void Signals::addVariable(const project::Variable& variable, const project::LabelTarget& container)
{
    if (countIn(variable, m_structureCounts) == 0)
        return;
    project::LabelTarget place = container;
    place.variable = &variable;
    place.address += variable.offset;
    for (qint64 index = 0; index < project::elementCount(variable); ++index) {
        if (variable.structure) {
            for (const project::Variable& member : variable.structure->members)
                addVariable(member, place);
        } else {
            addElement(variable, place);
        }
        place.address += project::elementStride(variable);
    }
}

void Signals::addElement(const project::Variable& variable, const project::LabelTarget& place)
{
    const qint64 ordinal = m_ordinals[&variable]++;
    const project::Signal& signal = *variable.signal;
    if (signal.kind == QLatin1String(project::kConstantSignal)) {
        storeConstant(variable, place, ordinal);
        return;
    }
    const auto parameters = m_parameters.emplace(&variable, signal).first;
    m_values.push_back({&parameters->second, place,
                        parameters->second.phase + double(ordinal) * parameters->second.spread});
}

void Signals::storeConstant(const project::Variable& variable, const project::LabelTarget& place,
                            qint64 ordinal)
{
    QJsonValue value = variable.signal->parameters.value(QLatin1String("value"));
    if (value.isArray()) {
        const QJsonArray list = value.toArray();
        value = list.at(int(ordinal % list.size()));
    }
    if (value.isString())
        storeValue(m_memory, place, value.toString());
    else if (value.isBool())
        storeNumber(m_memory, place, value.toBool() ? 1.0 : 0.0);
    else
        storeNumber(m_memory, place, value.toDouble());
}

void Signals::storeStart(LiveValue* value)
{
    const Parameters& parameters = *value->parameters;
    if (parameters.kind == Kind::Counter) {
        storeNumber(m_memory, value->place, parameters.from);
    } else if (parameters.kind == Kind::Walk) {
        const double range = parameters.maximum - parameters.minimum;
        storeNumber(m_memory, value->place,
                    parameters.minimum + range * (randomFromMinusOneToOne() + 1.0) / 2.0);
    } else {
        moveTo(0.0, value);
    }
}

void Signals::advance(qint64 milliseconds)
{
    if (milliseconds <= m_now)
        return;
    m_now = milliseconds;
    for (LiveValue& value : m_values)
        moveTo(double(milliseconds) / 1000.0, &value);
}

void Signals::moveTo(double seconds, LiveValue* value)
{
    const Parameters& parameters = *value->parameters;
    if (parameters.kind == Kind::Counter || parameters.kind == Kind::Walk) {
        const qint64 steps = qint64(seconds / parameters.interval);
        step(*value, steps - value->steps);
        value->steps = steps;
        return;
    }
    if (parameters.kind == Kind::Clock) {
        storeNumber(m_memory, value->place, timeOfDay(parameters.interval));
        return;
    }
    const double phase = phaseAt(seconds / parameters.period + value->shift);
    double number = 0.0;
    if (parameters.kind == Kind::Ramp)
        number = parameters.from + (parameters.to - parameters.from) * phase;
    else if (parameters.kind == Kind::Sine)
        number = parameters.mean + parameters.amplitude * std::sin(kTwoPi * phase);
    else
        number = phase < parameters.duty ? parameters.high : parameters.low;
    storeNumber(m_memory, value->place, number);
}

void Signals::step(const LiveValue& value, qint64 count)
{
    if (count <= 0)
        return;
    const Parameters& parameters = *value.parameters;
    double number = loadNumber(*m_memory, value.place);
    if (parameters.kind == Kind::Counter) {
        number = wrapped(number + parameters.step * double(count), parameters.from, parameters.to,
                         parameters.step);
    } else {
        for (qint64 i = 0; i < qMin(count, kMostStepsAtOnce); ++i) {
            number =
                qBound(parameters.minimum, number + parameters.step * randomFromMinusOneToOne(),
                       parameters.maximum);
        }
    }
    storeNumber(m_memory, value.place, number);
}

double Signals::randomFromMinusOneToOne()
{
    return double(m_random()) / double(std::mt19937::max()) * 2.0 - 1.0;
}

} // namespace plc::simulator
