#ifndef PLC_CLI_LINK_COMMAND_H
#define PLC_CLI_LINK_COMMAND_H

#include "cli/command_context.h"
#include "cli/console.h"
#include "cli/link_observer.h"
#include "cli/trace_printer.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "streams/signal_notifier.h"

namespace plc::cli {

/// A command that talks to the PLC: holds the runtime and the link and runs the event loop.
///
/// It is the last observer of its runtime. What others are to hear beside it is added in the
/// constructors; no class between this one and a command overrides what an observer hears.
class LinkCommand : protected host::RuntimeListener {
public:
    /// Runs the command to its end. Returns the exit code.
    int execute();

protected:
    /// `options` and `context` must outlive the command. `cycleTime` is that of the session.
    LinkCommand(const LinkOptions& options, const CommandContext& context, host::DriverClaim driver,
                int cycleTime = kUsualCycleTime);
    ~LinkCommand() override = default;

    const QStringList& arguments() const { return m_context.arguments; }
    const project::Project& project() const { return m_context.project; }
    host::Runtime& runtime() { return m_runtime; }
    host::TcpLink& link() { return m_link; }
    /// "HOST:PORT"
    QString peer() const;

    /// The data points that the arguments name; without arguments the project's cyclic ones.
    /// Returns nothing after complaining when one is wrong or there are none.
    QVector<host::DataPoint> findPoints() const;

    /// Has findPoints() read again and again, but for the stations that begin switched off. Returns
    /// false after complaining when there are none.
    bool readCyclically(const QVector<int>& stationsOff);

    /// Reads the arguments and queues what there is to do. Returns false after complaining about
    /// wrong usage, or about what else keeps the command from beginning.
    virtual bool prepare() = 0;
    /// For the latter: what the program ends with if preparing fails.
    void setPreparationCode(ExitCode code) { m_preparationCode = code; }
    /// All is prepared; calls startLink(), before which the link is not used.
    virtual void begin() { startLink(); }
    void startLink() { m_link.start(); }
    /// Has `observer` hear what the command hears, before it, until execute() is done.
    void addObserver(host::RuntimeListener* observer) { m_observers.add(observer); }
    /// The user wants an end.
    virtual void interrupted() = 0;
    /// Nothing can be shown any more; called from the event loop.
    virtual void outputLost() {}

    /// For commands that end with the link: says which PLC is away, why, and what to do.
    void complainOfLoss(host::LinkState state, const QString& reason, int retryDelay) const;

    /// Ends the event loop from its next turn on.
    void finish(ExitCode code);
    bool isFinished() const { return m_isFinished; }

private:
    int runEventLoop();
    bool startCapture();

    const LinkOptions& m_options;
    const CommandContext& m_context;
    TracePrinter m_trace;
    LinkObservers m_observers;
    capture::LinkCapture m_capture;
    host::Runtime m_runtime;
    host::TcpLink m_link;
    ExitCode m_preparationCode = kExitUsage;
    bool m_isFinished = false;
};

} // namespace plc::cli

#endif
