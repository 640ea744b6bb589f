#ifndef PLC_CLI_DIAGNOSE_COMMAND_H
#define PLC_CLI_DIAGNOSE_COMMAND_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QMap>
#include <QtCore/QTimer>

#include <memory>

#include "cli/command.h"
#include "cli/link_command.h"
#include "host/tcp/diagnosis.h"

namespace plc::cli {

extern const Command kDiagnoseCommand;

/// `plc diagnose`: goes step by step from the PLC's name to values, and explains the first step
/// that fails. Of the values that the project reads cyclically all are tried, and each that the PLC
/// refuses is told.
class DiagnoseCommand : public LinkCommand {
public:
    DiagnoseCommand(const LinkOptions& options, const CommandContext& context,
                    host::DriverClaim driver)
        : LinkCommand(options, context, std::move(driver)), m_options(options)
    {
    }

private:
    enum class Step { Name, Connection, Identification, FileRequest, Area, Label };

    bool prepare() override;
    void begin() override;
    void interrupted() override;
    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSent(const host::SentRequest& request) override;
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;

    bool findAreas();
    void lookUpName();
    void takeAddresses(const host::NameAddresses& found);
    void connectToPlc();
    void takeLoginReply(const host::SentRequest& request, const host::Answer& answer);
    /// Reads the next label, and the first variable of its area before it if that is still to do.
    void readNext();
    void readArea(int area);
    void readLabel(const host::DataPoint& point);
    void readCyclic();
    void takeCyclic(const host::DataPoint& point, const host::TransferOutcome& outcome);
    /// Reads a label; nothing is told any more when the command is at its end.
    void read(const host::DataPoint& point, const host::ReadSettled& settled);
    void skipArea(int area);
    /// Tries all other areas and explains then why `area` could not be read.
    void probeOthers(int area, const host::ExchangeFailure& failure);
    /// What became of the read that was settled with this outcome.
    host::ExchangeFailure readFailure(const host::TransferOutcome& outcome) const;

    bool isLoggingIn() const
    {
        return m_step == Step::Identification || m_step == Step::FileRequest;
    }
    host::Service loginService() const
    {
        return m_step == Step::Identification ? host::Service::Identification : host::Service::File;
    }
    void pass(const QString& text, Step next);
    /// Tells of a failure that the next steps do not depend on.
    void report(const host::Finding& finding);
    void fail(const host::Finding& finding);
    void printStep(bool hasPassed, const QString& text, const host::Finding* finding);

    const LinkOptions& m_options;
    std::unique_ptr<host::NameLookup> m_lookup;
    QTimer m_patience;                 ///< With name servers.
    QVector<host::DataPoint> m_labels; ///< To be read one by one.
    QVector<host::DataPoint> m_cyclic; ///< Further cyclic labels, read together.
    int m_openCyclic = 0;
    int m_refusedCyclic = 0;
    bool m_hasFailed = false;
    QMap<int, host::DataPoint> m_firstOfArea; ///< The variable at the lowest address of each area.
    QMap<int, host::DataPoint> m_others; ///< Those that are still to be tried beside a failed area.
    QVector<int> m_readableAreas;
    Step m_step = Step::Name;
    QElapsedTimer m_stepTime;
    /// Why the last request has no good reply.
    std::optional<host::ExchangeFailure> m_failure;
};

} // namespace plc::cli

#endif
