#include "host/report/scan_plan.h"

#include <vector>

#include "host/points/symbol_list.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

class ScanPlanTest : public ::testing::Test {
protected:
    ScanPlanTest() : project(testProject()), symbols(symbolList(project))
    {
        builtDriver().passVarName2(&symbols);
    }

    QVector<DataPoint> points(const QStringList& labels) const
    {
        const DataPointFinder finder(project, setup::runtimeSettings(project.settings, 0),
                                     builtDriver());
        QVector<DataPoint> found;
        for (const QString& label : labels) {
            const Expected<DataPoint> point = finder.find(label);
            EXPECT_TRUE(point) << point.error().text.toStdString();
            found.append(point.valueOr(DataPoint()));
        }
        return found;
    }
    ScanPlanner planner(const QStringList& labels) const
    {
        return ScanPlanner(takenDriver(), setup::runtimeSettings(project.settings, 0),
                           points(labels));
    }
    /// 150 values of four bytes, the next one beginning 16 bytes behind the one before.
    static QStringList spreadLabels()
    {
        QStringList labels;
        for (int i = 0; i < 600; i += 4)
            labels.append(QStringLiteral("Big.block[%1]").arg(i));
        return labels;
    }

    project::Project project;
    QList<Label_Type_Info> symbols;
};

TEST_F(ScanPlanTest, NeighboursShareAnEntryAndTheGapBetweenThemIsRead)
{
    // Bytes 4 to 7 and 12 to 15 of area 1.
    ScanPlanner planner = this->planner({"Main.speed", "Main.count", "Main.long"});
    const ScanPlan plan = planner.plan(200);
    EXPECT_EQ(8, planner.valueBytes());
    EXPECT_EQ(200, plan.maxReadBytes);
    EXPECT_EQ(1, plan.entries);
    EXPECT_EQ(1, plan.requests);
    EXPECT_EQ(plan.bytesSent, 16 + 10);
    EXPECT_EQ(plan.bytesReceived, 12 + 1 + 12);
    EXPECT_EQ(12, plan.memoryBytes);
    EXPECT_EQ(4, plan.gapBytes);
    EXPECT_DOUBLE_EQ(gapShare(plan), 4.0 / 12.0);
}

TEST_F(ScanPlanTest, WithoutMergingThereIsNoGapButAnEntryForEachValue)
{
    const ScanPlan plan = planner({"Main.speed", "Main.count", "Main.long"}).plan(1);
    EXPECT_EQ(3, plan.entries);
    EXPECT_EQ(1, plan.requests);
    EXPECT_EQ(plan.bytesSent, 16 + 3 * 10);
    EXPECT_EQ(plan.bytesReceived, 12 + 3 * 1 + 8);
    EXPECT_EQ(0, plan.gapBytes);
}

TEST_F(ScanPlanTest, ASettingWithWhichTheDriverReadsNothingIsNotTheBest)
{
    project::Variable block;
    block.name = QStringLiteral("block");
    block.type = values::findIecType(QStringLiteral("DINT"));
    block.area = 7;
    block.dimensions = {{0, 99999}};
    project.settings.maxReadBytes = 1000;
    project.scopes = {{QStringLiteral("Huge"), {block}}};
    symbols = symbolList(project);
    builtDriver().passVarName2(&symbols);
    // 400,000 bytes: more than 65,536 pieces of 6 bytes or less.
    ScanPlanner planner = this->planner({"Huge.block[0]*100000"});
    const ScanPlan best = planner.best({1, 100}, planner.plan(1000));
    EXPECT_GE(best.maxReadBytes, 7);
    EXPECT_EQ(400000, best.memoryBytes);
    EXPECT_GT(best.requests, 6);
}

TEST_F(ScanPlanTest, LongValuesTakeAsManyRequestsAsTheirEntriesFill)
{
    // 2400 bytes.
    ScanPlanner planner = this->planner({"Big.block[0]*600"});
    const ScanPlan ofTwelve = planner.plan(200);
    EXPECT_EQ(12, ofTwelve.entries);
    EXPECT_EQ(3, ofTwelve.requests) << "four entries of 200 bytes fit into a request";
    EXPECT_EQ(ofTwelve.bytesSent, 3 * (16 + 4 * 10));
    EXPECT_EQ(ofTwelve.bytesReceived, 3 * (12 + 4 * 201));
    const ScanPlan ofThree = planner.plan(998);
    EXPECT_EQ(3, ofThree.entries);
    EXPECT_EQ(3, ofThree.requests);
    const ScanPlan ofOne = planner.plan(2400);
    EXPECT_EQ(1, ofOne.requests);
    EXPECT_EQ(ofOne.bytesReceived, 12 + 1 + 2400);
    EXPECT_EQ(0, ofOne.gapBytes);
}

TEST_F(ScanPlanTest, TellsAfterEachSettingHowManyOfHowManyWereTried)
{
    ScanPlanner planner = this->planner({"Main.speed"});
    QVector<int> dones, totals;
    planner.best(NetworkModel(), planner.plan(200), [&](int done, int total) {
        dones.append(done);
        totals.append(total);
    });
    ASSERT_GT(dones.size(), 1);
    for (int i = 0; i < int(dones.size()); ++i) {
        EXPECT_EQ(dones[i], i + 1);
        EXPECT_EQ(totals[i], int(dones.size()));
    }
}

TEST_F(ScanPlanTest, BytesOfSeveralValuesCountOnce)
{
    ScanPlanner planner = this->planner({"Big.block[0]*2", "Big.block[1]*2", "Main.long"});
    EXPECT_EQ(planner.valueBytes(), 3 * 4 + 4);
    EXPECT_EQ(0, planner.plan(200).gapBytes);
}

TEST_F(ScanPlanTest, BytesThatTwoEntriesReadCountAsGap)
{
    // Without merging, entries of different addresses stay as they are.
    const ScanPlan plan = planner({"Big.block[0]*2", "Big.block[1]*2"}).plan(1);
    EXPECT_EQ(16, plan.memoryBytes);
    EXPECT_EQ(4, plan.gapBytes);
}

TEST_F(ScanPlanTest, TimeIsThatOfTheRoundTripsAndOfTheBytes)
{
    ScanPlan plan;
    plan.requests = 3;
    plan.bytesSent = 1000;
    plan.bytesReceived = 11500;
    // 100,000 bits take 10 ms at 10 Mbit/s.
    EXPECT_DOUBLE_EQ(scanTime(plan, {2.5, 10}), 3 * 2.5 + 10);
}

TEST_F(ScanPlanTest, LastRequestIsFilledUpWithEntriesOfTheNextPass)
{
    const ScanPlan plan = planner(spreadLabels()).plan(4);
    EXPECT_EQ(150, plan.entries);
    EXPECT_EQ(2, plan.requests);
    EXPECT_EQ(plan.bytesSent, 2 * (16 + 99 * 10));
    EXPECT_EQ(plan.bytesReceived, 2 * (12 + 99 * 5));
    EXPECT_EQ(plan.memoryBytes, 150 * 4);
    EXPECT_EQ(0, plan.gapBytes);
}

TEST_F(ScanPlanTest, GapsAreReadWhereThatSavesARoundTrip)
{
    ScanPlanner planner = this->planner(spreadLabels());
    const ScanPlan best = planner.best({10, 100}, planner.plan(4));
    EXPECT_EQ(1, best.requests);
    EXPECT_GT(best.gapBytes, 0);
}

TEST_F(ScanPlanTest, GapsAreNotReadWhereThatSavesNothing)
{
    ScanPlanner planner = this->planner({"Big.same", "Big.far"});
    const ScanPlan asItIs = planner.plan(16000);
    EXPECT_EQ(2, asItIs.entries);
    const ScanPlan best = planner.best({10, 100}, asItIs);
    EXPECT_EQ(1, best.requests);
    EXPECT_EQ(2, best.entries);
    EXPECT_EQ(0, best.gapBytes);
}

TEST_F(ScanPlanTest, WhatIsBestIsHardlySlowerThanAnyOtherSetting)
{
    ScanPlanner planner = this->planner(spreadLabels() + QStringList{"Main.speed", "Big.far"});
    const ScanPlan asItIs = planner.plan(200);
    std::vector<ScanPlan> others;
    for (int maxReadBytes = 1; maxReadBytes < 17000; maxReadBytes += 7)
        others.push_back(planner.plan(maxReadBytes));
    for (const NetworkModel& network :
         {NetworkModel{0, 1}, NetworkModel{0.2, 100}, NetworkModel{1, 10}, NetworkModel{10, 100}}) {
        const ScanPlan best = planner.best(network, asItIs);
        double shortest = scanTime(best, network);
        for (const ScanPlan& other : others)
            shortest = qMin(shortest, scanTime(other, network));
        EXPECT_LT(scanTime(best, network), shortest * 1.05)
            << network.roundTrip << " ms, " << network.bandwidth << " Mbit/s";
    }
}

TEST_F(ScanPlanTest, SettingThatIsAlreadyBestIsKept)
{
    ScanPlanner planner = this->planner({"Main.speed", "Main.count"});
    const ScanPlan asItIs = planner.plan(150);
    EXPECT_EQ(150, planner.best({1, 100}, asItIs).maxReadBytes);
}

/// A host that reads the same values and sees what goes over the link.
class ScanOfRuntimeTest : public HostTest {
protected:
    void requestSent(const SentRequest& request) override
    {
        content = request.content;
        sentSize = int(request.frame.size());
    }

    RequestContent content;
    int sentSize = 0;
};

TEST_F(ScanOfRuntimeTest, LogsInBehindAPlan)
{
    runtime.reset();
    QList<Label_Type_Info> symbols = symbolList(project);
    builtDriver().passVarName2(&symbols);
    const RuntimeSettings planned = setup::runtimeSettings(project.settings, 0);
    const DataPointFinder finder(project, planned, builtDriver());
    EXPECT_EQ(1,
              ScanPlanner(takenDriver(), planned, {*finder.find("Main.speed")}).plan(200).requests);
    runtime = std::make_unique<Runtime>(takenDriver(), planned, project, this);
    cycle({"Main.speed"});
    connect();
    logIn();
}

TEST_F(ScanOfRuntimeTest, SendsWhatIsPlanned)
{
    QVector<DataPoint> points;
    for (int i = 0; i < 600; i += 4)
        points.append(point(qPrintable(QStringLiteral("Big.block[%1]").arg(i))));
    for (const char* label : {"Main.text", "Io.lamp[0]*20", "Main.axis[2].speed", "Big.far"})
        points.append(point(label));
    runtime->readCyclically(points, now);
    connect();
    logIn();
    int requests = 0;
    qint64 bytesSent = 0;
    qint64 bytesReceived = 0;
    while (session().passes() == 0) {
        actions();
        QByteArray data(6, '\0');
        for (const FrameEntry& entry : content.entries)
            data += QByteArray(1 + int(entry.length), '\0');
        const QByteArray reply = frameOf(data);
        ++requests;
        bytesSent += sentSize;
        bytesReceived += reply.size();
        answer(reply);
    }
    session().stop();
    runtime.reset();

    QList<Label_Type_Info> symbols = symbolList(project);
    builtDriver().passVarName2(&symbols);
    const ScanPlan plan =
        ScanPlanner(takenDriver(), setup::runtimeSettings(project.settings, 0), points).plan(200);
    EXPECT_EQ(plan.requests, requests);
    EXPECT_EQ(plan.bytesSent, bytesSent);
    EXPECT_EQ(plan.bytesReceived, bytesReceived);
    EXPECT_EQ(2, requests);
}

} // namespace
} // namespace test
} // namespace plc::host
