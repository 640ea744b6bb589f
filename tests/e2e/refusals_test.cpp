// One label that the PLC does not give, among others that it does; and what is told of reads and
// writes that were not carried out.

#include <QtCore/QRegularExpression>

#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

// Of area 1 the PLC has 100 bytes, so that it refuses every label but G.v0 to G.v4; of area 2 it
// has 2,400.
constexpr char kMemoryOfPlc[] = R"({
  'name': 'Smaller', 'areas': [{'index': 1, 'size': 100}, {'index': 2, 'size': 2400}],
  'scopes': []
})";

QByteArray projectOfHost()
{
    QByteArray variables, cyclic;
    for (int i = 0; i < 20; ++i) {
        const QByteArray number = QByteArray::number(i);
        variables += "{'name':'v" + number + "','type':'INT','area':1,'offset':" +
                     QByteArray::number(i < 5 ? 20 * i : 100 * i) + "},";
        cyclic += i < 7 ? ",'G.v" + number + "'" : "";
    }
    return "{'name':'Refused','settings':{'reconnectDelay':50,'reconnectDelayLimit':100},"
           "'areas':[{'index':1,'size':6000},{'index':2,'size':6000}],"
           "'scopes':[{'name':'G','variables':[" +
           variables +
           "{'name':'table','type':'INT','area':2,'offset':0,'array':[[1,2000]]}]}],'cyclic':[" +
           cyclic.mid(1) + "]}";
}

class Refusals : public Plant {
protected:
    void begin()
    {
        writeProject(kMemoryOfPlc);
        startSimulator();
        writeProject(projectOfHost());
        poke(1, 0, "0005");
    }
};

TEST_F(Refusals, OfTenLabelsTakeFewRequests)
{
    begin();
    const int before = status("requests");
    QStringList labels{QStringLiteral("G.v0"), QStringLiteral("G.v1")};
    for (int i = 5; i < 15; ++i)
        labels.append(QStringLiteral("G.v%1").arg(i));
    const Outcome outcome = run("read", labels);
    EXPECT_EQ(1, outcome.exitCode);
    ASSERT_FALSE(outcome.lines.isEmpty()) << testing::PrintToString(outcome);
    EXPECT_EQ("G.v0 = 5", outcome.lines[0].toStdString());
    EXPECT_EQ(10, outcome.errors.count(QStringLiteral("status 0x0031")))
        << outcome.errors.toStdString();
    // Two of the login; 12 labels in a tree of halves are 23 groups; and one alone is asked for
    // three times at most where its groups were refused less often.
    EXPECT_LE(status("requests") - before, 2 + 23 + 10);
    // Without a new login after a refusal.
    EXPECT_EQ(-1, outcome.errors.indexOf(QStringLiteral("lost")));
}

TEST_F(Refusals, AreToldOnceAndAllOthersAreRead)
{
    begin();
    const std::unique_ptr<LineProcess> host =
        start("run", {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("1"),
                      QStringLiteral("--for"), QStringLiteral("2s")});
    ASSERT_EQ(0, host->exitCode()) << host->errors().toStdString();
    QStringList told, good;
    for (const QString& line : host->restOfOutput()) {
        const QJsonObject object = parseJson(line);
        const QString event = object.value(QLatin1String("event")).toString();
        const QString label = object.value(QLatin1String("label")).toString();
        if (event == QLatin1String("refused")) {
            told.append(label);
            EXPECT_EQ(49, object.value(QLatin1String("status")).toInt());
            EXPECT_EQ(1, object.value(QLatin1String("area")).toInt());
            EXPECT_EQ(label == QLatin1String("G.v5") ? 500 : 600,
                      object.value(QLatin1String("address")).toInt());
        }
        if (event == QLatin1String("value") && !object.value(QLatin1String("stale")).toBool())
            good.append(label);
        if (event == QLatin1String("end")) {
            EXPECT_EQ(0, object.value(QLatin1String("linkLosses")).toInt(-1));
        }
    }
    told.sort();
    EXPECT_EQ(QStringLiteral("G.v5 G.v6"), told.join(QLatin1Char(' ')));
    good.removeDuplicates();
    good.sort();
    EXPECT_EQ(QStringLiteral("G.v0 G.v1 G.v2 G.v3 G.v4"), good.join(QLatin1Char(' ')));
}

TEST_F(Refusals, AreAllListedByDiagnose)
{
    begin();
    const Outcome outcome = run("diagnose", {});
    EXPECT_EQ(1, outcome.exitCode);
    const QString all = outcome.lines.join(QLatin1Char('\n')) + outcome.errors;
    EXPECT_TRUE(all.contains(QStringLiteral("G.v5"))) << all.toStdString();
    EXPECT_TRUE(all.contains(QStringLiteral("G.v6"))) << all.toStdString();
    EXPECT_TRUE(all.contains(QStringLiteral("0x0031"))) << all.toStdString();
}

TEST_F(Refusals, AreToldByLogAtOnce)
{
    begin();
    QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("log.csv"));
    const Outcome outcome = run(
        "log", {QStringLiteral("--output"), file, QStringLiteral("--for"), QStringLiteral("2s")});
    EXPECT_EQ(1, outcome.errors.count(QStringLiteral("the PLC refuses G.v5 (")))
        << outcome.errors.toStdString();
    EXPECT_EQ(1, outcome.errors.count(QStringLiteral("the PLC refuses G.v6 (")));
    QFile log(file);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QByteArray text = log.readAll();
    EXPECT_TRUE(text.contains("G.v5")) << text.toStdString();
    EXPECT_TRUE(text.contains("G.v0")) << text.toStdString();
}

TEST_F(Refusals, OfAWriteInTheMiddleTellWhatWasTaken)
{
    // The PLC has 2,400 of the 4,000 bytes: two requests of 1,000 bytes are taken.
    begin();
    QStringList values;
    for (int i = 0; i < 2000; ++i)
        values.append(QStringLiteral("7"));
    const Outcome outcome =
        run("write", {QStringLiteral("G.table[1]*2000=[") + values.join(QLatin1Char(',')) + ']'});
    EXPECT_EQ(1, outcome.exitCode);
    const QString all = outcome.lines.join(QLatin1Char('\n')) + outcome.errors;
    EXPECT_TRUE(all.contains(QStringLiteral("the first 1000 of 2000 elements were taken before")))
        << all.right(300).toStdString();
    EXPECT_EQ("00 07 00 00", peek(2, 1998, 4));
}

class NobodyListens : public Refusals {
protected:
    void begin()
    {
        writeProject(projectOfHost());
        usePort(1);
    }
};

TEST_F(NobodyListens, OneReadOfEachWasNotSent)
{
    begin();
    for (const char* command : {"run", "read"}) {
        const QStringList options = command == std::string("run")
                                        ? QStringList{QStringLiteral("--once")}
                                        : QStringList{QStringLiteral("G.v0")};
        const Outcome outcome = run(command, options);
        EXPECT_EQ(1, outcome.exitCode);
        const QString all = outcome.lines.join(QLatin1Char('\n')) + outcome.errors;
        EXPECT_TRUE(all.contains(QStringLiteral("not sent"))) << all.toStdString();
        EXPECT_FALSE(all.contains(QStringLiteral("carried out"))) << all.toStdString();
    }
}

TEST_F(NobodyListens, StationThatIsOffIsNotWaitedFor)
{
    begin();
    const Outcome outcome = run(
        "run", {QStringLiteral("--once"), QStringLiteral("--station-off"), QStringLiteral("0")});
    EXPECT_EQ(1, outcome.exitCode);
    const QString all = outcome.lines.join(QLatin1Char('\n')) + outcome.errors;
    EXPECT_TRUE(all.contains(QStringLiteral("not sent: station 0 is switched off")))
        << all.toStdString();
}

TEST_F(Refusals, ReadThatIsLostIsNeverSaidToBeCarriedOut)
{
    begin();
    for (const char* command : {"run", "read"}) {
        EXPECT_EQ("", simulator().command(QStringLiteral("drop 1")));
        const Outcome outcome =
            run(command, command == std::string("run") ? QStringList{QStringLiteral("--once")}
                                                       : QStringList{QStringLiteral("G.v0")});
        const QString all = outcome.lines.join(QLatin1Char('\n')) + outcome.errors;
        EXPECT_TRUE(all.contains(QStringLiteral("not read: no reply"))) << all.toStdString();
        EXPECT_FALSE(all.contains(QStringLiteral("carried out"))) << all.toStdString();
    }
}

TEST_F(Refusals, RunEndsWith1AfterAFailedWriteOfItsInput)
{
    begin();
    const std::unique_ptr<LineProcess> host =
        start("run", {QStringLiteral("--interval"), QStringLiteral("1")});
    host->send(QStringLiteral("write G.v9=1"));
    ASSERT_FALSE(
        host->waitForLine({QStringLiteral("write G.v9"), QStringLiteral("refused")}).isEmpty());
    host->send(QStringLiteral("quit"));
    EXPECT_EQ(1, host->exitCode());
}

TEST_F(Refusals, QuitWaitsForTheOutcomesOfWrites)
{
    begin();
    const std::unique_ptr<LineProcess> host =
        start("run", {QStringLiteral("--interval"), QStringLiteral("1")});
    ASSERT_FALSE(host->waitForLine({QStringLiteral("G.v0 = 5")}).isEmpty());
    EXPECT_EQ("", simulator().command(QStringLiteral("delay 100")));
    for (int i = 1; i <= 5; ++i)
        host->send(QStringLiteral("write G.v0=%1").arg(10 * i));
    host->send(QStringLiteral("quit"));
    EXPECT_EQ(0, host->exitCode());
    const QStringList lines = host->restOfOutput();
    EXPECT_EQ(5, lines.filter(QRegularExpression(QStringLiteral("write G.v0 = .*: done"))).size())
        << lines.join(QLatin1Char('\n')).toStdString();
    EXPECT_EQ(1, lines.filter(QStringLiteral("closed the link")).size());
    EXPECT_TRUE(lines.last().contains(QStringLiteral(" requests, ")));
    EXPECT_EQ("00 32", peek(1, 0, 2));
}

} // namespace
} // namespace plc::test
