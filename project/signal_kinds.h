#ifndef PLC_PROJECT_SIGNAL_KINDS_H
#define PLC_PROJECT_SIGNAL_KINDS_H

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc::project {

struct Signal; // project/signal.h

/// One numeric parameter of a signal kind.
struct SignalParameter {
    const char* name;
    bool required;
    double defaultValue; ///< Holds where it is not required.
    double minimum;
};

/// A kind of signal and its numeric parameters; the list ends with a parameter without a name.
struct SignalKind {
    const char* name;
    SignalParameter parameters[8];
};

/// The kind of that whose only parameter `value` is a number, a truth value, a text, or a list of
/// these.
constexpr const char* kConstantSignal = "constant";

/// The kind of this name, or null.
const SignalKind* findSignalKind(const QString& name);

QStringList signalKindNames();

/// The parameter as the project gives it, or its default.
double signalParameter(const Signal& signal, const char* name);

} // namespace plc::project

#endif
