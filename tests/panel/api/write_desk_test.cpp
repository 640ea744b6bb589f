#include "panel/api/write_desk.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include "panel/plants/plants.h"
#include "tests/support/test_folder.h"

namespace plc::panel {
namespace {

constexpr char kProject[] = R"json({
  "name": "A tank",
  "plc": {"address": "127.0.0.1", "port": 1200},
  "areas": [{"index": 1, "size": 64}],
  "scopes": [{"name": "T", "variables": [{"name": "set", "type": "INT", "area": 1, "offset": 0}]}]})json";

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

    std::vector<AuditRecord> audit;
    std::vector<WriteOutcome> settled;
    qint64 now = 0;

private:
    QTemporaryDir m_folder;
    NoListener m_listener;
    Plants m_plants;

protected:
    std::shared_ptr<WriteDesk> desk = std::make_shared<WriteDesk>(
        &m_plants,
        [this](const AuditRecord& record) {
            audit.push_back(record);
            return Expected<void>();
        },
        [this] { return ++now; });
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
    const auto id = [](int i) { return QStringLiteral("w%1").arg(i); };
    for (int i = 0; i <= WriteDesk::kMostKept; ++i)
        ASSERT_EQ(WriteDesk::Refusal::None, take(request(id(i), i % 100)));
    const std::size_t before = settled.size();
    EXPECT_EQ(std::size_t(WriteDesk::kMostKept) + 1, before);

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
}

} // namespace
} // namespace plc::panel
