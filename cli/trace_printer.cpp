#include "cli/trace_printer.h"

#include "cli/console.h"
#include "cli/time_text.h"
#include "host/report/frame_text.h"

namespace plc::cli {
namespace {

constexpr int kIndent = 13; ///< Of what stands below the time.

void printTrace(const QString& what)
{
    printError(wallClock() + QLatin1Char(' ') + what);
}

void printFrame(char direction, const QByteArray& frame, const QString& meaning)
{
    printTrace(QStringLiteral("%1 %2 bytes: %3")
                   .arg(QLatin1Char(direction))
                   .arg(frame.size())
                   .arg(host::hexText(frame)));
    printError(QString(kIndent, QLatin1Char(' ')) + meaning);
}

} // namespace

void TracePrinter::request(const host::SentRequest& request) const
{
    if (m_isOn)
        printFrame('>', request.frame, host::requestText(request));
}

void TracePrinter::reply(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) const
{
    if (m_isOn)
        printFrame('<', reply, host::replyText(request, reply, answer));
}

void TracePrinter::link(host::LinkState state, const QString& reason) const
{
    if (!m_isOn)
        return;
    switch (state) {
        case host::LinkState::Connecting:
            printTrace(QStringLiteral("- connecting"));
            break;
        case host::LinkState::Up:
            printTrace(QStringLiteral("- connected"));
            break;
        case host::LinkState::Down:
            printTrace(QStringLiteral("- closed: ") + reason);
            break;
    }
}

} // namespace plc::cli
