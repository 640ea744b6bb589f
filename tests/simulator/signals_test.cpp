#include <gtest/gtest.h>

#include <QtCore/QDateTime>

#include <cmath>

#include "simulator/signals.h"
#include "simulator/value_access.h"
#include "tests/project/project_text.h"

namespace plc::simulator {
namespace {

/// A project whose values live.
class SignalsTest : public testing::Test {
protected:
    void load(const QByteArray& variables, const QByteArray& structures = "", quint32 seed = 1)
    {
        m_project = project::test::goodProject(project::test::projectText(variables, structures));
        m_memory = std::make_unique<PlcMemory>(m_project.areas);
        m_signals = std::make_unique<Signals>(m_project, m_memory.get(), seed);
    }

    /// One variable `v` with this type, array and signal.
    void loadOne(const char* type, const char* signal, const char* array = "")
    {
        load(QByteArray(R"({"name": "v", "area": 1, "offset": 16, "type": ")") + type + '"' +
             array + R"(, "signal": {)" + signal + "}}");
    }

    std::string value(const char* label = "MAIN.v") const
    {
        return loadText(*m_memory, find(label)).toStdString();
    }

    void write(const char* text, const char* label = "MAIN.v")
    {
        EXPECT_TRUE(storeText(m_memory.get(), find(label), QString::fromUtf8(text)));
    }

    void advance(qint64 milliseconds) { m_signals->advance(milliseconds); }

    project::Project m_project;
    std::unique_ptr<PlcMemory> m_memory;
    std::unique_ptr<Signals> m_signals;

private:
    project::LabelTarget find(const char* label) const
    {
        const auto target = project::LabelFinder(m_project).find(QString::fromUtf8(label));
        EXPECT_TRUE(target) << target.error().text.toStdString();
        return target.valueOr(project::LabelTarget());
    }
};

TEST_F(SignalsTest, ConstantIsStoredOnceAndWritesHold)
{
    loadOne("INT", R"("kind": "constant", "value": -7)");
    EXPECT_EQ("-7", value());
    write("5");
    advance(1000);
    EXPECT_EQ("5", value());
}

TEST_F(SignalsTest, ListOfConstantsGoesThroughTheElementsAndStartsOver)
{
    loadOne("STRING", R"("kind": "constant", "value": ["a", "b"])",
            R"(, "length": 4, "array": [[1, 3]])");
    EXPECT_EQ("'a'", value("MAIN.v[1]"));
    EXPECT_EQ("'b'", value("MAIN.v[2]"));
    EXPECT_EQ("'a'", value("MAIN.v[3]"));
}

TEST_F(SignalsTest, ConstantBitsAndTruthValues)
{
    load(R"({"name": "b", "type": "BIT", "area": 1, "offset": 3,
             "signal": {"kind": "constant", "value": true}},
            {"name": "c", "type": "BOOL", "area": 1, "offset": 4,
             "signal": {"kind": "constant", "value": true}})");
    EXPECT_EQ("TRUE", value("MAIN.b"));
    EXPECT_EQ("TRUE", value("MAIN.c"));
}

TEST_F(SignalsTest, RampRisesAndStartsOver)
{
    loadOne("REAL", R"("kind": "ramp", "from": 10, "to": 20, "period": 4)");
    EXPECT_EQ("10", value());
    advance(1000);
    EXPECT_EQ("12.5", value());
    advance(3000);
    EXPECT_EQ("17.5", value());
    advance(4000);
    EXPECT_EQ("10", value());
}

TEST_F(SignalsTest, SineSwingsAroundItsMean)
{
    loadOne("INT", R"("kind": "sine", "mean": 100, "amplitude": 40, "period": 8)");
    EXPECT_EQ("100", value());
    advance(2000);
    EXPECT_EQ("140", value());
    advance(5000);
    EXPECT_EQ("72", value());
    advance(6000);
    EXPECT_EQ("60", value());
}

TEST_F(SignalsTest, SquareIsHighForItsShareOfThePeriod)
{
    loadOne("INT", R"("kind": "square", "low": -1, "high": 3, "duty": 0.25, "period": 4)");
    EXPECT_EQ("3", value());
    advance(999);
    EXPECT_EQ("3", value());
    advance(1000);
    EXPECT_EQ("-1", value());
    advance(3999);
    EXPECT_EQ("-1", value());
    advance(4000);
    EXPECT_EQ("3", value());
}

TEST_F(SignalsTest, CounterStartsOverBehindItsEnd)
{
    loadOne("UINT", R"("kind": "counter", "from": 5, "to": 9, "step": 2, "interval": 0.5)");
    EXPECT_EQ("5", value());
    advance(499);
    EXPECT_EQ("5", value());
    advance(500);
    EXPECT_EQ("7", value());
    advance(1000);
    EXPECT_EQ("9", value());
    advance(1500);
    EXPECT_EQ("5", value());
    advance(1500 + 4 * 500);
    EXPECT_EQ("7", value());
}

TEST_F(SignalsTest, CounterGoesOnFromAWrittenValue)
{
    loadOne("UINT", R"("kind": "counter", "from": 0, "to": 1000, "interval": 1)");
    write("500");
    advance(999);
    EXPECT_EQ("500", value());
    advance(2000);
    EXPECT_EQ("502", value());
}

TEST_F(SignalsTest, WalkStaysWithinItsBoundsAndMovesByItsStep)
{
    loadOne("LREAL", R"("kind": "walk", "minimum": -2, "maximum": 3, "step": 0.5, "interval": 1)");
    double before = std::stod(value());
    double lowest = before;
    double highest = before;
    for (int second = 1; second <= 1000; ++second) {
        advance(1000 * second);
        const double now = std::stod(value());
        ASSERT_LE(std::abs(now - before), 0.5 + 1e-9);
        lowest = std::min(lowest, now);
        highest = std::max(highest, now);
        before = now;
    }
    EXPECT_GE(lowest, -2.0);
    EXPECT_LE(highest, 3.0);
    EXPECT_GT(highest - lowest, 2.0);
}

TEST_F(SignalsTest, WalkGoesOnFromAWrittenValueAndReturnsIntoItsBounds)
{
    loadOne("INT", R"("kind": "walk", "minimum": 0, "maximum": 100, "step": 1, "interval": 1)");
    write("50");
    advance(1000);
    EXPECT_NEAR(50.0, std::stod(value()), 1.0);
    write("30000");
    advance(2000);
    EXPECT_EQ("100", value());
}

TEST_F(SignalsTest, ReturnsFromAWrittenNotANumber)
{
    load(R"({"name": "w", "type": "REAL", "area": 1, "offset": 0, "signal":
             {"kind": "walk", "minimum": 0, "maximum": 100, "step": 1, "interval": 1}},
            {"name": "c", "type": "REAL", "area": 1, "offset": 4, "signal":
             {"kind": "counter", "from": 1, "to": 100, "interval": 1}})");
    m_memory->write(1, 0, QByteArray::fromHex("7fc000007fc00000"));
    advance(3000);
    EXPECT_TRUE(std::isfinite(std::stod(value("MAIN.w"))));
    EXPECT_TRUE(std::isfinite(std::stod(value("MAIN.c"))));
}

TEST_F(SignalsTest, EqualSeedsGiveEqualWalks)
{
    const QByteArray variable =
        R"({"name": "v", "type": "LREAL", "area": 1, "offset": 16, "signal":
            {"kind": "walk", "minimum": 0, "maximum": 1, "step": 0.1, "interval": 0.1}})";
    const auto after = [&](quint32 seed) {
        load(variable, "", seed);
        advance(10000);
        return value();
    };
    const std::string first = after(1);
    EXPECT_EQ(first, after(1));
    EXPECT_NE(first, after(2));
}

TEST_F(SignalsTest, ClockShowsTheTimeOfDayInItsSteps)
{
    loadOne("UDINT", R"("kind": "clock", "interval": 0.1)");
    constexpr qint64 kDay = 24 * 60 * 60 * 1000;
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    advance(1);
    const qint64 after = QDateTime::currentMSecsSinceEpoch();
    const qint64 shown = QString::fromStdString(value()).toLongLong();
    EXPECT_EQ(0, shown % 100);
    // Midnight may lie between.
    EXPECT_TRUE(shown == before / 100 * 100 % kDay || shown == after / 100 * 100 % kDay)
        << before << ' ' << shown << ' ' << after;
}

TEST_F(SignalsTest, PhaseMovesTheWholeAndSpreadEachElement)
{
    loadOne("INT", R"("kind": "ramp", "from": 0, "to": 100, "period": 10, "phase": 0.1,
                      "spread": 0.2)",
            R"(, "array": [[1, 3]])");
    EXPECT_EQ("10", value("MAIN.v[1]"));
    EXPECT_EQ("30", value("MAIN.v[2]"));
    EXPECT_EQ("50", value("MAIN.v[3]"));
    advance(6000);
    EXPECT_EQ("70", value("MAIN.v[1]"));
    EXPECT_EQ("90", value("MAIN.v[2]"));
    EXPECT_EQ("10", value("MAIN.v[3]"));
}

TEST_F(SignalsTest, MembersLiveInEveryInstance)
{
    load(R"({"name": "o", "type": "Outer", "area": 1, "offset": 100, "array": [[1, 2]]},
            {"name": "p", "type": "Outer", "area": 1, "offset": 200})",
         R"({"name": "Outer", "size": 8, "members":
                [{"name": "i", "type": "Inner", "offset": 2, "array": [[1, 2]]}]},
            {"name": "Inner", "size": 3, "members":
                [{"name": "n", "type": "USINT", "offset": 1,
                  "signal": {"kind": "constant", "value": [1, 2, 3, 4]}}]})");
    EXPECT_EQ("1", value("MAIN.o[1].i[1].n"));
    EXPECT_EQ("2", value("MAIN.o[1].i[2].n"));
    EXPECT_EQ("3", value("MAIN.o[2].i[1].n"));
    EXPECT_EQ("4", value("MAIN.o[2].i[2].n"));
    EXPECT_EQ("1", value("MAIN.p.i[1].n"));
    EXPECT_EQ(4, m_memory->read(1, 100 + 8 + 2 + 3 + 1, 1)[0]);
}

TEST_F(SignalsTest, TimeDoesNotRunBack)
{
    loadOne("UINT", R"("kind": "counter", "from": 0, "to": 1000, "interval": 1)");
    advance(5000);
    advance(1000);
    EXPECT_EQ("5", value());
    advance(6000);
    EXPECT_EQ("6", value());
}

TEST_F(SignalsTest, ValuesStayInTheRangeOfTheType)
{
    loadOne("SINT", R"("kind": "ramp", "from": 0, "to": 1000, "period": 10)");
    advance(5000);
    EXPECT_EQ("127", value());
}

TEST_F(SignalsTest, EveryElementCounts)
{
    load(R"({"name": "a", "type": "S", "area": 1, "offset": 0, "array": [[1, 4], [1, 5]]},
            {"name": "b", "type": "INT", "area": 1, "offset": 200},
            {"name": "c", "type": "INT", "area": 1, "offset": 202,
             "signal": {"kind": "constant", "value": 1}})",
         R"({"name": "S", "size": 6, "members":
                [{"name": "x", "type": "INT", "offset": 0, "array": [[1, 2]],
                  "signal": {"kind": "constant", "value": 1}},
                 {"name": "y", "type": "INT", "offset": 4}]})");
    EXPECT_EQ(41, countSignalValues(m_project));
}

TEST(CountSignalValues, OfAHugeProjectIsKnownWithoutWalkingIt)
{
    const project::Project project = project::test::goodProject(
        R"({"name": "n", "areas": [{"index": 0, "size": 2147483647}], "scopes": [{"name": "M",
            "variables": [{"name": "v", "type": "BYTE", "area": 0, "offset": 0,
                           "array": [[1, 2147483646]],
                           "signal": {"kind": "constant", "value": 1}}]}]})");
    EXPECT_GT(countSignalValues(project), kMostSignalValues);
}

} // namespace
} // namespace plc::simulator
