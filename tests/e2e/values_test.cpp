// What is shown is so: values that are whole, and reads and writes whose outcomes are told as they
// were.

#include <QtCore/QDateTime>
#include <QtCore/QThread>

#include <csignal>

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

/// The words of a label's values in a run's output: "LABEL = VALUE ...".
QStringList valuesOf(const QStringList& lines, const char* label)
{
    QStringList values;
    for (const QString& line : lines) {
        const QJsonObject object = parseJson(line);
        if (object.value(QLatin1String("event")).toString() == QLatin1String("value") &&
            object.value(QLatin1String("label")).toString() == QLatin1String(label) &&
            !object.value(QLatin1String("value")).isNull())
            values.append(object.value(QLatin1String("value")).toVariant().toString());
    }
    return values;
}

class ShownValues : public Plant {
protected:
    void useDemo()
    {
        QFile demo(QStringLiteral(PLC_SOURCE_DIR "/simulator/demo/plant.json"));
        ASSERT_TRUE(demo.open(QIODevice::ReadOnly));
        writeProject(demo.readAll());
        startSimulator();
    }
    /// Has the PLC change these places again and again while `run` reads at its full rate; each
    /// place has either the first or the second bytes. Returns the lines of the run.
    QStringList runWhileChanging(const QStringList& first, const QStringList& second)
    {
        const std::unique_ptr<LineProcess> host =
            start("run", {QStringLiteral("--json"), QStringLiteral("--interval"),
                          QStringLiteral("1"), QStringLiteral("--cycle"), QStringLiteral("0"),
                          QStringLiteral("--for"), QStringLiteral("1500ms")});
        for (int i = 0; host->isRunning(); ++i) {
            for (const QString& place : i % 2 == 0 ? second : first)
                EXPECT_EQ("", simulator().command(QStringLiteral("poke ") + place));
        }
        EXPECT_EQ(0, host->exitCode()) << host->errors().toStdString();
        return host->restOfOutput();
    }
    static void expectBoth(const QStringList& shown, const QString& a, const QString& b)
    {
        EXPECT_TRUE(shown.contains(a));
        EXPECT_TRUE(shown.contains(b));
        for (const QString& value : shown)
            EXPECT_TRUE(value == a || value == b) << value.toStdString();
    }
};

TEST_F(ShownValues, OfTheDemoPlantAreNeverHalvesOfTwoReplies)
{
    useDemo();
    // The serial number, 8 bytes around the 1,000th of area 1, and the note, 80 bytes of area 2.
    const QString first(QStringLiteral("11").repeated(8));
    const QString second(QStringLiteral("22").repeated(8));
    const QStringList before{QStringLiteral("1 996 ") + first,
                             QStringLiteral("2 468 ") + QStringLiteral("41").repeated(60)};
    const QStringList after{QStringLiteral("1 996 ") + second,
                            QStringLiteral("2 468 ") + QStringLiteral("42").repeated(60)};
    for (const QString& place : before)
        ASSERT_EQ("", simulator().command(QStringLiteral("poke ") + place));
    const QStringList lines = runWhileChanging(before, after);
    // 16#1111111111111111 and 16#2222222222222222.
    expectBoth(valuesOf(lines, "Totals.serial"), QStringLiteral("1229782938247303441"),
               QStringLiteral("2459565876494606882"));
    expectBoth(valuesOf(lines, "Recipes.note"), QString(60, QLatin1Char('A')),
               QString(60, QLatin1Char('B')));
}

TEST_F(ShownValues, OfSeveralRepliesAreMarkedInEveryJson)
{
    writeProject(R"({'name': 'Pieced', 'settings': {'maxReadBytes': 200},
      'areas': [{'index': 1, 'size': 2000}],
      'scopes': [{'name': 'W', 'variables': [
        {'name': 'fits', 'type': 'INT', 'area': 1, 'offset': 0, 'array': [[1, 400]]},
        {'name': 'long', 'type': 'INT', 'area': 1, 'offset': 800, 'array': [[1, 500]]}]}],
      'cyclic': [{'label': 'W.fits[1]', 'elements': 400}, {'label': 'W.long[1]', 'elements': 500}]})");
    startSimulator();
    const QString json = QStringLiteral("--json");
    const QStringList labels{QStringLiteral("W.fits[1]*400"), QStringLiteral("W.long[1]*500")};
    for (const Outcome& outcome :
         {run("read", QStringList{json} + labels), run("run", {json, QStringLiteral("--once")})}) {
        ASSERT_EQ(2, outcome.lines.size()) << testing::PrintToString(outcome);
        for (int i = 0; i < 2; ++i) {
            const QJsonObject object = parseJson(outcome.lines[i]);
            EXPECT_EQ(labels[i], object.value(QLatin1String("label")).toString());
            EXPECT_EQ(i == 1, object.value(QLatin1String("pieced")).toBool())
                << outcome.lines[i].toStdString();
        }
    }
}

TEST_F(ShownValues, AreWholeHoweverSmallTheEntriesAre)
{
    // 99 entries of 7 bytes make a request of 693: the 800 bytes of the table would take two.
    writeProject(R"({'name': 'Whole', 'settings': {'maxReadBytes': 7},
      'areas': [{'index': 1, 'size': 1000}],
      'scopes': [{'name': 'W', 'variables': [
        {'name': 'text', 'type': 'STRING', 'length': 30, 'area': 1, 'offset': 0},
        {'name': 'table', 'type': 'INT', 'area': 1, 'offset': 100, 'array': [[1, 400]]}]}],
      'cyclic': ['W.text', {'label': 'W.table[1]', 'elements': 400}]})");
    startSimulator();
    const QStringList first{QStringLiteral("1 0 ") + QStringLiteral("41").repeated(30),
                            QStringLiteral("1 100 ") + QStringLiteral("0001").repeated(400)};
    const QStringList second{QStringLiteral("1 0 ") + QStringLiteral("42").repeated(30),
                             QStringLiteral("1 100 ") + QStringLiteral("0002").repeated(400)};
    for (const QString& place : first)
        ASSERT_EQ("", simulator().command(QStringLiteral("poke ") + place));
    const int before = status("requests");
    EXPECT_EQ("'" + std::string(30, 'A') + "'", readText(QStringLiteral("W.text")));
    EXPECT_EQ(3, status("requests") - before) << "the login and one request";
    const QStringList lines = runWhileChanging(first, second);
    expectBoth(valuesOf(lines, "W.text"), QString(30, QLatin1Char('A')),
               QString(30, QLatin1Char('B')));
    for (const QString& line : lines) {
        const QJsonObject object = parseJson(line);
        const QVariantList elements = object.value(QLatin1String("value")).toVariant().toList();
        for (const QVariant& element : elements)
            ASSERT_EQ(elements.first(), element) << line.toStdString();
    }
}

TEST_F(ShownValues, AreNotFreshAfterTheProgramStoodStill)
{
    // The counter goes on by one fifty times a second; a request is always under way.
    writeProject(R"({'name': 'Stopped', 'settings': {'replyTimeout': 300, 'reconnectDelay': 100},
      'areas': [{'index': 1, 'size': 100}],
      'scopes': [{'name': 'S', 'variables': [
        {'name': 'a', 'type': 'UDINT', 'area': 1, 'offset': 0,
         'signal': {'kind': 'counter', 'from': 0, 'to': 4000000000, 'interval': 0.02}}]}],
      'cyclic': ['S.a']})");
    startSimulator({QStringLiteral("--reply-delay"), QStringLiteral("100")});
    const std::unique_ptr<LineProcess> host =
        start("run", {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("1"),
                      QStringLiteral("--cycle"), QStringLiteral("0")});
    ASSERT_FALSE(host->waitForLine({QStringLiteral("\"event\":\"value\"")}).isEmpty());
    ASSERT_EQ(0, kill(pid_t(host->pid()), SIGSTOP));
    QThread::msleep(900);
    const QDateTime goesOn = QDateTime::currentDateTimeUtc();
    const int counter =
        QByteArray::fromHex(QByteArray::fromStdString(peek(1, 0, 4))).toHex().toInt(nullptr, 16);
    ASSERT_EQ(0, kill(pid_t(host->pid()), SIGCONT));
    for (int shown = 0; shown < counter;) {
        const QString line = host->nextLine();
        ASSERT_FALSE(line.isEmpty());
        const QJsonObject object = parseJson(line);
        const QDateTime time = QDateTime::fromString(object.value(QLatin1String("time")).toString(),
                                                     Qt::ISODateWithMs);
        if (object.value(QLatin1String("event")).toString() != QLatin1String("value") ||
            object.value(QLatin1String("stale")).toBool() || time < goesOn)
            continue;
        // Read before the stop, and told so.
        if (object.value(QLatin1String("age")).toInt() >= 900)
            continue;
        shown = object.value(QLatin1String("value")).toInt();
        EXPECT_GE(shown, counter) << line.toStdString();
    }
}

} // namespace
} // namespace plc::test
