#include <QtCore/QCoreApplication>
#include <QtCore/QSocketNotifier>

#include <unistd.h>
#include <csignal>

#include <utility>

#include "simulator/frame_text.h"
#include "simulator/options.h"
#include "simulator/plant_group.h"
#include "streams/line_input.h"
#include "streams/output_stream.h"
#include "values/visible_text.h"

namespace plc::simulator {
namespace {

constexpr int kExitDone = 0;
constexpr int kExitRefused = 1;
constexpr int kExitWrongUse = 2;

struct Console {
    streams::OutputStream output{STDOUT_FILENO};
    streams::OutputStream errors{STDERR_FILENO};
    bool isLossTold = false;
};

Console& console()
{
    static Console theConsole;
    return theConsole;
}

QByteArray lineBytes(const QString& line)
{
    return values::visibleText(line).toUtf8() + '\n';
}

void complain(const QString& line)
{
    console().errors.write(lineBytes(QStringLiteral("plc-simulator: ") + line));
}

/// That nobody hears the answers is told once; clients are served all the same.
void tellLoss()
{
    if (!std::exchange(console().isLossTold, true))
        complain(QStringLiteral("the standard output cannot be written: %1")
                     .arg(console().output.error()));
}

void printError(const QString& line)
{
    console().errors.write(lineBytes(line));
}

/// The program's own text, perhaps of several lines.
void print(const QString& text)
{
    for (const QString& line : text.split(QLatin1Char('\n'))) {
        if (!console().output.write(lineBytes(line)))
            tellLoss();
    }
}

/// The code to end with, once all is written.
int finish(int exitCode)
{
    if (!console().output.close())
        tellLoss();
    return console().isLossTold && exitCode == kExitDone ? kExitRefused : exitCode;
}

// A signal handler may do little more than write; the event loop reads the other end.
int stopPipe[2];

void requestStop(int)
{
    const char byte = 0;
    if (::write(stopPipe[1], &byte, 1) < 0)
        ::_exit(kExitDone);
}

/// Lets Ctrl-C and a kill end the event loop.
void quitOnStopSignals(QCoreApplication* application)
{
    if (::pipe(stopPipe) != 0)
        return;
    auto* notifier = new QSocketNotifier(stopPipe[0], QSocketNotifier::Read, application);
    QObject::connect(notifier, &QSocketNotifier::activated, application,
                     [] { QCoreApplication::quit(); });
    std::signal(SIGINT, requestStop);
    std::signal(SIGTERM, requestStop);
    // In the background of a terminal, reading commands fails instead of stopping the process.
    std::signal(SIGTTIN, SIG_IGN);
}

void traceFrame(const QString& peer, char direction, const QByteArray& frame)
{
    const QString text = direction == '>' ? requestText(frame) : replyText(frame);
    printError(QStringLiteral("%1 %2 %3 [%4]")
                   .arg(peer)
                   .arg(QLatin1Char(direction))
                   .arg(QString::fromLatin1(frame.toHex(' ')), text));
}

/// The address as users write it behind a colon-separated port.
QString endpoint(const PlcServer& server)
{
    const QString address = server.address().toString();
    const bool isV6 = server.address().protocol() == QAbstractSocket::IPv6Protocol;
    return QStringLiteral("%1:%2")
        .arg(isV6 ? QStringLiteral("[%1]").arg(address) : address)
        .arg(server.port());
}

void carryOut(const QString& line, PlantGroup* plants)
{
    const QString answer = plants->execute(line);
    if (!answer.isEmpty())
        print(answer);
}

void tellLongLine()
{
    print(QStringLiteral("error: a line of more than %1 KiB is left out, to its end")
              .arg(streams::kLongestInputLine / 1024));
}

int serve(const project::Project& project, const Options& options, QCoreApplication* application)
{
    PlantGroup group(project, options, [] { QCoreApplication::quit(); });
    for (const auto& plant : group.plants()) {
        if (options.verbosity == Verbosity::Verbose)
            plant->setTrace(traceFrame);
        if (options.verbosity != Verbosity::Quiet)
            plant->server().setNotice(printError);
    }
    if (const Expected<void> listens = group.listen(); !listens) {
        complain(listens.error().text);
        return kExitRefused;
    }
    const streams::LineInput input(
        STDIN_FILENO, [&group](const QString& line) { carryOut(line, &group); }, tellLongLine);
    quitOnStopSignals(application);
    for (const auto& plant : group.plants())
        print(QStringLiteral("listening on ") + endpoint(plant->server()));
    if (options.verbosity != Verbosity::Quiet)
        printError(QStringLiteral("simulating %1; type \"help\" for the commands, Ctrl-C ends")
                       .arg(project.name));
    return application->exec();
}

int run(QCoreApplication* application)
{
    const Expected<Options> options = readOptions(application->arguments());
    if (!options) {
        complain(options.error().text);
        return kExitWrongUse;
    }
    if (!options->information.isEmpty()) {
        print(options->information);
        return kExitDone;
    }
    const Expected<project::Project> project = project::loadProject(options->projectFile);
    if (!project) {
        complain(project.error().text);
        return kExitWrongUse;
    }
    if (const Expected<void> isSmall = checkSize(*project, options->plants); !isSmall) {
        complain(isSmall.error().text);
        return kExitWrongUse;
    }
    return serve(*project, *options, application);
}

} // namespace
} // namespace plc::simulator

int main(int argc, char** argv)
{
    plc::streams::secureStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plc-simulator"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PLC_VERSION));
    return plc::simulator::finish(plc::simulator::run(&application));
}
