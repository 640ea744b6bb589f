// Replies that come late, in pieces, doubled, by halves, or not at all.

#include <QtCore/QJsonArray>
#include <QtCore/QSet>

#include "tests/e2e/plant.h"
#include "tests/e2e/scripted_plc.h"

namespace plc::test {
namespace {

constexpr int kVariables = 24;
constexpr int kElements = 400;

/// Each variable is so long that it fills a request: every value comes in a reply of its own.
QByteArray patientProject()
{
    QByteArray variables, cyclic;
    for (int i = 0; i < kVariables; ++i) {
        const QByteArray separator = i > 0 ? "," : "";
        const QByteArray number = QByteArray::number(i);
        variables += separator + "{'name':'v" + number +
                     "','type':'UINT','area':1,'offset':" + QByteArray::number(1000 * i) +
                     ",'array':[[0,399]],'signal':{'kind':" + "'constant','value':" +
                     QByteArray::number(1000 + i) + "}}";
        cyclic += separator + "{'label':'F.v" + number + "[0]','elements':400}";
    }
    return "{'name':'Faults','settings':{'maxReadBytes':800,'replyTimeout':300,'retryLimit':2,"
           "'reconnectDelay':20,'reconnectDelayLimit':50,'staleAfter':60000},"
           "'areas':[{'index':1,'size':24000}],'scopes':[{'name':'F','variables':[" +
           variables + "]}],'cyclic':[" + cyclic + "]}";
}

class Faults : public Plant {
protected:
    Faults() { writeProject(patientProject()); }

    /// Reads until every value has come once. No value that is shown on the way may be another's:
    /// each element of v<i> is 1000 + i.
    void readAllRight()
    {
        const std::unique_ptr<LineProcess> host =
            start("run", {QStringLiteral("--json"), QStringLiteral("--interval"),
                          QStringLiteral("10"), QStringLiteral("--cycle"), QStringLiteral("1")});
        QSet<int> seen;
        while (seen.size() < kVariables) {
            const QString line = host->waitForLine({QStringLiteral("\"event\":\"value\"")});
            ASSERT_FALSE(line.isEmpty()) << host->errors().toStdString();
            const QJsonObject object = parseJson(line);
            const int number = object.value(QLatin1String("label"))
                                   .toString()
                                   .mid(3)
                                   .section(QLatin1Char('['), 0, 0)
                                   .toInt();
            const QJsonArray values = object.value(QLatin1String("value")).toArray();
            ASSERT_EQ(kElements, values.size()) << line.toStdString();
            for (const QJsonValue& element : values)
                ASSERT_EQ(1000 + number, element.toInt());
            seen.insert(number);
        }
    }
};

TEST_F(Faults, RepliesInSingleBytesAreReadRight)
{
    writeProject(
        QByteArray(patientProject()).replace("'replyTimeout':300", "'replyTimeout':20000"));
    startSimulator({QStringLiteral("--fragment"), QStringLiteral("1")});
    EXPECT_EQ("1003", readText(QStringLiteral("F.v3[7]")));
}

TEST_F(Faults, RepliesInPiecesOfAnySizeAreReadRight)
{
    startSimulator({QStringLiteral("--fragment"), QStringLiteral("313")});
    readAllRight();
}

TEST_F(Faults, AReplyThatComesTwiceNeverAnswersTheNextRequest)
{
    startSimulator({QStringLiteral("--duplicate-reply"), QStringLiteral("3")});
    readAllRight();
}

TEST_F(Faults, AReplyThatComesAfterTheTimeOutNeverAnswersALaterRequest)
{
    startSimulator({QStringLiteral("--late-reply"), QStringLiteral("5:450")});
    readAllRight();
}

TEST_F(Faults, HalfAReplyAndThenSilenceEndsWithTheTimeOut)
{
    startSimulator({QStringLiteral("--half-reply"), QStringLiteral("2")});
    readAllRight();
}

TEST_F(Faults, LostRepliesAreAskedForAgain)
{
    startSimulator({QStringLiteral("--drop-replies"), QStringLiteral("3")});
    readAllRight();
}

TEST_F(Faults, ARefusedLoginEndsWithExitCode1AndSaysSo)
{
    writeProject(
        QByteArray(patientProject()).replace("'replyTimeout':300", "'replyTimeout':20000"));
    startSimulator({QStringLiteral("--refuse-login")});
    const Outcome outcome = run("read", {QStringLiteral("F.v0[0]")});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("refused the login")))
        << outcome.errors.toStdString();
}

TEST_F(Faults, ALoginThatIsRefusedForAWhileIsTriedAgain)
{
    startSimulator({QStringLiteral("--refuse-login")});
    const std::unique_ptr<LineProcess> host = start(
        "run", {QStringLiteral("--json"), QStringLiteral("--interval"), QStringLiteral("20")});
    ASSERT_FALSE(host->waitForLine({QStringLiteral("refused the login")}).isEmpty());
    ASSERT_FALSE(host->waitForLine({QStringLiteral("refused the login")}).isEmpty());
    EXPECT_EQ("", simulator().command(QStringLiteral("refuse-login off")));
    EXPECT_FALSE(
        host->waitForLine({QStringLiteral("F.v3[0]"), QStringLiteral("[1003,")}).isEmpty());
}

TEST_F(Faults, AReadThatThePlcRefusesIsRetriedAsOftenAsConfigured)
{
    // Area 1 ends at 24000 in the PLC's project, and later in the host's.
    startSimulator();
    writeProject(QByteArray(patientProject())
                     .replace("'replyTimeout':300", "'replyTimeout':20000")
                     .replace("'size':24000", "'size':32000")
                     .replace("'offset':0,", "'offset':31000,"));
    const int before = status("requests");
    const Outcome outcome = run("read", {QStringLiteral("F.v0[0]")});
    EXPECT_EQ(1, outcome.exitCode);
    EXPECT_TRUE(outcome.errors.contains(QStringLiteral("status 0x0031")))
        << outcome.errors.toStdString();
    // Two of the login, the read, two of another login, because the PLC may not like the first, the
    // read again, and two retries.
    EXPECT_EQ(8, status("requests") - before);
}

TEST_F(Faults, AnAnswerToAnotherReadIsNotTakenForThisOne)
{
    // A whole good reply, but with two data bytes more than were asked for.
    ScriptedPlc plc({loginReply(200), loginReply(30),
                     QByteArray::fromHex("BBBB0000000B 0000 00000001 00 12345678")});
    usePort(plc.port());
    const std::unique_ptr<LineProcess> host = start(
        "read", {QStringLiteral("F.v0[0]"), QStringLiteral("--timeout"), QStringLiteral("300")});
    plc.serve(*host);
    EXPECT_EQ(1, host->exitCode());
    EXPECT_TRUE(host->restOfOutput().isEmpty());
}

TEST_F(Faults, RubbishInPlaceOfAReplyEndsWithExitCode1)
{
    ScriptedPlc plc({QByteArray("HTTP/1.1 400 Bad Request\r\n\r\n")});
    usePort(plc.port());
    const std::unique_ptr<LineProcess> host = start(
        "read", {QStringLiteral("F.v0[0]"), QStringLiteral("--timeout"), QStringLiteral("300")});
    plc.serve(*host);
    EXPECT_EQ(1, host->exitCode());
}

TEST_F(Faults, APlcThatAcceptsAndStaysSilentEndsWithExitCode1)
{
    ScriptedPlc plc({});
    usePort(plc.port());
    const std::unique_ptr<LineProcess> host = start(
        "read", {QStringLiteral("F.v0[0]"), QStringLiteral("--timeout"), QStringLiteral("300")});
    plc.serve(*host);
    EXPECT_EQ(1, host->exitCode());
    EXPECT_TRUE(host->errors().contains(QStringLiteral("no reply within 300 ms")));
}

} // namespace
} // namespace plc::test
