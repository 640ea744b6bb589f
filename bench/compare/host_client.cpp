#include "host_client.h"

#include <QtCore/QEventLoop>
#include <QtCore/QtEndian>

#include "host/driver/request_records.h"
#include "host/points/value_codec.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "registers.h"
#include "setup/runtime_settings.h"

namespace plc::bench {
namespace {

project::Project projectWith(const project::Project& plant, int maxReadBytes)
{
    project::Project project = plant;
    project.settings.maxReadBytes = maxReadBytes;
    project.settings.connectTimeout = kAnswerTimeout;
    project.settings.replyTimeout = kAnswerTimeout;
    return project;
}

/// Labels of the values that a read work is about.
QStringList labelsOf(Work work, bool labelsEach)
{
    QStringList labels;
    if (work == Work::Block && !labelsEach)
        labels.append(QStringLiteral("%1*%2").arg(blockLabel(0)).arg(kBlockValues));
    for (int i = 0; work == Work::Block && labelsEach && i < kBlockValues; ++i)
        labels.append(blockLabel(i));
    for (int i = 0; work == Work::Scattered && i < kScatteredValues; ++i)
        labels.append(scatteredLabel(i));
    for (int i = 0; work == Work::Clusters && i < valuesIn(work); ++i)
        labels.append(clusterLabel(i / valuesInCluster(), i % valuesInCluster()));
    for (int i = 0; !isRead(work) && i < valuesIn(work); ++i)
        labels.append(settingLabel(i));
    return labels;
}

/// Does a work over a link of its own.
class Worker : private host::RuntimeListener {
public:
    Worker(Work work, const host::DriverFunctions& driver, const project::Project& project,
           bool labelsEach, Recorder* recorder)
        : m_work(work),
          m_recorder(recorder),
          m_runtime(*host::DriverClaim::take(driver), setup::runtimeSettings(project.settings, 0),
                    project, this),
          m_link(&m_runtime.session(), project.address, project.port)
    {
        for (const QString& label : labelsOf(work, labelsEach)) {
            const Expected<host::DataPoint> point = m_runtime.points().find(label);
            if (!point)
                giveUp(point.error().text);
            m_points.append(*point);
        }
    }

    void run()
    {
        // Also when nothing is read: the driver still has what the last worker read.
        m_runtime.readCyclically(isRead(m_work) ? m_points : QVector<host::DataPoint>(),
                                 m_link.now());
        if (m_work == Work::Writes)
            write(m_points.first(), [this] { beginWrites(); });
        else if (m_work == Work::ReadBacks)
            write(m_points.first(), [this] { beginReadBacks(); });
        m_link.start();
        m_loop.exec();
        m_link.stop();
    }
    const ReceivedValues& values() const { return m_values; }

private:
    void end()
    {
        m_hasEnded = true;
        m_loop.quit();
    }

    // Cyclic reads. The first pass is preparation.

    int valuesInReply(const host::SentRequest& request) const
    {
        if (m_work == Work::Clusters)
            return int(request.content.entries.size()) * valuesInCluster();
        int bytes = 0;
        for (const host::FrameEntry& entry : request.content.entries)
            bytes += int(entry.length);
        return bytes / int(sizeof(quint16));
    }

    void takeReply()
    {
        m_recorder->arrived(m_valuesInReply);
        m_valuesSoFar += m_valuesInReply;
        m_valuesInReply = 0;
        if (m_valuesSoFar < valuesIn(m_work))
            return;
        m_valuesSoFar = 0;
        takeTable();
        if (!m_hasBegun)
            m_recorder->begin();
        else if (m_recorder->passDone())
            end();
        m_hasBegun = true;
    }

    /// Gives the application the values in its own terms, as the other clients do.
    void takeTable()
    {
        const host::ValueTable& table = m_runtime.values();
        m_values.words.clear();
        m_values.numbers.clear();
        for (int row = 0; row < table.size(); ++row) {
            if (m_work == Work::Clusters)
                takeNumber(table, row);
            else
                takeWords(table.bytes(row));
        }
    }
    void takeWords(const QByteArray& bytes)
    {
        const int count = int(bytes.size()) / int(sizeof(quint16));
        const size_t before = m_values.words.size();
        m_values.words.resize(before + size_t(count));
        qFromLittleEndian<quint16>(bytes.constData(), count, m_values.words.data() + before);
    }
    void takeNumber(const host::ValueTable& table, int row)
    {
        const values::Value value = host::decodeValue(table.point(row), table.bytes(row));
        m_values.numbers.push_back(std::visit(
            [](const auto& number) {
                if constexpr (std::is_arithmetic_v<std::decay_t<decltype(number)>>)
                    return double(number);
                return 0.0;
            },
            value));
    }

    // Writes.

    /// `point` stays as long as the worker.
    template <typename Done>
    void write(const host::DataPoint& point, Done done)
    {
        m_runtime.write(point, {qint64(m_written)}, m_link.now(),
                        [&point, done](const host::TransferOutcome& outcome) {
                            if (!outcome.isDone())
                                giveUp(QStringLiteral("%1: %2").arg(point.text, outcome.reason));
                            done();
                        });
    }

    void beginWrites()
    {
        m_recorder->begin();
        startWrites();
    }
    void startWrites()
    {
        m_open = int(m_points.size());
        ++m_written;
        for (const host::DataPoint& point : m_points)
            write(point, [this] { noteWritten(); });
    }
    void noteWritten()
    {
        m_recorder->arrived(1);
        if (--m_open > 0)
            return;
        if (m_recorder->passDone())
            end();
        else
            startWrites();
    }

    // Values read back after a write.

    void beginReadBacks()
    {
        m_recorder->begin();
        startReadBack();
    }
    void startReadBack()
    {
        ++m_written;
        const host::DataPoint& point = m_points.first();
        write(point, [this, &point] {
            m_runtime.readOnce(point, m_link.now(),
                               [this](const host::TransferOutcome& outcome,
                                      const QByteArray& bytes) { takeReadBack(outcome, bytes); });
        });
    }
    void takeReadBack(const host::TransferOutcome& outcome, const QByteArray& bytes)
    {
        if (!outcome.isDone() || qFromLittleEndian<qint16>(bytes.constData()) != m_written)
            giveUp(QStringLiteral("plc: another value was read back than was written"));
        m_recorder->arrived(1);
        if (m_recorder->passDone())
            end();
        else
            startReadBack();
    }

    void linkChanged(host::LinkState state, const QString& reason, int) override
    {
        if (state == host::LinkState::Down && !m_hasEnded)
            giveUp(QStringLiteral("plc: the link was lost: %1").arg(reason));
    }
    void requestSent(const host::SentRequest&) override { m_recorder->requestSent(); }
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray&) override
    {
        if (answer.kind != host::Answer::Accepted)
            giveUp(QStringLiteral("plc: the simulator refused a request with status %1")
                       .arg(answer.status));
        const bool isCyclic = request.category == host::kCyclicCategory &&
                              request.content.service == host::Service::Read;
        m_valuesInReply = isCyclic ? valuesInReply(request) : 0;
    }
    void requestSettled() override
    {
        if (m_valuesInReply > 0)
            takeReply();
    }

    const Work m_work;
    Recorder* const m_recorder;
    host::Runtime m_runtime;
    host::TcpLink m_link;
    QEventLoop m_loop;
    QVector<host::DataPoint> m_points;
    bool m_hasEnded = false;
    bool m_hasBegun = false;
    int m_valuesInReply = 0;
    int m_valuesSoFar = 0;
    int m_open = 0; ///< Writes of the pass that are not confirmed yet.
    qint16 m_written = 0;
    ReceivedValues m_values;
};

} // namespace

HostClient::HostClient(const host::DriverFunctions& driver, const project::Project& plant,
                       const HostSettings& settings)
    : m_driver(driver), m_project(projectWith(plant, settings.maxReadBytes)), m_settings(settings)
{
}

void HostClient::measure(Work work, quint16 port, Recorder* recorder)
{
    m_project.port = port;
    Worker worker(work, m_driver, m_project, m_settings.labelsEach, recorder);
    worker.run();
    if (isRead(work) && !areRight(work, worker.values()))
        giveUp(QStringLiteral("plc: %1: wrong values").arg(titleOf(work)));
}

} // namespace plc::bench
