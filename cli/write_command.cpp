#include "cli/write_command.h"

#include "cli/value_lines.h"
#include "host/points/value_codec.h"
#include "host/transfers/result_text.h"

namespace plc::cli {
namespace {

int write(const LinkOptions& options)
{
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return WriteCommand(options, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kWriteCommand = {
    "write",
    {"LABEL=VALUE...", 1, kAnyNumber, "at least one LABEL=VALUE", kCompleteLabel},
    "write these values and report what the PLC said to each",
    {kLabelNote, kValueNote, kDurationNote},
    makeOptions<LinkOptions>,
    execute<LinkOptions, write>};

bool WriteCommand::prepare()
{
    if (project().settings.readOnly) {
        complain(host::readOnlyText() + QStringLiteral("; nothing was sent"));
        return false;
    }
    for (const QString& text : arguments()) {
        const Expected<Assignment> assignment = parseAssignment(runtime().points(), text);
        if (!assignment) {
            complain(assignment.error().text);
            return false;
        }
        m_assignments.append(*assignment);
    }
    return true;
}

void WriteCommand::begin()
{
    m_open = int(m_assignments.size());
    for (const Assignment& assignment : std::as_const(m_assignments)) {
        runtime().write(assignment.point, assignment.values, link().now(),
                        [this, assignment](const host::TransferOutcome& outcome) {
                            settled(assignment, outcome);
                        });
    }
    LinkCommand::begin();
}

/// The end of the link settles what is still open.
void WriteCommand::interrupted()
{
    link().stop();
}

void WriteCommand::linkChanged(host::LinkState state, const QString& reason, int retryDelay)
{
    complainOfLoss(state, reason, retryDelay);
}

void WriteCommand::settled(const Assignment& assignment, const host::TransferOutcome& outcome)
{
    if (m_options.json) {
        JsonLine line;
        addWrite(assignment, outcome, &line);
        printOutcome(line.text());
    } else if (outcome.isDone()) {
        printOutcome(writeLine(assignment, outcome));
    } else {
        complain(writeLine(assignment, outcome));
    }
    m_allDone = m_allDone && outcome.isDone();
    if (--m_open == 0)
        finish(m_allDone ? kExitDone : kExitRefused);
}

} // namespace plc::cli
