#include "panel/api/write_desk.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include <deque>
#include <limits>

#include "panel/plants/plants.h"
#include "tests/support/test_folder.h"

namespace plc::panel {
namespace {

constexpr char kProject[] = R"json({
  "name": "A tank",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 1, "size": 20000}],
  "scopes": [{"name": "T", "variables": [
    {"name": "set", "type": "INT", "area": 1, "offset": 0},
    {"name": "real", "type": "REAL", "area": 1, "offset": 4},
    {"name": "list", "type": "USINT", "array": [[0, 9999]], "area": 1, "offset": 8}]}]})json";

class NoListener : public PlantListener {
    void sampled(Plant*, const QVector<int>&) override {}
    void linkChanged(Plant*) override {}
};

/// A PLC that is never connected: a write waits, or ends at once where the PLC is read-only.
class WriteDeskTest : public testing::Test {
protected:
    void addPlc(bool isReadOnly)
    {
        PlcSettings settings;
        settings.name = QStringLiteral("tank");
        settings.project = m_folder.filePath(QStringLiteral("tank.json"));
        plc::test::TestFolder(m_folder.path()).put(settings.project, kProject);
        Expected<std::unique_ptr<Plant>> plant =
            Plant::create(settings, isReadOnly, QStringLiteral(PLC_LIBRARY), &m_listener);
        if (!plant)
            qFatal("%s", qPrintable(plant.error().text));
        m_plants.add(std::move(*plant));
    }

    static WriteRequest request(const QString& id, qint64 value)
    {
        WriteRequest write;
        write.id = id;
        write.plc = QStringLiteral("tank");
        write.label = QStringLiteral("T.set");
        write.values = {values::Value(value)};
        return write;
    }
    WriteDesk::Refusal take(const WriteRequest& write)
    {
        return desk
            ->take(write, [this](const WriteRecord& record) { settled.push_back(record.outcome); })
            .refusal;
    }

    /// The disk has taken the oldest record, or has not.
    void answer(const Expected<void>& isKept)
    {
        const AuditWriter::Kept kept = waiting.front();
        waiting.pop_front();
        kept(isKept);
    }
    Plant* plant() { return m_plants.find(QStringLiteral("tank")); }
    void removePlcs() { m_plants.takeAll(); }
    static QString id(int i) { return QStringLiteral("w%1").arg(i); }

    std::vector<AuditRecord> audit;
    bool isDiskSlow = false;
    std::deque<AuditWriter::Kept> waiting; ///< Of records that a slow disk has not taken yet.
    std::vector<WriteOutcome> settled;
    qint64 now = 0;

private:
    QTemporaryDir m_folder;
    NoListener m_listener;
    Plants m_plants;

protected:
    static WriteDesk::Limits limitsOfTests()
    {
        WriteDesk::Limits limits;
        limits.kept = 100;
        limits.keptBytes = 100000;
        limits.known = 3;
        return limits;
    }
    const WriteDesk::Limits limits = limitsOfTests();
    std::shared_ptr<WriteDesk> desk = std::make_shared<WriteDesk>(
        &m_plants,
        [this](const AuditRecord& record, const AuditWriter::Kept& kept) {
            audit.push_back(record);
            if (isDiskSlow)
                waiting.push_back(kept);
            else
                kept({});
        },
        [this] { return ++now; }, limits);
};

TEST_F(WriteDeskTest, KeepsInTheAuditWhatThePanelKnewAndWhatTheClientSaysThatItsUserSaw)
{
    addPlc(false);
    WriteRequest write = request(QStringLiteral("a"), 5);
    write.seenText = QStringLiteral("3");
    EXPECT_EQ(WriteDesk::Refusal::None, take(write));
    ASSERT_EQ(1U, audit.size());
    EXPECT_EQ(AuditRecord::Requested, audit[0].phase);
    EXPECT_TRUE(audit[0].oldValue.isNull()) << "nothing was read";
    EXPECT_EQ("3", audit[0].seenValue.toStdString());
    EXPECT_EQ("5", audit[0].newValue.toStdString());
}

TEST_F(WriteDeskTest, NeverUsesAnIdAgainWhoseOutcomeItNoLongerKeeps)
{
    addPlc(true);
    for (int i = 0; i <= limits.kept; ++i)
        ASSERT_EQ(WriteDesk::Refusal::None, take(request(id(i), i % 100)));
    const std::size_t before = settled.size();
    EXPECT_EQ(std::size_t(limits.kept) + 1, before);

    EXPECT_FALSE(desk->find(id(0)));
    EXPECT_TRUE(desk->isForgotten(id(0)));
    EXPECT_EQ(WriteDesk::Refusal::NotKept, take(request(id(0), 0)));
    EXPECT_EQ(before, settled.size());

    EXPECT_TRUE(desk->find(id(1)));
    EXPECT_FALSE(desk->isForgotten(id(1)));
    EXPECT_EQ(WriteDesk::Refusal::None, take(request(id(1), 1)));
    EXPECT_EQ(WriteDesk::Refusal::OtherContent, take(request(id(1), 2)));
    EXPECT_EQ(before + 1, settled.size());
    EXPECT_FALSE(desk->isForgotten(QStringLiteral("never")));

    for (int i = 1; i <= 3; ++i)
        ASSERT_EQ(WriteDesk::Refusal::None, take(request(id(limits.kept + i), 1)));
    EXPECT_FALSE(desk->isForgotten(id(0))) << "of the ids, too, the oldest go";
    EXPECT_TRUE(desk->isForgotten(id(1)));
}

TEST_F(WriteDeskTest, KeepsNoMoreThanItsBytes)
{
    addPlc(true);
    const auto list = [](int i) {
        WriteRequest write = request(QStringLiteral("w%1").arg(i), 0);
        write.label = QStringLiteral("T.list[0]*10000");
        write.values = QVector<values::Value>(10000, values::Value(qint64(7)));
        write.isList = true;
        return write;
    };
    ASSERT_EQ(WriteDesk::Refusal::None, take(list(0)));
    ASSERT_EQ("the PLC is read-only here", settled.back().reason.toStdString());
    ASSERT_EQ(20001, desk->find(QStringLiteral("w0"))->value.size()) << "\"[7,7,…,7]\"";
    EXPECT_TRUE(desk->find(QStringLiteral("w0"))->request.values.isEmpty());
    // 600 bytes, the value, and twice the 15 characters of the label and the 25 of the reason.
    const int fitting = int(limits.keptBytes) / (600 + 20001 + 2 * (15 + 25));
    for (int i = 1; i < fitting; ++i)
        take(list(i));
    EXPECT_TRUE(desk->find(QStringLiteral("w0")));
    take(list(fitting));
    EXPECT_TRUE(desk->isForgotten(QStringLiteral("w0")));
    EXPECT_TRUE(desk->find(QStringLiteral("w1")));
}

TEST_F(WriteDeskTest, RefusesALabelThatIsLongerThanAnyUnread)
{
    addPlc(true);
    WriteRequest write = request(QStringLiteral("a"), 5);
    write.label = QString(1001, QLatin1Char('x'));
    EXPECT_EQ(WriteDesk::Refusal::Senseless, take(write));
    EXPECT_TRUE(audit.empty());
}

TEST_F(WriteDeskTest, TakesTheSameNumberThatIsNoneForTheSameContent)
{
    addPlc(true);
    WriteRequest write = request(QStringLiteral("nan"), 0);
    write.label = QStringLiteral("T.real");
    write.values = {values::Value(std::numeric_limits<float>::quiet_NaN())};
    write.areExact = true;
    EXPECT_EQ(WriteDesk::Refusal::None, take(write));
    EXPECT_EQ(WriteDesk::Refusal::None, take(write));
    write.values = {values::Value(0.0F)};
    EXPECT_EQ(WriteDesk::Refusal::OtherContent, take(write));
    EXPECT_EQ(2U, settled.size());
}

TEST_F(WriteDeskTest, SendsNothingUntilTheAuditHasItAndTellsNothingUntilItHasTheOutcome)
{
    addPlc(false);
    isDiskSlow = true;
    EXPECT_EQ(WriteDesk::Refusal::None, take(request(id(1), 5)));
    EXPECT_EQ(0, plant()->openWrites());
    EXPECT_FALSE(desk->find(id(1))->isSettled);
    answer({});
    EXPECT_EQ(1, plant()->openWrites());
    EXPECT_EQ(1U, audit.size());

    plant()->stop();
    removePlcs();
    ASSERT_EQ(2U, audit.size());
    EXPECT_EQ(AuditRecord::Outcome, audit[1].phase);
    EXPECT_EQ("notSent", audit[1].outcome.toStdString());
    EXPECT_TRUE(settled.empty());
    EXPECT_FALSE(desk->find(id(1))->isSettled);
    answer(Error{QStringLiteral("the disk is full")});
    ASSERT_EQ(1U, settled.size()) << "as if it were kept: it was so";
    EXPECT_EQ(WriteOutcome::NotSent, settled[0].kind);
    EXPECT_TRUE(desk->find(id(1))->isSettled);
    EXPECT_EQ(1U, desk->count(WriteOutcome::NotSent));
}

TEST_F(WriteDeskTest, SendsNothingThatTheAuditCannotHave)
{
    addPlc(false);
    isDiskSlow = true;
    take(request(id(1), 5));
    answer(Error{QStringLiteral("the disk is full")});
    answer({});
    EXPECT_EQ(0, plant()->openWrites());
    ASSERT_EQ(1U, settled.size());
    EXPECT_EQ(WriteOutcome::NotSent, settled[0].kind);
    EXPECT_EQ("the audit cannot be written, so nothing is: the disk is full",
              settled[0].reason.toStdString());
}

TEST_F(WriteDeskTest, AnswersWhoAsksAgainWhileTheAuditIsWaitedFor)
{
    addPlc(false);
    isDiskSlow = true;
    take(request(id(1), 5));
    take(request(id(1), 5));
    EXPECT_EQ(WriteDesk::Refusal::OtherContent, take(request(id(1), 6)));
    answer(Error{QStringLiteral("the disk is full")});
    take(request(id(1), 5));
    EXPECT_EQ(2U, audit.size());
    answer({});
    EXPECT_EQ(3U, settled.size());
}

TEST_F(WriteDeskTest, CountsThoseThatWaitForTheAuditAmongThoseUnderWay)
{
    addPlc(false);
    isDiskSlow = true;
    for (int i = 0; i < WriteDesk::kMostOpen; ++i)
        take(request(id(i), i));
    EXPECT_EQ(std::size_t(WriteDesk::kMostOpen), audit.size());
    take(request(id(100), 1));
    ASSERT_EQ(std::size_t(WriteDesk::kMostOpen) + 1, audit.size());
    EXPECT_EQ(AuditRecord::Outcome, audit.back().phase);
    EXPECT_EQ("too many writes are under way", audit.back().reason.toStdString());

    answer(Error{QStringLiteral("the disk is full")});
    take(request(id(101), 1));
    EXPECT_EQ("too many writes are under way", audit.back().reason.toStdString())
        << "the outcome of the first is not on record yet";
    for (int i = 1; i < WriteDesk::kMostOpen; ++i)
        answer({});
    EXPECT_EQ(WriteDesk::kMostOpen - 1, plant()->openWrites());
    answer({}); // the 101st
    answer({}); // the first
    EXPECT_EQ(2U, settled.size());
    take(request(id(102), 1));
    EXPECT_EQ(AuditRecord::Requested, audit.back().phase);
}

TEST_F(WriteDeskTest, JudgesAgainWhatWaitedForTheAudit)
{
    addPlc(false);
    isDiskSlow = true;
    take(request(id(1), 5));
    removePlcs();
    answer({});
    answer({});
    ASSERT_EQ(1U, settled.size());
    EXPECT_EQ("the PLC is not there any more", settled[0].reason.toStdString());

    addPlc(false);
    take(request(id(2), 5));
    removePlcs();
    addPlc(true);
    answer({});
    answer({});
    ASSERT_EQ(2U, settled.size());
    EXPECT_EQ("the PLC is read-only here", settled[1].reason.toStdString());
}

TEST_F(WriteDeskTest, DoesNotSendAtTheEndWhatStillWaitsForTheAudit)
{
    addPlc(false);
    isDiskSlow = true;
    take(request(id(1), 5));
    take(request(id(2), 6));
    answer({});
    desk->stop();
    ASSERT_EQ(3U, audit.size());
    EXPECT_EQ(id(2), audit[2].id);
    EXPECT_EQ("notSent", audit[2].outcome.toStdString());
    EXPECT_EQ("the program ends", audit[2].reason.toStdString());
    answer({}); // that the second was asked for
    EXPECT_EQ(1, plant()->openWrites()) << "only the first was sent";
    answer({});
    ASSERT_EQ(1U, settled.size());
    take(request(id(3), 7));
    EXPECT_EQ("the program ends", audit.back().reason.toStdString());
}

} // namespace
} // namespace plc::panel
