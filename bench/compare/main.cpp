#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>

#include <cstdlib>

#include "delaying_proxy.h"
#include "libmodbus_server.h"
#include "qt_modbus_server.h"
#include "report.h"
#include "requirements.h"

namespace plc::bench {
namespace {

constexpr char kAbout[] =
    "Compares the host and the simulator of this repository with other libraries' clients and\n"
    "servers over the loopback. Exit code 1: a requirement is missed.\n\n"
    "works: (a) 10,000 values in one block (b) 10,000 scattered values (c) 1,000 values in 20\n"
    "clusters (d) 1,000 single writes (e) a value read back after a write";

constexpr int kLongestDelay = 1000; // ms
constexpr int kMostRounds = 1000;

int integer(const QString& text, const char* what, int lowest, int highest)
{
    bool ok = false;
    const int number = text.toInt(&ok);
    if (!ok || number < lowest || number > highest)
        giveUp(QStringLiteral("--%1 takes numbers from %2 to %3, not \"%4\"")
                   .arg(QString::fromLatin1(what))
                   .arg(lowest)
                   .arg(highest)
                   .arg(text));
    return number;
}

std::vector<Work> worksIn(const QString& letters)
{
    std::vector<Work> works;
    for (Work work : allWorks()) {
        if (letters.contains(QLatin1Char(letterOf(work))))
            works.push_back(work);
    }
    if (works.size() != size_t(letters.size()))
        giveUp(QStringLiteral("--works takes some of the letters a to e, not \"%1\"").arg(letters));
    return works;
}

std::vector<int> delaysIn(const QString& list)
{
    std::vector<int> delays;
    for (const QString& text : list.split(QLatin1Char(',')))
        delays.push_back(integer(text, "delays", 0, kLongestDelay));
    return delays;
}

class CommandLine {
public:
    explicit CommandLine(const QStringList& arguments)
    {
        m_parser.setApplicationDescription(QString::fromLatin1(kAbout));
        m_parser.addHelpOption();
        m_parser.addOptions({m_works, m_delays, m_rounds, m_time, m_json, m_serveLibmodbus,
                             m_serveQt, m_proxy, m_delay});
        m_parser.process(arguments);
    }

    int execute() const
    {
        if (m_parser.isSet(m_serveLibmodbus))
            runLibmodbusServer();
        if (m_parser.isSet(m_serveQt))
            return runQtModbusServer();
        if (m_parser.isSet(m_proxy)) {
            const int delay = integer(m_parser.value(m_delay), "delay", 0, kLongestDelay);
            runDelayingProxy(quint16(integer(m_parser.value(m_proxy), "proxy", 1, 65535)),
                             std::chrono::milliseconds(delay));
        }
        return compareAndReport();
    }

private:
    int compareAndReport() const
    {
        ComparisonOptions options;
        options.works = worksIn(m_parser.value(m_works));
        options.delays = delaysIn(m_parser.value(m_delays));
        options.rounds = integer(m_parser.value(m_rounds), "rounds", 1, kMostRounds);
        options.shortest = std::chrono::milliseconds(
            integer(m_parser.value(m_time), "time", 1, kLongestDelay * kMostRounds));
        const std::vector<Result> results = compare(options);
        printTable(results);
        if (m_parser.isSet(m_json))
            writeJson(results, m_parser.value(m_json));
        return checkRequirements(results) ? EXIT_SUCCESS : EXIT_FAILURE;
    }

    static QCommandLineOption hidden(const char* name, const char* value)
    {
        QCommandLineOption option(QString::fromLatin1(name), QString(), QString::fromLatin1(value));
        option.setFlags(QCommandLineOption::HiddenFromHelp);
        return option;
    }

    const QCommandLineOption m_works{QStringLiteral("works"),
                                     QStringLiteral("Letters of the works (abcde)."),
                                     QStringLiteral("letters"), QStringLiteral("abcde")};
    const QCommandLineOption m_delays{
        QStringLiteral("delays"),
        QStringLiteral("Added round-trip times in milliseconds (0,1,10)."), QStringLiteral("list"),
        QStringLiteral("0,1,10")};
    const QCommandLineOption m_rounds{
        QStringLiteral("rounds"),
        QStringLiteral("Rounds, of which the medians count (5); fewer where they take long."),
        QStringLiteral("count"), QStringLiteral("5")};
    const QCommandLineOption m_time{
        QStringLiteral("time"), QStringLiteral("Milliseconds of a measurement, at least (200)."),
        QStringLiteral("ms"), QStringLiteral("200")};
    const QCommandLineOption m_json{QStringLiteral("json"),
                                    QStringLiteral("Writes the results there as well."),
                                    QStringLiteral("file")};
    // What the processes beside the clients' are started with.
    const QCommandLineOption m_serveLibmodbus = hidden("serve-libmodbus", "");
    const QCommandLineOption m_serveQt = hidden("serve-qt", "");
    const QCommandLineOption m_proxy = hidden("proxy", "port");
    const QCommandLineOption m_delay = hidden("delay", "ms");
    QCommandLineParser m_parser;
};

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    return plc::bench::CommandLine(QCoreApplication::arguments()).execute();
}
