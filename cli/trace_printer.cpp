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

void TracePrinter::linkChanged(host::LinkState state, const QString& reason, int)
{
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

void TracePrinter::requestSent(const host::SentRequest& request)
{
    printFrame('>', request.frame, host::requestText(request));
}

void TracePrinter::requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                                   const QByteArray& reply)
{
    printFrame('<', reply, host::replyText(request, reply, answer));
}

} // namespace plc::cli
