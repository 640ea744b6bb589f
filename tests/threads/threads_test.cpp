// One communication thread and several others, as the rules for hosts allow them. Meant to be run
// under ThreadSanitizer; PLC_THREADS_SECONDS sets how long (2 unless given).

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/driver_fixture.h"
#include "support/symbol_fixture.h"
#include "threads/scripted_plc.h"

namespace plc::test {
namespace {

constexpr int kWriters = 3;
constexpr int kSlotsOfWriter = 40;
constexpr int kSlots = kWriters * kSlotsOfWriter;
constexpr int kSlotBytes = 4;
constexpr int kSlotArea = 1;
constexpr int kOtherArea = 2;
constexpr int kStation = 1;
constexpr int kSwitchedStation = 7;
constexpr int kWriteCategory = 1;
constexpr int kOnceCategory = 2;
constexpr int kOtherCategory = 3;
constexpr int kFaultsOneIn = 12;

/// A place that one writer writes to, one write at a time, and the communication thread settles.
struct Slot {
    enum State { Idle, Pending };
    std::atomic<int> state{Idle};
    std::atomic<quint8> value{0};
};

std::chrono::seconds runTime()
{
    const char* text = std::getenv("PLC_THREADS_SECONDS");
    return std::chrono::seconds(text ? std::atoi(text) : 2);
}

Label_Type_Info plant()
{
    const Label_Type_Info places = arrayOf(variable("slot", 5, 0, kSlotArea), {10, 0, kSlots - 1});
    const Label_Type_Info others = arrayOf(variable("other", 3, 0, kOtherArea), {10, 0, 999});
    return scope("MAIN", {places, others});
}

QString slotLabel(int slot)
{
    return QString::fromLatin1("MAIN.slot[%1]").arg(slot);
}

QString otherLabel(int index)
{
    return QString::fromLatin1("MAIN.other[%1]").arg(index);
}

/// What the callbacks said; both run on the communication thread.
struct Outcomes {
    std::vector<int> writes;
    std::vector<int> onceReads;
    int failures = 0;

    static void note(std::vector<int>& counts, int tag)
    {
        if (tag >= int(counts.size()))
            counts.resize(std::size_t(tag) + 1, 0);
        ++counts[std::size_t(tag)];
    }
};
Outcomes outcomes;

void noteOutcome(int, int category, int aux1, int)
{
    if (category == kWriteCategory)
        Outcomes::note(outcomes.writes, aux1);
    if (category == kOnceCategory)
        Outcomes::note(outcomes.onceReads, aux1);
}

void noteFinalFailure(QList<RW_VAR>*, int, int)
{
    ++outcomes.failures;
}

class Threads : public DriverTest {
protected:
    Threads() : m_plc(1)
    {
        settings.maxReadBytes = 100;
        settings.defaultStation = kStation;
        settings.multiStation = 1;
        settings.retryLimit = 1;
        settings.writeMode = 2;
        RegistCallBackFuncIntf(noteOutcome, noteFinalFailure);
        passSymbols({plant()});
        outcomes = Outcomes();
    }

    // The communication thread.

    /// One request and its reply. False when there was nothing to send.
    bool transact()
    {
        const Protocol* request = ComCommunication();
        if (!request)
            return false;
        // DataCom() settles the batch, also when it fails before its own request was sent.
        const bool isWrite = PLC_driver.lastKind == kWrite;
        const bool isLogin = PLC_driver.loggedIn == 0;
        std::vector<RW_VAR> batch(PLC_driver.batch, PLC_driver.batch + PLC_driver.batchCount);
        const QByteArray reply = m_plc.answer(request->frame);
        const int result = deliver(reply)->result;
        const bool isAccepted = result == 1 || result == 100;
        const bool isAbandoned = result != 0 && !isAccepted;
        if (isWrite && ((isAccepted && !isLogin) || isAbandoned)) {
            for (const RW_VAR& var : batch)
                settle(var, isAccepted);
        }
        return true;
    }

    void settle(const RW_VAR& write, bool isDone)
    {
        if (write.areaIndex != kSlotArea)
            return;
        Slot& slot = m_slots[std::size_t(write.address / kSlotBytes)];
        const QByteArray value(kSlotBytes, char(slot.value.load()));
        if (isDone && m_plc.memory(kSlotArea, write.address, kSlotBytes) != value)
            ++m_doneButNotTaken;
        ++(isDone ? m_done : m_failed);
        if (slot.state.exchange(Slot::Idle) != Slot::Pending)
            ++m_settledTwice;
    }

    // The other threads.

    /// Writes to its own places, each time when the last write to it is settled.
    void write(int writer)
    {
        int tag = writer;
        Random random{std::uint32_t(writer)};
        while (!m_isOver) {
            const int index = writer * kSlotsOfWriter + random.below(kSlotsOfWriter);
            Slot& slot = m_slots[std::size_t(index)];
            if (slot.state != Slot::Idle) {
                std::this_thread::yield();
                continue;
            }
            const quint8 value = quint8(random.bits());
            slot.value = value;
            slot.state = Slot::Pending;
            QByteArray bytes(kSlotBytes, char(value));
            SetRegisterData(slotLabel(index), 0, QString(), kStation, &bytes, 2, kWriteCategory,
                            tag);
            ++m_submitted;
            tag += kWriters;
        }
    }

    /// A value is seen before or after it changes, never in between.
    void read(int reader)
    {
        Random random{std::uint32_t(100 + reader)};
        while (!m_isOver) {
            QByteArray value;
            GetRegisterData(slotLabel(random.below(kSlots)), 0, 0, 0, &value, 2);
            if (value.size() != kSlotBytes || value != QByteArray(kSlotBytes, value.at(0)))
                ++m_torn;
        }
    }

    void readOnce()
    {
        Random random(200);
        int tag = 0;
        while (!m_isOver) {
            RW_VAR var;
            var.category = kOnceCategory;
            var.aux1 = tag++;
            var.deviceNo = 0;
            var.label = otherLabel(random.below(500));
            var.station = random.oneIn(3) ? kSwitchedStation : kStation;
            var.length = random.between(1, 60);
            AddListOnceReadVar(&var, 0);
            std::this_thread::yield();
        }
    }

    void switchStation()
    {
        Random random(300);
        while (!m_isOver) {
            EnCommStation(kSwitchedStation, random.below(2));
            EnableEthernet(kSwitchedStation, random.below(2));
            if (random.oneIn(50))
                EnCommStation(-1, 0);
            RW_VAR var = makeWrite(kOtherArea, 2 * random.below(500), hex("1234"), kOtherCategory,
                                   random.below(5));
            var.station = kSwitchedStation;
            AddListWriteVar(&var, 0);
            std::this_thread::yield();
        }
    }

    void rebuild()
    {
        Random random(400);
        while (!m_isOver) {
            QList<HostVarItem> items;
            for (int i = 0; i < 60; ++i) {
                HostVarItem item;
                item.station = quint8(random.oneIn(4) ? kSwitchedStation : kStation);
                item.label = random.oneIn(3) ? otherLabel(random.below(900))
                                             : slotLabel(random.below(kSlots));
                item.count = 2;
                items.append(item);
            }
            ReCreatReadVarList(&items);
            for (int i = 0; i < 20 && !m_isOver; ++i)
                std::this_thread::yield();
        }
    }

    void runAll()
    {
        std::vector<std::thread> threads;
        for (int i = 0; i < kWriters; ++i)
            threads.emplace_back(&Threads::write, this, i);
        for (int i = 0; i < 2; ++i)
            threads.emplace_back(&Threads::read, this, i);
        threads.emplace_back(&Threads::readOnce, this);
        threads.emplace_back(&Threads::switchStation, this);
        threads.emplace_back(&Threads::rebuild, this);
        m_plc.setFaultsOneIn(kFaultsOneIn);
        const auto end = std::chrono::steady_clock::now() + runTime();
        while (std::chrono::steady_clock::now() < end) {
            if (!transact())
                std::this_thread::yield();
        }
        m_isOver = true;
        for (std::thread& thread : threads)
            thread.join();
        m_plc.setFaultsOneIn(0);
        while (!PLC_driver.writeList.isEmpty() || !PLC_driver.onceReadList.isEmpty())
            ASSERT_TRUE(transact());
    }

    ScriptedPlc m_plc;
    std::vector<Slot> m_slots = std::vector<Slot>(kSlots);
    std::atomic<bool> m_isOver{false};
    std::atomic<int> m_submitted{0};
    std::atomic<int> m_torn{0};
    int m_done = 0;
    int m_failed = 0;
    int m_settledTwice = 0;
    int m_doneButNotTaken = 0;
};

int most(const std::vector<int>& counts)
{
    return counts.empty() ? 0 : *std::max_element(counts.begin(), counts.end());
}

TEST_F(Threads, EveryWriteIsSettledOnceWhileAllElseGoesOn)
{
    runAll();
    EXPECT_EQ(m_submitted, m_done + m_failed);
    EXPECT_EQ(0, m_settledTwice);
    EXPECT_EQ(0, m_doneButNotTaken);
    EXPECT_EQ(0, m_torn);
    for (const Slot& slot : m_slots)
        EXPECT_EQ(Slot::Idle, slot.state);
    EXPECT_LE(most(outcomes.writes), 1);
    EXPECT_LE(most(outcomes.onceReads), 1);
    // That there was something to see.
    EXPECT_GT(m_done, 0);
    EXPECT_GT(m_failed, 0);
    EXPECT_GT(outcomes.failures, 0);
    EXPECT_GT(int(outcomes.onceReads.size()), 0);
    RecordProperty("writes", m_submitted);
    RecordProperty("failed", m_failed);
}

} // namespace
} // namespace plc::test
