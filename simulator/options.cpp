#include "simulator/options.h"

#include "options/command_line.h"
#include "options/help_text.h"
#include "options/readers.h"
#include "simulator/reply_faults.h"
#include "simulator/signals.h"
#include "values/nearest_name.h"

namespace plc::simulator {
namespace {

constexpr qint64 kMostMemory = qint64(256) * 1024 * 1024;
constexpr qint64 kHighestSeed = 0xffffffff;
constexpr int kMostClients = 1000;
constexpr int kMostPlants = 1000;

constexpr char kUsage[] =
    "usage: plc-simulator [OPTION...] PROJECT\n"
    "\n"
    "Simulates the PLC of a project file: serves logins, reads and writes over TCP\n"
    "and lets the values with a signal move. Reads commands from the standard input;\n"
    "\"help\" lists them.\n"
    "\n"
    "Options:\n";

options::Reader address(QHostAddress* target)
{
    return [target](const options::Given& given) -> Expected<void> {
        if (target->setAddress(given.text()))
            return {};
        return Error{QStringLiteral("--%1: %2 is not an IP address")
                         .arg(given.name, values::quoted(given.text()))};
    };
}

/// The number of a reply, and the milliseconds that it is late.
options::Reader lateReply(ReplyFaults* faults)
{
    return [faults](const options::Given& given) -> Expected<void> {
        const QStringList parts = given.text().split(QLatin1Char(':'));
        if (parts.size() != 2)
            return Error{QStringLiteral("--%1: expected N:MS, as in 3:1500").arg(given.name)};
        const Expected<qint64> reply =
            options::parseInteger(given.name, parts.first(), 1, kHighestNumber);
        if (!reply)
            return reply.error();
        const Expected<qint64> delay =
            options::parseInteger(given.name, parts.last(), 0, kLongestDelay);
        if (!delay)
            return delay.error();
        faults->delayReply(int(*reply), int(*delay));
        return {};
    };
}

/// Plans a fault of the given number.
options::Reader fault(ReplyFaults* faults, void (ReplyFaults::*plan)(int), int lowest, int highest)
{
    return [=](const options::Given& given) -> Expected<void> {
        const Expected<qint64> number =
            options::parseInteger(given.name, given.text(), lowest, highest);
        if (!number)
            return number.error();
        (faults->*plan)(int(*number));
        return {};
    };
}

} // namespace

options::Table Options::behaviourTable()
{
    using namespace options;
    return {
        {"--listen ADDRESS", "IP address to listen on (127.0.0.1)", simulator::address(&address),
         kCompleteNothing, "IP address to listen on; 127.0.0.1 if not given."},
        {"--port N", "port to listen on, the project's if not given; 0 picks a free one",
         integer(&port, 0, kHighestPort), kCompleteNothing,
         "Port to listen on; the project's if not given. 0 picks a free one."},
        {"--quiet", "print nothing but the address", flag(&m_isQuiet)},
        {"--verbose", "print every frame with its meaning", flag(&m_isVerbose)},
        {"--seed N", "seed of the random walks (1)", integer(&seed, 0, kHighestSeed),
         kCompleteNothing, "Seed of the random walks; 1 if not given."},
        {"--max-clients N", "most clients at the same time; others are turned away (256)",
         integer(&mostClients, 1, kMostClients), kCompleteNothing,
         "Most clients at the same time, 256 if not given; others are turned away."},
        {"--plants N", "simulate so many plants, at ports that follow one another (1)",
         integer(&plants, 1, kMostPlants), kCompleteNothing,
         "Simulate `N` plants of this project in one process, each with memory of its own, at the "
         "port and those that follow it; with port 0 each at a free one. A line for each tells "
         "where it listens. The command `plant` chooses the one that further commands are for."},
    };
}

options::Table Options::faultTable()
{
    using namespace options;
    return {
        {"--reply-delay MS", "delay every reply",
         fault(&faults, &ReplyFaults::setDelay, 0, kLongestDelay), kCompleteNothing,
         "Delay every reply, those to the login too."},
        {"--fragment N", "send replies in pieces of N bytes", integer(&fragment, 0, kHighestNumber),
         kCompleteNothing, "Send replies in pieces of `N` bytes, 1 ms apart."},
        {"--join", "send the replies to requests that arrive together in one piece", flag(&join)},
        {"--drop-replies N", "lose the first N replies",
         fault(&faults, &ReplyFaults::dropNext, 0, kHighestNumber), kCompleteNothing,
         "Lose the first `N` replies; the requests are carried out."},
        {"--late-reply N:MS", "delay the reply of this number", lateReply(&faults),
         kCompleteNothing, "Delay reply number `N`."},
        {"--half-reply N", "send half of the reply of this number, and nothing more",
         fault(&faults, &ReplyFaults::halveReply, 1, kHighestNumber), kCompleteNothing,
         "Send half of reply number `N`, and nothing more on its connection."},
        {"--duplicate-reply N", "send the reply of this number twice in one piece",
         fault(&faults, &ReplyFaults::duplicateReply, 1, kHighestNumber), kCompleteNothing,
         "Send reply number `N` twice in one piece."},
        {"--refuse-login", "refuse every login", flag(&refuseLogin), kCompleteNothing,
         "Answer logins with a status error."},
        {"--fail-writes", "refuse every write", flag(&failWrites), kCompleteNothing,
         "Answer writes with a status error."},
    };
}

options::Table Options::informationTable()
{
    return options::informationOptions(&m_wantsHelp, &m_wantsVersion);
}

options::Table Options::table()
{
    return behaviourTable() + faultTable() + informationTable();
}

Expected<Options> readOptions(const QStringList& arguments)
{
    Options options;
    const options::Table table = options.table();
    const Expected<options::CommandLine> line = options::CommandLine::parse(arguments, table);
    if (!line)
        return line.error();
    options.information = options::informationText(*line, QStringLiteral("plc-simulator"),
                                                   QString::fromLatin1(kUsage), table);
    if (!options.information.isEmpty())
        return options;
    if (line->arguments().size() != 1)
        return Error{QStringLiteral("expected one project file; --help tells more")};
    options.projectFile = line->arguments().first();
    if (const Expected<void> isGood = line->read(table); !isGood)
        return isGood.error();
    if (options.m_isQuiet)
        options.verbosity = Verbosity::Quiet;
    else if (options.m_isVerbose)
        options.verbosity = Verbosity::Verbose;
    return options;
}

Expected<void> checkSize(const project::Project& project, int plants)
{
    qint64 memory = 0;
    for (const project::MemoryArea& area : project.areas)
        memory += qint64(area.size) * plants;
    if (memory > kMostMemory) {
        return Error{
            QStringLiteral("the areas of the project have %1 bytes; at most %2 can be simulated")
                .arg(memory)
                .arg(kMostMemory)};
    }
    if (countSignalValues(project) * plants > kMostSignalValues) {
        return Error{QStringLiteral("more than %1 values of the project have a signal")
                         .arg(kMostSignalValues)};
    }
    return {};
}

} // namespace plc::simulator
