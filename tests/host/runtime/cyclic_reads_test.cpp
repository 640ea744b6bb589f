#include "host/runtime/cyclic_reads.h"

#include <set>

#include "host/driver/request_records.h"
#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

/// A PLC that refuses each read that touches certain bytes, and gives every other byte the number
/// of the reply. Time passes only where a test says so: whatever goes out in between, went without
/// a pause.
class RefusedReads : public HostTest {
protected:
    /// An INT of area 2.
    DataPoint valueAt(int address)
    {
        DataPoint value = m_pattern;
        value.address = address;
        value.text = QStringLiteral("v%1").arg(address);
        return value;
    }
    DataPoint bytesAt(int address, int count)
    {
        DataPoint value = valueAt(address);
        value.type = values::findIecType(QStringLiteral("BYTE"));
        value.elements = count;
        return value;
    }
    /// So many INTs, too far apart to share an entry.
    QVector<DataPoint> scattered(int count)
    {
        QVector<DataPoint> points;
        for (int i = 0; i < count; ++i)
            points.append(valueAt(20 * i));
        return points;
    }
    /// Twelve values of 200 bytes, of which four fill a request.
    QVector<DataPoint> threeRequests()
    {
        QVector<DataPoint> points;
        for (int i = 0; i < 12; ++i)
            points.append(bytesAt(1000 * i, 200));
        return points;
    }
    void begin(const QVector<DataPoint>& points)
    {
        runtime->readCyclically(points, now);
        connect();
        logIn();
    }

    void requestSent(const SentRequest& request) override { m_category = request.category; }

    /// Answers the request that has gone out; false if there is none. What it was is added to
    /// `story`: C for a cyclic one, P for a probe, in lower case if it is refused, W for a write, I
    /// for the read that shows that replies fit, L for each frame of a login.
    bool serve()
    {
        const std::string done = actions();
        if (done.empty())
            return false;
        EXPECT_EQ("S", done);
        const RequestContent content = parseRequest(sent);
        lastEntries = content.entries;
        if (content.isLogin()) {
            story += 'L';
            ++loginFrames;
            answer(content.service == Service::File ? fileReply() : identificationReply());
            return true;
        }
        if (m_category == kWriteCategory) {
            story += 'W';
            answer(writeReply());
            return true;
        }
        bool isRefused = loginFrames < loginFramesNeeded;
        QByteArray payload(6, '\0');
        for (const FrameEntry& entry : lastEntries) {
            const auto found = refusedBytes.lower_bound(entry.address);
            isRefused =
                isRefused || (found != refusedBytes.end() && *found < entry.address + entry.length);
            payload +=
                QByteArray(1, '\0') + QByteArray(int(entry.length), char(story.size() % 100));
        }
        const char kind = m_category == kProbeCategory    ? 'P'
                          : m_category == kInStepCategory ? 'I'
                                                          : 'C';
        story += isRefused ? char(kind + 'a' - 'A') : kind;
        answer(isRefused ? refusal() : frameOf(payload));
        return true;
    }
    void serve(int count)
    {
        for (int i = 0; i < count; ++i)
            ASSERT_TRUE(serve()) << story;
    }
    /// Serves for so many milliseconds, one request every ten where there are any.
    void serveFor(int milliseconds)
    {
        for (int i = 0; i < milliseconds; i += 10) {
            passTime(10);
            serve();
        }
    }
    int requestsWith(char kind) const { return int(std::count(story.begin(), story.end(), kind)); }
    int probes() const { return requestsWith('P') + requestsWith('p'); }
    bool isAsked(int address) const
    {
        return std::any_of(lastEntries.begin(), lastEntries.end(), [address](const FrameEntry& e) {
            return int(e.address) <= address && address < int(e.address + e.length);
        });
    }

    std::set<quint32> refusedBytes;
    int loginFrames = 0;
    int loginFramesNeeded = 0; ///< Until then everything is refused.
    std::string story;
    QVector<FrameEntry> lastEntries;

private:
    DataPoint m_pattern = point("Big.far");
    int m_category = 0;
};

TEST_F(RefusedReads, AreFoundByProbesBetweenTheReadsOfAllOthers)
{
    refusedBytes = {5007};
    begin(threeRequests());
    // Rows 0-3; 4-7 refused; 4, 5 refused; 8-11; 4; 0-3; 5 refused for the third time; 8-11; 6, 7.
    serve(9);
    EXPECT_EQ("CcpCPCpCP", story);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, refusedValues);
    EXPECT_TRUE(runtime->values().isRefused(5));
    EXPECT_EQ(5, runtime->values().refusalStatus(5));
    for (int row = 0; row < 12; ++row)
        EXPECT_EQ(runtime->values().wasRead(row), row != 5) << row;
    // From now on three requests read the eleven others, and nothing else goes out.
    serve(30);
    EXPECT_EQ(std::string(30, 'C'), story.substr(9));
    for (int row = 0; row < 12; ++row)
        EXPECT_GE(runtime->values().reads(row), row == 5 ? 0u : 10u) << row;
    EXPECT_EQ(0u, runtime->values().reads(5));
}

TEST_F(RefusedReads, AreTriedAloneAfterTenSecondsAndReadOnceThePlcGivesThem)
{
    refusedBytes = {5007};
    begin(threeRequests());
    serve(7);
    ASSERT_EQ(1u, refusedValues.size());
    const int tried = probes();
    serveFor(9990);
    EXPECT_EQ(probes(), tried + 1) << "the rest of the search";
    serveFor(20);
    ASSERT_EQ(probes(), tried + 2);
    serveFor(9900);
    EXPECT_EQ(probes(), tried + 2);
    EXPECT_EQ(1u, refusedValues.size()) << "told once";
    refusedBytes.clear();
    serveFor(200);
    EXPECT_EQ(probes(), tried + 3);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, valuesGivenAgain);
    EXPECT_FALSE(runtime->values().isRefused(5));
    const quint64 readBefore = runtime->values().reads(5);
    serve(30);
    EXPECT_EQ(probes(), tried + 3);
    EXPECT_GE(runtime->values().reads(5), readBefore + 9) << "listed again";
}

class RefusedAmongMany : public RefusedReads, public ::testing::WithParamInterface<int> {};

TEST_P(RefusedAmongMany, IsFoundByHalves)
{
    refusedBytes = {quint32(20 * GetParam())};
    begin(scattered(99));
    int requests = 0;
    while (refusedValues.empty() && requests < 1000) {
        ASSERT_TRUE(serve());
        ++requests;
    }
    // Seven times half of 99 is one, and the other half is asked for before at the worst.
    EXPECT_LE(probes(), 14);
    serve(30);
    EXPECT_LE(probes(), 14);
    EXPECT_EQ(1, requestsWith('c'));
    for (int row = 0; row < 99; ++row)
        EXPECT_EQ(runtime->values().wasRead(row), row != GetParam()) << row;
}

INSTANTIATE_TEST_SUITE_P(Places, RefusedAmongMany, ::testing::Values(0, 1, 48, 49, 50, 97, 98));

TEST_F(RefusedReads, GapBetweenGoodValuesIsReadNoMore)
{
    refusedBytes = {4};
    begin({valueAt(0), valueAt(8)});
    serve(5);
    EXPECT_EQ("cLLPP", story);
    serve(10);
    EXPECT_EQ(story, "cLLPP" + std::string(10, 'C'));
    ASSERT_EQ(2, lastEntries.size());
    EXPECT_TRUE(isAsked(0) && isAsked(1) && isAsked(8) && isAsked(9));
    for (int address = 2; address < 8; ++address)
        EXPECT_FALSE(isAsked(address)) << address;
    EXPECT_TRUE(refusedValues.empty());
}

TEST_F(RefusedReads, PlcThatRefusesAllIsAskedNowAndThen)
{
    for (int i = 0; i < 3; ++i)
        refusedBytes.insert(quint32(20 * i));
    begin(scattered(3));
    while (serve())
        ASSERT_LT(story.size(), 30u);
    EXPECT_EQ(3u, refusedValues.size());
    const int before = int(story.size());
    serveFor(60000);
    // The first after 10 s; then a third of 10 s from one to the next, here in steps of 10 ms:
    // 10,000 + 14 * 3,340 = 56,760.
    EXPECT_EQ(15, int(story.size()) - before);
    EXPECT_EQ(3u, refusedValues.size());
}

TEST_F(RefusedReads, SearchBeginsAnewWhenTheLinkWasLostMeanwhile)
{
    refusedBytes = {5007};
    begin(threeRequests());
    serve(3);
    ASSERT_EQ("Ccp", story);
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    reconnect(500);
    serve(30);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, refusedValues);
    for (int row = 0; row < 12; ++row)
        EXPECT_EQ(runtime->values().wasRead(row), row != 5) << row;
    EXPECT_EQ(std::string(10, 'C'), story.substr(story.size() - 10));
}

TEST_F(RefusedReads, AreAskedForAtOnceWhenTheLinkIsUpAgain)
{
    refusedBytes = {5007};
    begin(threeRequests());
    serve(9);
    ASSERT_EQ(1u, refusedValues.size());
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    reconnect(500);
    serve(20);
    EXPECT_EQ(1u, refusedValues.size()) << "still refused: not told again";
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    // It has another program now.
    refusedBytes.clear();
    reconnect(500);
    serve(6);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, valuesGivenAgain);
}

TEST_F(RefusedReads, OfAStationThatGoesOffAreAskedForNoMore)
{
    QVector<DataPoint> points = threeRequests();
    for (int i = 4; i < 8; ++i)
        points[i].station = 7;
    refusedBytes = {5007};
    begin(points);
    // Station 7 comes last: rows 0-3, 8-11, 4-7.
    serve(3);
    ASSERT_EQ("CCc", story);
    runtime->switchStation(7, false, now);
    // What was begun comes to its end: 4, 5; 4; 5, each in its turn with a read of others.
    serve(6);
    EXPECT_EQ("CCcpCPCpC", story);
    const int tried = probes();
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(serve());
        EXPECT_FALSE(isAsked(4000) || isAsked(5000) || isAsked(6000) || isAsked(7000)) << story;
    }
    EXPECT_EQ(probes(), tried);
    EXPECT_GE(runtime->values().reads(0), 10u);
    runtime->switchStation(7, true, now);
    serve(20);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, refusedValues);
    for (int row = 0; row < 12; ++row)
        EXPECT_EQ(runtime->values().wasRead(row), row != 5) << row;
}

TEST_F(RefusedReads, OfAStationThatIsOffAreNotTriedAndDoNotKeepOthersWaiting)
{
    QVector<DataPoint> points = threeRequests();
    points[5].station = 7;
    refusedBytes = {2007, 5007};
    begin(points);
    serve(40);
    ASSERT_EQ(2u, refusedValues.size());
    runtime->switchStation(7, false, now);
    const int tried = probes();
    // Only the other one is tried, every ten seconds.
    serveFor(35000);
    EXPECT_EQ(probes(), tried + 3);
    ASSERT_EQ("S", actions());
    passTime(1000);
    ASSERT_EQ("X", actions());
    reconnect(500);
    serve(20);
    readOnce("Main.speed");
    serve(2);
    EXPECT_EQ(1u, reads.size());
    refusedBytes.clear();
    serveFor(15000);
    EXPECT_EQ(std::vector<std::string>{"v2000"}, valuesGivenAgain);
    runtime->switchStation(7, true, now);
    serveFor(15000);
    EXPECT_EQ((std::vector<std::string>{"v2000", "v5000"}), valuesGivenAgain);
}

TEST_F(RefusedReads, LongValueThatIsRefusedInItsSecondPartIsNeverShown)
{
    // 1,200 bytes in pieces of 200, of which four fit into a request; and one value behind it.
    refusedBytes = {1100};
    begin({bytesAt(0, 1200), valueAt(5000)});
    for (int i = 0; i < 40 && refusedValues.empty(); ++i)
        ASSERT_TRUE(serve());
    EXPECT_EQ(std::vector<std::string>{"v0"}, refusedValues);
    EXPECT_FALSE(runtime->values().wasRead(0));
    serve(10);
    EXPECT_FALSE(isAsked(0));
    EXPECT_TRUE(isAsked(5000));
    EXPECT_GE(runtime->values().reads(1), 8u);
}

TEST_F(RefusedReads, TwoHundredAmongTwoThousandAreAllFound)
{
    const QVector<DataPoint> points = scattered(2000);
    for (int i = 5; i < 2000; i += 10)
        refusedBytes.insert(quint32(20 * i));
    begin(points);
    for (int i = 0; i < 10000 && refusedValues.size() < 200; ++i)
        ASSERT_TRUE(serve());
    serve(200);
    EXPECT_EQ(200u, refusedValues.size());
    EXPECT_EQ(200u, std::set<std::string>(refusedValues.begin(), refusedValues.end()).size());
    for (int row = 0; row < 2000; ++row)
        ASSERT_EQ(runtime->values().wasRead(row), row % 10 != 5) << row;
    // 21 requests with ten each: four halvings from 99 to groups of about one each, two probes for
    // each group.
    EXPECT_LE(probes(), 21 * 2 * 10 * (4 + 1));
    // 1,800 entries, 99 to a request.
    story.clear();
    serve(19);
    EXPECT_EQ(std::string(19, 'C'), story);
}

TEST_F(RefusedReads, OfADamagedLoginAreGivenAfterAnother)
{
    loginFramesNeeded = 2; // the one that begin() answers is not counted
    begin(scattered(4));
    serve(8);
    // All four refused; 0 and 1, 2 and 3 by probes.
    EXPECT_EQ("cLLPPCCC", story);
    EXPECT_TRUE(refusedValues.empty());
    for (int row = 0; row < 4; ++row)
        EXPECT_TRUE(runtime->values().wasRead(row)) << row;
}

TEST_F(RefusedReads, OfAPlcWithANewProgramAreGivenAfterAnotherLogin)
{
    begin(scattered(16));
    serve(3);
    loginFramesNeeded = 2;
    serve(4);
    // 16, 8, 4 and 2 refused in a row.
    EXPECT_EQ("CCCcppp", story);
    serve(12);
    // The last two again, one by one; then the other halves.
    EXPECT_EQ("LLPPPPPCCCCC", story.substr(7));
    EXPECT_TRUE(refusedValues.empty());
}

TEST_F(RefusedReads, OfASingleValueAreGivenAfterAnotherLoginWhenItIsTriedAgain)
{
    begin(scattered(1));
    serve(1);
    loginFramesNeeded = 2;
    serve(3);
    EXPECT_EQ("Ccpp", story);
    EXPECT_EQ(std::vector<std::string>{"v0"}, refusedValues);
    passTime(10000);
    serve(5);
    EXPECT_EQ("pLLPC", story.substr(4));
    EXPECT_FALSE(runtime->values().isRefused(0));
}

TEST_F(RefusedReads, DoNotShareARequestThatShowsWhetherAWriteWasDone)
{
    for (int i = 0; i < 4; ++i)
        refusedBytes.insert(quint32(20 * i));
    begin(scattered(4));
    serve(1);
    write("Main.count", "1");
    write("Main.count", "2");
    // The acknowledgements have the size of the refusals before them, so each is doubted until a
    // read of another size is answered. The probe that waits for the login goes before them.
    serve(7);
    EXPECT_EQ("cLLpWIWI", story);
    ASSERT_EQ(2u, writes.size());
    EXPECT_TRUE(writes[0].outcome.isDone());
    EXPECT_TRUE(writes[1].outcome.isDone());
}

TEST_F(RefusedReads, NeverGoOutTwiceBetweenTwoReadsOfOthers)
{
    for (int i : {5, 30, 31, 50, 71})
        refusedBytes.insert(quint32(1000 * i));
    QVector<DataPoint> points;
    for (int i = 0; i < 80; ++i)
        points.append(bytesAt(1000 * i, 200));
    begin(points);
    serve(200);
    EXPECT_EQ(5u, refusedValues.size());
    std::string kinds = story;
    std::transform(kinds.begin(), kinds.end(), kinds.begin(), ::toupper);
    EXPECT_EQ(kinds.find("PP"), std::string::npos) << story;
}

/// The values that are read are exchanged while a PLC is followed.
class ExchangedReads : public RefusedReads {
protected:
    QVector<DataPoint> m_first = {valueAt(0), valueAt(20), valueAt(40)};
};

TEST_F(ExchangedReads, KeepWhatIsKnownOfValuesThatStay)
{
    begin(m_first);
    serve(1);
    const QByteArray bytes = runtime->values().bytes(2);
    passTime(500);
    ASSERT_EQ("S", actions()) << "the reply to this one does not come";
    runtime->readCyclically({valueAt(60), valueAt(40)}, now);
    ASSERT_EQ(2, runtime->values().size());
    EXPECT_FALSE(runtime->values().wasRead(0));
    EXPECT_TRUE(runtime->values().wasRead(1));
    EXPECT_EQ(bytes, runtime->values().bytes(1));
    EXPECT_EQ(500, runtime->values().age(1, now));
    EXPECT_EQ(1u, runtime->values().reads(1));
}

TEST_F(ExchangedReads, DoNotMakeAnOldValueGood)
{
    begin(m_first);
    serve(1);
    now += 3000;
    ASSERT_FALSE(runtime->values().isStale(0, now));
    now += 1;
    ASSERT_TRUE(runtime->values().isStale(0, now));
    runtime->readCyclically({valueAt(0), valueAt(60)}, now);
    EXPECT_TRUE(runtime->values().isStale(0, now));
    EXPECT_EQ(ValueState::Stale, runtime->values().reading(0, now).state);
    EXPECT_EQ(ValueState::Unread, runtime->values().reading(1, now).state);
}

TEST_F(ExchangedReads, OfAnotherTypeAtTheSameLabelBeginAnew)
{
    begin(m_first);
    serve(1);
    DataPoint other = valueAt(0);
    other.type = values::findIecType(QStringLiteral("UINT"));
    runtime->readCyclically({other}, now);
    EXPECT_FALSE(runtime->values().wasRead(0));
}

TEST_F(ExchangedReads, LeaveARefusedValueRefusedAndOutOfTheRequests)
{
    refusedBytes = {21};
    begin(m_first);
    serve(12);
    ASSERT_EQ(std::vector<std::string>{"v20"}, refusedValues);
    story.clear();
    runtime->readCyclically({valueAt(60), valueAt(20), valueAt(0)}, now);
    EXPECT_TRUE(runtime->values().isRefused(1));
    serve(10);
    EXPECT_EQ("CCCCCCCCCC", story);
    EXPECT_FALSE(isAsked(20));
    EXPECT_TRUE(isAsked(60) && isAsked(0));
    EXPECT_EQ(1u, refusedValues.size()) << "told once";
    // It is still tried now and then.
    refusedBytes.clear();
    serveFor(11000);
    EXPECT_EQ(std::vector<std::string>{"v20"}, valuesGivenAgain);
}

TEST_F(ExchangedReads, GoOnWithASearchThatIsUnderWay)
{
    refusedBytes = {5007};
    QVector<DataPoint> points = threeRequests();
    begin(points);
    serve(3);
    ASSERT_EQ("Ccp", story); // 4 and 5 were refused together, 6 and 7 wait
    std::reverse(points.begin(), points.end());
    points.removeLast();
    points.append(valueAt(20000));
    runtime->readCyclically(points, now);
    serve(20);
    EXPECT_EQ(std::vector<std::string>{"v5000"}, refusedValues);
    for (int row = 0; row < 12; ++row)
        EXPECT_EQ(runtime->values().wasRead(row), row != 6) << row;
}

TEST_F(ExchangedReads, WithoutAValueThatIsSearchedForEndTheSearch)
{
    refusedBytes = {5007};
    begin(threeRequests());
    serve(3);
    QVector<DataPoint> points = threeRequests();
    points.remove(4, 4);
    runtime->readCyclically(points, now);
    serve(30);
    EXPECT_TRUE(refusedValues.empty());
    for (int row = 0; row < 8; ++row)
        EXPECT_TRUE(runtime->values().wasRead(row)) << row;
    EXPECT_EQ(std::string(10, 'C'), story.substr(story.size() - 10));
}

TEST_F(ExchangedReads, BeginWhereNothingWasRead)
{
    runtime->readCyclically({}, now);
    connect();
    ASSERT_EQ("", actions());
    runtime->readCyclically(m_first, now);
    logIn();
    serve(1);
    EXPECT_TRUE(runtime->values().wasRead(0));
}

TEST_F(ExchangedReads, TakeTheReplyThatIsUnderWay)
{
    begin(m_first);
    serve(1);
    ASSERT_EQ("S", actions());
    runtime->readCyclically({valueAt(60), valueAt(40)}, now);
    const RequestContent content = parseRequest(sent);
    ASSERT_EQ(3, content.entries.size());
    QByteArray payload(6, '\0');
    for (int i = 1; i <= 3; ++i)
        payload += QByteArray(1, '\0') + QByteArray(2, char(i));
    answer(frameOf(payload));
    EXPECT_FALSE(runtime->values().wasRead(0));
    EXPECT_EQ(QByteArray("\3\3"), runtime->values().bytes(1));
}

/// The values are exchanged from inside the runtime's own calls.
class ExchangingListener : public ExchangedReads {
protected:
    void valueRefused(int row) override
    {
        ExchangedReads::valueRefused(row);
        call(&whenRefused);
    }
    void valueGivenAgain(int row) override
    {
        ExchangedReads::valueGivenAgain(row);
        call(&whenGivenAgain);
    }
    void requestSent(const SentRequest& request) override
    {
        ExchangedReads::requestSent(request);
        call(&whenSent);
    }
    void requestAnswered(const SentRequest& request, const Answer& judgement,
                         const QByteArray& reply) override
    {
        ExchangedReads::requestAnswered(request, judgement, reply);
        call(&whenAnswered);
    }
    void requestSettled() override { call(&whenSettled); }
    void linkChanged(LinkState state, const QString& reason, int retryDelay) override
    {
        ExchangedReads::linkChanged(state, reason, retryDelay);
        call(&whenLinkChanged);
    }
    void exchange(const QVector<DataPoint>& points) { runtime->readCyclically(points, now); }

    /// Two that share bytes, both refused, until the PLC gives them by one probe.
    void giveAgainTogether()
    {
        refusedBytes = {104};
        begin({bytesAt(100, 10), valueAt(104), valueAt(0)});
        serve(12);
        ASSERT_EQ((std::vector<std::string>{"v100", "v104"}), refusedValues);
        refusedBytes.clear();
        serveFor(11000);
    }

    using Act = std::function<void()>;
    Act whenRefused, whenGivenAgain, whenSent, whenAnswered, whenSettled, whenLinkChanged;

private:
    static void call(const Act* act)
    {
        if (*act)
            (*act)();
    }
};

TEST_F(ExchangingListener, IsToldOfEachValueThatStaysByItsNewRow)
{
    whenGivenAgain = [this] { exchange({valueAt(200), valueAt(220), valueAt(240), valueAt(104)}); };
    giveAgainTogether();
    EXPECT_EQ((std::vector<std::string>{"v100", "v104"}), valuesGivenAgain);
}

TEST_F(ExchangingListener, IsNotToldOfAValueThatHasGone)
{
    whenGivenAgain = [this] { exchange({valueAt(0)}); };
    giveAgainTogether();
    EXPECT_EQ(std::vector<std::string>{"v100"}, valuesGivenAgain);
    EXPECT_EQ(1, runtime->values().size());
}

TEST_F(ExchangingListener, MayExchangeThemInAnyCall)
{
    QVector<DataPoint> points = threeRequests();
    int exchanges = 0;
    // Another order, and now and then one fewer or one more.
    const Act turn = [&points, &exchanges, this] {
        ++exchanges;
        std::rotate(points.begin(), points.begin() + 1, points.end());
        QVector<DataPoint> given = points;
        if (exchanges % 3 == 0)
            given.removeFirst();
        if (exchanges % 5 == 0)
            given.append(valueAt(20000));
        exchange(given);
    };
    for (Act* act : {&whenRefused, &whenGivenAgain, &whenSent, &whenAnswered, &whenSettled,
                     &whenLinkChanged}) {
        *act = turn;
        refusedBytes = {5007, 9100};
        if (story.empty())
            begin(points);
        serveFor(12000);
        refusedBytes.clear();
        serveFor(25000);
        actions();
        session().disconnected(QStringLiteral("gone"), now);
        ASSERT_EQ("X", actions());
        reconnect(linkEvents.back().retryDelay);
        serveFor(1000);
        *act = nullptr;
        exchange(points);
        serveFor(25000);
        for (int row = 0; row < points.size(); ++row) {
            EXPECT_FALSE(runtime->values().isRefused(row)) << row;
            EXPECT_FALSE(runtime->values().isStale(row, now)) << row;
        }
    }
    EXPECT_GT(exchanges, 100);
}

} // namespace
} // namespace test
} // namespace plc::host
