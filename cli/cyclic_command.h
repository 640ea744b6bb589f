#ifndef PLC_CLI_CYCLIC_COMMAND_H
#define PLC_CLI_CYCLIC_COMMAND_H

#include <QtCore/QTimer>

#include <optional>

#include "cli/link_command.h"

namespace plc::cli {

/// A command that reads values again and again until its time is over or the user ends it.
class CyclicCommand : public LinkCommand {
protected:
    CyclicCommand(const CyclicOptions& options, const CommandContext& context,
                  host::DriverClaim driver)
        : LinkCommand(options, context, std::move(driver), options.cycleTime), m_options(options)
    {
        addObserver(&m_served);
    }

    bool prepare() override { return readCyclically(m_options.stationsOff); }
    void begin() final;
    /// What there is to do before the link is started.
    virtual void aboutToBegin() {}
    /// The second time it ends at once.
    void interrupted() override { m_end ? endNow() : end(kExitDone); }
    void outputLost() override { m_end ? endNow() : end(kExitRefused); }
    /// Ends as soon as nothing waits for an outcome any more. Closing the link settles what is
    /// under way.
    void end(ExitCode code);
    bool isEnding() const { return m_end.has_value(); }
    /// To be called when something was settled.
    void settled();
    virtual bool hasOpenTransfers() { return false; }
    /// Whether something that the user wanted was not done.
    virtual bool hasFailed() const { return false; }
    /// Called by end() before the link is closed, and behind it.
    virtual void aboutToEnd() = 0;
    virtual void ended() = 0;

private:
    /// Notes whether the PLC answered a request of ours with success.
    class ServedReads : public host::RuntimeListener {
    public:
        bool hasAny() const { return m_hasAny; }
        void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                             const QByteArray& reply) override;

    private:
        bool m_hasAny = false;
    };

    bool wasServed();
    void endNow();

    const CyclicOptions& m_options;
    QTimer m_duration;
    std::optional<ExitCode> m_end; ///< What to end with, once it is to end.
    bool m_isClosing = false;
    ServedReads m_served;
};

} // namespace plc::cli

#endif
