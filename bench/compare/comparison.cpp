#include "comparison.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>

#include "child_process.h"
#include "host/driver/driver_library.h"
#include "host_client.h"
#include "libmodbus_client.h"
#include "qt_modbus_client.h"

namespace plc::bench {
namespace {

/// One entry takes the whole block; its reply is far below the largest that the protocol has.
constexpr int kLongEntries = 2 * kBlockValues;
/// No second entry goes into a request with one of these.
constexpr int kShortEntries = 1000;

/// No further round of a work at a delay begins after this time.
constexpr std::chrono::seconds kLongestCase{60};

/// Servers and proxies, each in a process of its own.
class Testbed {
public:
    explicit Testbed(const std::vector<int>& delays)
    {
        const QString project = m_folder.filePath(QStringLiteral("plant.json"));
        QFile file(project);
        if (!file.open(QFile::WriteOnly) || file.write(projectJson()) < 0)
            giveUp(QStringLiteral("cannot write %1: %2").arg(project, file.errorString()));
        file.close();
        add(Server::Simulator, delays, QStringLiteral(PLC_SIMULATOR),
            {project, QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--quiet")});
        add(Server::Libmodbus, delays, m_self, {QStringLiteral("--serve-libmodbus")});
        add(Server::Qt, delays, m_self, {QStringLiteral("--serve-qt")});
    }

    /// Where a peer reaches its library's server.
    quint16 port(Peer peer, int delay) const
    {
        switch (peer) {
            case Peer::Libmodbus:
                return m_ports.at({Server::Libmodbus, delay});
            case Peer::Qt:
            case Peer::QtOneByOne:
                return m_ports.at({Server::Qt, delay});
            case Peer::Host:
            case Peer::HostShortEntries:
            case Peer::HostLabelsEach:
                break;
        }
        return m_ports.at({Server::Simulator, delay});
    }

private:
    enum class Server { Simulator, Libmodbus, Qt };

    void add(Server server, const std::vector<int>& delays, const QString& program,
             const QStringList& arguments)
    {
        const quint16 direct = start(program, arguments);
        for (int delay : delays) {
            const QStringList proxy = {QStringLiteral("--proxy"), QString::number(direct),
                                       QStringLiteral("--delay"), QString::number(delay)};
            m_ports[{server, delay}] = delay == 0 ? direct : start(m_self, proxy);
        }
    }

    quint16 start(const QString& program, const QStringList& arguments)
    {
        m_children.push_back(std::make_unique<ChildProcess>(program, arguments));
        return m_children.back()->port();
    }

    const QString m_self = QCoreApplication::applicationFilePath();
    QTemporaryDir m_folder;
    std::vector<std::unique_ptr<ChildProcess>> m_children;
    std::map<std::pair<Server, int>, quint16> m_ports;
};

project::Project plantProject()
{
    const Expected<project::Project> project =
        project::parseProject(projectJson(), QStringLiteral("the plant"));
    if (!project)
        giveUp(project.error().text);
    return *project;
}

std::map<Peer, std::unique_ptr<Client>> makeClients(const host::DriverFunctions& driver)
{
    const project::Project plant = plantProject();
    std::map<Peer, std::unique_ptr<Client>> clients;
    const auto addHost = [&](Peer peer, const HostSettings& settings) {
        clients[peer] = std::make_unique<HostClient>(driver, plant, settings);
    };
    addHost(Peer::Host, {kLongEntries, false});
    addHost(Peer::HostShortEntries, {kShortEntries, false});
    addHost(Peer::HostLabelsEach, {kLongEntries, true});
    clients[Peer::Libmodbus] = std::make_unique<LibmodbusClient>();
    clients[Peer::Qt] = std::make_unique<QtModbusClient>(kMostRequestsUnderWay);
    clients[Peer::QtOneByOne] = std::make_unique<QtModbusClient>(1);
    return clients;
}

/// Those for which a work makes a difference.
std::vector<Peer> peersFor(Work work)
{
    switch (work) {
        case Work::Block:
            return {Peer::Host, Peer::HostShortEntries, Peer::HostLabelsEach, Peer::Libmodbus,
                    Peer::Qt,   Peer::QtOneByOne};
        case Work::ReadBacks:
            return {Peer::Host, Peer::Libmodbus, Peer::Qt};
        default:
            return {Peer::Host, Peer::Libmodbus, Peer::Qt, Peer::QtOneByOne};
    }
}

/// Which entries suit a work. Clusters are far apart: entries that reached from one to the next
/// would be nearly all gap.
Peer hostFor(Work work)
{
    return work == Work::Clusters ? Peer::HostShortEntries : Peer::Host;
}

host::DriverFunctions loadBuiltDriver()
{
    const Expected<host::DriverLibrary> driver =
        host::DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    if (!driver)
        giveUp(driver.error().text);
    return driver->functions();
}

/// Replaces the line in which users see what is going on.
void tellProgress(const QString& text)
{
    if (::isatty(STDERR_FILENO) != 0)
        std::fprintf(stderr, "\r%-60s%s", qPrintable(text), text.isEmpty() ? "\r" : "");
}

/// Runs the rounds of one work at one delay.
class Case {
public:
    Case(Work work, int delay, const Testbed& testbed, std::chrono::milliseconds shortest)
        : m_work(work), m_delay(delay), m_testbed(testbed), m_shortest(shortest)
    {
        for (Peer peer : peersFor(work))
            m_results.push_back({work, delay, peer, {}});
    }

    void run(const std::map<Peer, std::unique_ptr<Client>>& clients, int rounds)
    {
        const auto start = std::chrono::steady_clock::now();
        for (int round = 0;
             round < rounds && std::chrono::steady_clock::now() - start < kLongestCase; ++round) {
            for (Result& result : m_results) {
                const Peer settings = result.peer == Peer::Host ? hostFor(m_work) : result.peer;
                measure(clients.at(settings).get(), &result);
            }
        }
    }
    const std::vector<Result>& results() const { return m_results; }

private:
    void measure(Client* client, Result* result) const
    {
        tellProgress(QStringLiteral("(%1) %2 ms, %3")
                         .arg(QLatin1Char(letterOf(m_work)))
                         .arg(m_delay)
                         .arg(nameOf(result->peer)));
        const quint16 port = m_testbed.port(result->peer, m_delay);
        Recorder recorder(port, m_shortest);
        client->measure(m_work, port, &recorder);
        result->rounds.push_back(recorder.result());
    }

    const Work m_work;
    const int m_delay;
    const Testbed& m_testbed;
    const std::chrono::milliseconds m_shortest;
    std::vector<Result> m_results;
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

} // namespace

QString nameOf(Peer peer)
{
    switch (peer) {
        case Peer::Host:
            return QStringLiteral("plc");
        case Peer::HostShortEntries:
            return QStringLiteral("plc, entries of 1000 bytes");
        case Peer::HostLabelsEach:
            return QStringLiteral("plc, 10,000 labels");
        case Peer::Libmodbus:
            return QStringLiteral("libmodbus");
        case Peer::Qt:
            return QStringLiteral("Qt Modbus, 16 at a time");
        case Peer::QtOneByOne:
            break;
    }
    return QStringLiteral("Qt Modbus, one at a time");
}

std::vector<Result> compare(const ComparisonOptions& options)
{
    const Testbed testbed(options.delays);
    const host::DriverFunctions driver = loadBuiltDriver();
    const std::map<Peer, std::unique_ptr<Client>> clients = makeClients(driver);
    std::vector<Result> results;
    for (Work work : options.works) {
        for (int delay : options.delays) {
            Case one(work, delay, testbed, options.shortest);
            one.run(clients, options.rounds);
            results.insert(results.end(), one.results().begin(), one.results().end());
        }
    }
    tellProgress(QString());
    return results;
}

double medianOf(const Result& result, double (*valueOf)(const Measurement&))
{
    std::vector<double> values;
    for (const Measurement& measurement : result.rounds)
        values.push_back(valueOf(measurement));
    return median(std::move(values));
}

double valuesPerSecond(const Measurement& measurement)
{
    return measurement.values / measurement.seconds;
}

double processorTimePerValue(const Measurement& measurement)
{
    return measurement.processorSeconds / measurement.values;
}

double ratioTo(Peer other, const std::vector<Result>& results, const Result& result,
               double (*valueOf)(const Measurement&))
{
    const Result* reference = find(results, result.work, result.delay, other);
    if (!reference)
        return 0;
    std::vector<double> ratios;
    for (size_t i = 0; i < result.rounds.size(); ++i)
        ratios.push_back(valueOf(result.rounds[i]) / valueOf(reference->rounds[i]));
    return median(std::move(ratios));
}

const Result* find(const std::vector<Result>& results, Work work, int delay, Peer peer)
{
    for (const Result& result : results) {
        if (result.work == work && result.delay == delay && result.peer == peer)
            return &result;
    }
    return nullptr;
}

} // namespace plc::bench
