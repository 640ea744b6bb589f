#include "host/cli/trace_printer.h"

#include "host/cli/console.h"
#include "host/cli/time_text.h"
#include "host/frame_text.h"

namespace plc {
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
                   .arg(hexText(frame)));
    printError(QString(kIndent, QLatin1Char(' ')) + meaning);
}

} // namespace

void TracePrinter::request(const SentRequest& request) const
{
    if (m_isOn)
        printFrame('>', request.frame, requestText(request));
}

void TracePrinter::reply(const SentRequest& request, const Answer& answer,
                         const QByteArray& reply) const
{
    if (m_isOn)
        printFrame('<', reply, replyText(request, reply, answer));
}

void TracePrinter::link(LinkState state, const QString& reason) const
{
    if (!m_isOn)
        return;
    switch (state) {
        case LinkState::Connecting:
            printTrace(QStringLiteral("- connecting"));
            break;
        case LinkState::Up:
            printTrace(QStringLiteral("- connected"));
            break;
        case LinkState::Down:
            printTrace(QStringLiteral("- closed: ") + reason);
            break;
    }
}

} // namespace plc
