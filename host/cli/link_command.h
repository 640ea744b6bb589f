#ifndef PLC_HOST_CLI_LINK_COMMAND_H
#define PLC_HOST_CLI_LINK_COMMAND_H

#include "host/cli/console.h"
#include "host/cli/options.h"
#include "host/cli/signal_notifier.h"
#include "host/cli/trace_printer.h"
#include "host/runtime.h"
#include "host/tcp_link.h"

namespace plc {

/// What all commands work with.
struct CommandContext {
    Options options;
    Project project;
    DriverFunctions driver;
};

/// A command that talks to the PLC: holds the runtime and the link and runs the event loop.
class LinkCommand : protected RuntimeListener {
public:
    /// Runs the command to its end. Returns the exit code.
    int execute();

protected:
    /// `context` must outlive the command.
    explicit LinkCommand(const CommandContext& context);
    ~LinkCommand() override = default;

    const Options& options() const { return m_context.options; }
    const Project& project() const { return m_context.project; }
    Runtime& runtime() { return m_runtime; }
    TcpLink& link() { return m_link; }
    /// "HOST:PORT"
    QString peer() const;

    /// The data points that the arguments name; without arguments the project's cyclic ones.
    /// Returns nothing after complaining when one is wrong or there are none.
    QVector<DataPoint> findPoints() const;

    /// Has findPoints() read again and again, but for the stations that begin switched off. Returns
    /// false after complaining when there are none.
    bool readCyclically();

    /// Reads the arguments and queues what there is to do. Returns false after complaining about
    /// wrong usage, or about what else keeps the command from beginning.
    virtual bool prepare() = 0;
    /// For the latter: what the program ends with if preparing fails.
    void setPreparationCode(ExitCode code) { m_preparationCode = code; }
    /// All is prepared: starts the link, which is not used before.
    virtual void begin() { m_link.start(); }
    /// The user wants an end.
    virtual void interrupted() = 0;
    /// Nothing can be shown any more; called from the event loop.
    virtual void outputLost() {}

    /// For commands that end with the link: says which PLC is away, why, and what to do.
    void complainOfLoss(LinkState state, const QString& reason, int retryDelay) const;

    /// Ends the event loop from its next turn on.
    void finish(ExitCode code);
    bool isFinished() const { return m_isFinished; }

    void requestSent(const SentRequest& request) override;
    void requestAnswered(const SentRequest& request, const Answer& answer,
                         const QByteArray& reply) override;
    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;

private:
    bool startCapture();

    const CommandContext& m_context;
    const TracePrinter m_trace;
    LinkCapture m_capture;
    Runtime m_runtime;
    TcpLink m_link;
    ExitCode m_preparationCode = kExitUsage;
    bool m_isFinished = false;
};

} // namespace plc

#endif
