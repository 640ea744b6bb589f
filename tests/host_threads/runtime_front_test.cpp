#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/driver/driver_library.h"
#include "host/points/value_codec.h"
#include "host/runtime/runtime_front.h"
#include "project/symbol_builder.h"

namespace plc::host {
namespace {

constexpr int kRounds = 2000;
constexpr int kWritesOfThread = 200;
constexpr int kIdentificationPayload = 200;
constexpr int kFilePayload = 30;

QByteArray frameOf(const QByteArray& payload)
{
    QByteArray frame = QByteArray::fromHex("BBBB0000");
    frame += char(uchar(payload.size() >> 8));
    frame += char(uchar(payload.size() & 0xFF));
    return frame + payload;
}

project::Symbols pairOfNumbers()
{
    return *project::SymbolBuilder()
                .scope(QStringLiteral("Pair"))
                .variable(QStringLiteral("first"), QStringLiteral("INT"), 1, 0)
                .variable(QStringLiteral("second"), QStringLiteral("INT"), 1, 2)
                .variable(QStringLiteral("other"), QStringLiteral("INT"), 1, 100)
                .build();
}

/// A runtime that one thread owns, with a PLC in memory whose numbers are all the same, and others
/// in each reply.
class Plant {
public:
    Plant()
        : m_library(*DriverLibrary::loadCopy(QStringLiteral(PLC_LIBRARY))),
          m_symbols(pairOfNumbers()),
          m_runtime(*m_library.take(), RuntimeSettings(), m_symbols, &m_listener),
          m_front(&m_runtime, [this] { ++wakeUps; })
    {
        m_runtime.readCyclically({point("Pair.first"), point("Pair.second")}, m_now);
        m_runtime.session().start(m_now);
    }

    RuntimeFront& front() { return m_front; }
    DataPoint point(const char* label) const
    {
        return *m_runtime.points().find(QString::fromLatin1(label));
    }
    qint64 now() const { return m_now; }

    /// One round of the owner's loop.
    void turn()
    {
        ++m_now;
        m_front.carryOut(m_now);
        Session& session = m_runtime.session();
        session.tick(m_now);
        for (const SessionAction& action : session.takeActions()) {
            if (action.kind == SessionAction::Connect)
                session.connected(m_now);
            else if (action.kind == SessionAction::Send)
                session.received(replyTo(action.bytes), m_now);
        }
    }
    bool hasOpenWrites() const { return m_runtime.openWrites() > 0; }

    std::atomic<int> wakeUps{0};

private:
    QByteArray replyTo(const QByteArray& request)
    {
        const RequestContent content = parseRequest(request);
        if (content.service == Service::Identification)
            return frameOf(QByteArray(kIdentificationPayload, '\0'));
        if (content.service == Service::File)
            return frameOf(QByteArray(kFilePayload, '\0'));
        if (content.service == Service::Write)
            return frameOf(QByteArray(2, '\0'));
        ++m_reply;
        QByteArray payload(6, '\0');
        for (const FrameEntry& entry : content.entries)
            payload += '\0' + QByteArray(int(entry.length), char(m_reply));
        return frameOf(payload);
    }

    DriverLibrary m_library;
    const project::Symbols m_symbols;
    RuntimeListener m_listener;
    Runtime m_runtime;
    std::atomic<qint64> m_now{1};
    quint8 m_reply = 0;
    RuntimeFront m_front;
};

TEST(RuntimeFrontThreads, SnapshotsAreOfOneMomentWhileTheOwnerReads)
{
    Plant plant;
    std::atomic<bool> isOver{false};
    std::thread panel([&] {
        while (!isOver) {
            const RuntimeSnapshot snapshot = plant.front().snapshot(plant.now());
            ASSERT_EQ(2, snapshot.values.size());
            EXPECT_EQ(snapshot.values[0].bytes, snapshot.values[1].bytes);
            EXPECT_EQ(snapshot.values[0].state, snapshot.values[1].state);
        }
    });
    for (int round = 0; round < kRounds; ++round)
        plant.turn();
    isOver = true;
    panel.join();
    EXPECT_EQ(ValueState::Good, plant.front().snapshot(plant.now()).values[0].state);
}

TEST(RuntimeFrontThreads, WritesOfSeveralThreadsAreEachSettledOnceByTheOwner)
{
    constexpr int kThreads = 3;
    const std::thread::id owner = std::this_thread::get_id();
    std::vector<int> settled(kThreads * kWritesOfThread, 0); // The owner's alone.
    Plant plant;
    const DataPoint other = plant.point("Pair.other");
    const QVector<values::Value> value = *parsePoint(other, QStringLiteral("7"));
    std::vector<std::thread> panels;
    for (int thread = 0; thread < kThreads; ++thread) {
        panels.emplace_back([&, thread] {
            for (int i = 0; i < kWritesOfThread; ++i) {
                const int number = thread * kWritesOfThread + i;
                plant.front().write(other, value, [&, number](const TransferOutcome&) {
                    EXPECT_EQ(owner, std::this_thread::get_id());
                    ++settled[size_t(number)];
                });
            }
        });
    }
    for (int round = 0; round < kRounds; ++round)
        plant.turn();
    for (std::thread& panel : panels)
        panel.join();
    do {
        plant.turn();
    } while (plant.hasOpenWrites());
    for (int times : settled)
        EXPECT_EQ(1, times);
    EXPECT_EQ(kThreads * kWritesOfThread, plant.wakeUps);
}

TEST(RuntimeFrontThreads, RuntimesOfSeveralThreadsShareNothing)
{
    // ThreadSanitizer does not see the lock of the loader, which maps a driver where another
    // thread's was until then.
    std::mutex loading;
    std::vector<std::thread> owners;
    std::atomic<int> done{0};
    for (int owner = 0; owner < 4; ++owner) {
        owners.emplace_back([&done, &loading] {
            for (int round = 0; round < 5; ++round) {
                std::unique_lock<std::mutex> lock(loading);
                Plant plant;
                lock.unlock();
                const DataPoint other = plant.point("Pair.other");
                plant.front().write(
                    other, *parsePoint(other, QStringLiteral("7")),
                    [&done](const TransferOutcome& outcome) { done += outcome.isDone() ? 1 : 0; });
                do {
                    plant.turn();
                } while (plant.hasOpenWrites());
                lock.lock();
            }
        });
    }
    for (std::thread& owner : owners)
        owner.join();
    EXPECT_EQ(4 * 5, done);
}

} // namespace
} // namespace plc::host
