// The host's main works with a PLC that answers at once. bench/instructions/run counts them.

#include <QtCore/QFile>

#include <cstdio>
#include <cstdlib>

#include "counting.h"
#include "host/driver/driver_library.h"
#include "host/runtime/runtime.h"
#include "project/project.h"
#include "setup/runtime_settings.h"
#include "support/replies.h"

namespace plc::bench {
namespace {

constexpr int kDeclaredVariables = 100000;
constexpr int kCyclicValues = 1000;
constexpr int kWrites = 100;
constexpr int kWritesAtOnce = 1000;
constexpr int kPasses = 10;

[[noreturn]] void giveUp(const QString& what)
{
    std::fprintf(stderr, "count_host: %s\n", qPrintable(what));
    std::exit(EXIT_FAILURE);
}

QByteArray nameOf(int variable)
{
    return "Station" + QByteArray::number(variable).rightJustified(6, '0') + "_Value";
}

/// A project of so many variables in one scope, 8 bytes apart.
QByteArray projectOf(int variables)
{
    QByteArray json = "{\"name\": \"Plant\",\n\"areas\": [{\"index\": 1, \"size\": " +
                      QByteArray::number(8 * variables) +
                      "}],\n\"scopes\": [{\"name\": \"Plant\", \"variables\": [";
    for (int i = 0; i < variables; ++i) {
        json += i == 0 ? "\n" : ",\n";
        json += "{\"name\": \"" + nameOf(i) +
                "\", \"type\": \"UDINT\", \"area\": 1, \"offset\": " + QByteArray::number(8 * i) +
                '}';
    }
    return json + "\n]}]}\n";
}

project::Project parsed(const QByteArray& json)
{
    const Expected<project::Project> project =
        project::parseProject(json, QStringLiteral("plant.json"));
    if (!project)
        giveUp(project.error().text);
    return *project;
}

/// A runtime and the PLC that it talks to.
class Plant : private host::RuntimeListener {
public:
    Plant(const host::DriverFunctions& driver, const project::Project& project, bool readsAll)
        : m_runtime(*host::DriverClaim::take(driver), setup::runtimeSettings(project.settings, 0),
                    project, this)
    {
        for (int i = 0; i < kCyclicValues; ++i) {
            const Expected<host::DataPoint> point =
                m_runtime.points().find(QLatin1String("Plant.") + QLatin1String(nameOf(i)));
            if (!point)
                giveUp(point.error().text);
            m_points.append(*point);
        }
        m_runtime.readCyclically(readsAll ? m_points : QVector<host::DataPoint>(), m_now);
        m_runtime.session().start(m_now);
    }

    void readPasses(int passes)
    {
        const quint64 last = m_runtime.session().passes() + quint64(passes);
        while (m_runtime.session().passes() < last)
            answerOne();
    }

    void writeOneAfterTheOther(int writes)
    {
        for (int i = 0; i < writes; ++i) {
            write(i);
            answerWrites();
        }
    }

    void writeAtOnce(int writes)
    {
        for (int i = 0; i < writes; ++i)
            write(i);
        answerWrites();
    }

private:
    void write(int i)
    {
        m_runtime.write(m_points.at(i), {qint64(i)}, m_now,
                        [](const host::TransferOutcome& outcome) {
                            if (!outcome.isDone())
                                giveUp(outcome.reason);
                        });
    }
    void answerWrites()
    {
        while (m_runtime.openWrites() > 0)
            answerOne();
    }

    void answerOne()
    {
        ++m_now;
        const QVector<host::SessionAction> actions = m_runtime.session().takeActions();
        if (actions.isEmpty())
            giveUp(QStringLiteral("nothing is sent"));
        for (const host::SessionAction& action : actions) {
            if (action.kind == host::SessionAction::Connect)
                m_runtime.session().connected(m_now);
            else if (action.kind == host::SessionAction::Send)
                m_runtime.session().received(replyTo(action.bytes), m_now);
            else
                giveUp(QStringLiteral("the connection is closed"));
        }
    }

    static QByteArray replyTo(const QByteArray& request)
    {
        constexpr int kServiceOffset = 6;
        switch (uchar(request.at(kServiceOffset))) {
            case 0x01:
                return identificationReply();
            case 0x31:
                return fileReply();
            case 0x2E:
                return readReply(readLengths(request));
            default:
                return writeReply();
        }
    }

    void linkChanged(host::LinkState state, const QString& reason, int) override
    {
        if (state == host::LinkState::Down)
            giveUp(reason);
    }
    void requestSent(const host::SentRequest&) override {}
    void requestAnswered(const host::SentRequest&, const host::Answer&, const QByteArray&) override
    {
    }

    host::Runtime m_runtime;
    QVector<host::DataPoint> m_points;
    qint64 m_now = 1000;
};

void countAll()
{
    const Expected<host::DriverLibrary> driver =
        host::DriverLibrary::load(QStringLiteral(PLC_LIBRARY));
    if (!driver)
        giveUp(driver.error().text);
    const project::Project project = parsed(projectOf(kCyclicValues));
    count("host/start_until_1000_values_are_there",
          [&] { Plant(driver->functions(), project, true).readPasses(1); });
    {
        Plant plant(driver->functions(), project, true);
        count("host/10_passes_of_1000_values", [&] { plant.readPasses(kPasses); });
    }
    {
        Plant plant(driver->functions(), project, false);
        count("host/100_writes", [&] { plant.writeOneAfterTheOther(kWrites); });
        count("host/1000_writes_at_once", [&] { plant.writeAtOnce(kWritesAtOnce); });
    }

    const QByteArray json = projectOf(kDeclaredVariables);
    count("host/load_100000_variables", [&] { parsed(json); });
}

/// For the count of `plc resolve`.
void writeProject(const char* path)
{
    QFile file(QString::fromLocal8Bit(path));
    const QByteArray json = projectOf(kDeclaredVariables);
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        giveUp(file.errorString());
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    if (argc > 1)
        plc::bench::writeProject(argv[1]);
    else
        plc::bench::countAll();
}
