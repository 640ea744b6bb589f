#include "gateway/service/write_desk.h"

#include <gtest/gtest.h>

#include "values/iec_types.h"

namespace plc::gateway {
namespace {

using host::TransferOutcome;

/// A PLC that keeps writes until the test settles them.
class WaitingPlc : public WriteTarget {
public:
    WaitingPlc()
    {
        m_device.name = QStringLiteral("press");
        for (const char* name : {"speed", "state"}) {
            Metric metric;
            metric.name = QString::fromLatin1(name);
            metric.point.text = QStringLiteral("Plant.") + metric.name;
            metric.point.label = metric.point.text;
            metric.point.type = values::findIecType(QStringLiteral("INT"));
            m_device.metrics.append(metric);
        }
        m_device.metrics[0].isWritable = true;
        m_device.metrics[0].limits.lowest = -5;
        m_device.metrics[0].limits.highest = 50;
    }
    const Device& description() const override { return m_device; }
    int openWrites() const override { return int(writes.size()); }
    void write(int metric, const QVector<values::Value>& values,
               host::WriteSettled settled) override
    {
        EXPECT_EQ(0, metric);
        written += values;
        writes.append(std::move(settled));
    }

    QVector<host::WriteSettled> writes;
    QVector<values::Value> written;

private:
    Device m_device;
};

class WriteDeskTest : public testing::Test {
protected:
    static WriteRequest request(qint64 value)
    {
        WriteRequest result;
        result.device = 3;
        result.metric = 0;
        result.name = QStringLiteral("speed");
        result.id = QStringLiteral("17");
        result.values = {values::Value(value)};
        return result;
    }
    void expectRefusal(const char* reason)
    {
        ASSERT_EQ(1, told.size());
        EXPECT_EQ(WriteOutcome::Refused, told[0].kind);
        EXPECT_EQ(reason, told[0].reason.toStdString());
        EXPECT_TRUE(plc.writes.isEmpty());
        EXPECT_EQ(1, audited.size());
    }
    /// Of what is not there the audit has the number alone.
    void expectCountedRefusal(const char* reason)
    {
        ASSERT_EQ(1, told.size());
        EXPECT_EQ(WriteOutcome::Refused, told[0].kind);
        EXPECT_EQ(reason, told[0].reason.toStdString());
        EXPECT_TRUE(audited.isEmpty());
        desk.secondPassed();
        ASSERT_EQ(1, audited.size());
        EXPECT_EQ("so many requests were refused without a line of their own: 1",
                  audited[0].reason.toStdString());
        EXPECT_EQ(1234, audited[0].time);
        desk.secondPassed();
        EXPECT_EQ(1, audited.size());
    }
    static WriteRequest requestForWhatIsNotWritable()
    {
        WriteRequest result = request(1);
        result.metric = 1;
        return result;
    }

    WaitingPlc plc;
    QVector<WriteOutcome> told;
    QVector<WriteOutcome> audited;
    QString auditError;
    QString diskError;
    WriteDesk desk{AuditTrail(
                       [this](const WriteOutcome& outcome) -> Expected<void> {
                           if (!auditError.isEmpty())
                               return Error{auditError};
                           audited.append(outcome);
                           return {};
                       },
                       [this] { return diskError; }),
                   [this](const WriteOutcome& outcome) { told.append(outcome); },
                   [] { return qint64(1234); }};
};

TEST_F(WriteDeskTest, WriteIsCarriedOutAndItsOutcomeKeptAndTold)
{
    desk.take(request(7), &plc);
    EXPECT_TRUE(told.isEmpty());
    ASSERT_EQ(1, plc.writes.size());
    ASSERT_EQ(1, audited.size());
    EXPECT_EQ(WriteOutcome::Requested, audited[0].kind);
    EXPECT_EQ("7", audited[0].value);
    EXPECT_EQ(values::Value(qint64(7)), plc.written[0]);
    plc.writes[0](TransferOutcome());
    ASSERT_EQ(1, told.size());
    EXPECT_EQ(WriteOutcome::Done, told[0].kind);
    EXPECT_EQ("7", told[0].value);
    EXPECT_EQ("17", told[0].id);
    EXPECT_EQ("speed", told[0].name);
    EXPECT_EQ("press", told[0].deviceName);
    EXPECT_EQ("Plant.speed", told[0].label);
    EXPECT_EQ(1234, told[0].time);
    ASSERT_EQ(2, audited.size());
    EXPECT_EQ(WriteOutcome::Done, audited[1].kind);
    EXPECT_EQ(1u, desk.counts().done);
    EXPECT_EQ(1u, desk.counts(3).done);
    EXPECT_EQ(0u, desk.counts(4).done);
}

TEST_F(WriteDeskTest, ValueThatIsNotListedIsRefused)
{
    desk.take(requestForWhatIsNotWritable(), &plc);
    expectRefusal("the configuration does not list it as writable");
}

TEST_F(WriteDeskTest, LimitsAreInclusive)
{
    for (qint64 value : {-5, 50})
        desk.take(request(value), &plc);
    EXPECT_EQ(2, plc.writes.size());
}

TEST_F(WriteDeskTest, ValueBelowItsLimitIsRefused)
{
    desk.take(request(-6), &plc);
    expectRefusal("out of the limits -5..50");
}

TEST_F(WriteDeskTest, ValueAboveItsLimitIsRefused)
{
    desk.take(request(51), &plc);
    expectRefusal("out of the limits -5..50");
}

TEST_F(WriteDeskTest, RequestThatMakesNoSenseIsRefusedWithItsReason)
{
    WriteRequest bad = request(1);
    bad.values.clear();
    bad.error = QStringLiteral("300 does not fit USINT");
    desk.take(bad, &plc);
    expectRefusal("300 does not fit USINT");
}

TEST_F(WriteDeskTest, UnknownDeviceIsRefused)
{
    desk.take(request(1), nullptr);
    expectCountedRefusal("there is no such device");
}

TEST_F(WriteDeskTest, UnknownValueIsRefused)
{
    WriteRequest bad = request(1);
    bad.metric = -1;
    desk.take(bad, &plc);
    expectCountedRefusal("there is no such value");
}

TEST_F(WriteDeskTest, WriteWhoseLinkIsLostIsNotKnown)
{
    desk.take(request(1), &plc);
    plc.writes[0](TransferOutcome::lost(QStringLiteral("connection closed")));
    EXPECT_EQ(WriteOutcome::Unknown, told[0].kind);
    EXPECT_TRUE(told[0].reason.contains(QStringLiteral("connection closed")));
    EXPECT_EQ(1u, desk.counts().unknown);
}

TEST_F(WriteDeskTest, WriteThatThePlcRefusesOrNeverSawIsRefused)
{
    desk.take(request(1), &plc);
    desk.take(request(2), &plc);
    plc.writes[0](TransferOutcome::refused(0x31));
    plc.writes[1](TransferOutcome::notSent(QStringLiteral("the link is down")));
    EXPECT_EQ(WriteOutcome::Refused, told[0].kind);
    EXPECT_EQ(WriteOutcome::Refused, told[1].kind);
    EXPECT_TRUE(told[1].reason.contains(QStringLiteral("the link is down")));
    EXPECT_EQ(2u, desk.counts().refused);
}

TEST_F(WriteDeskTest, NothingIsWrittenThatTheAuditDoesNotTake)
{
    auditError = QStringLiteral("disk full");
    desk.take(request(1), &plc);
    EXPECT_TRUE(plc.writes.isEmpty());
    ASSERT_EQ(1, told.size());
    EXPECT_EQ(WriteOutcome::Refused, told[0].kind);
    EXPECT_EQ("the audit file cannot be written", told[0].reason);
    EXPECT_EQ("disk full", desk.audit().error());
    auditError.clear();
    desk.take(request(2), &plc);
    EXPECT_EQ(1, plc.writes.size());
    EXPECT_EQ(QString(), desk.audit().error());
}

TEST_F(WriteDeskTest, NothingIsWrittenWhileTheDiskDoesNotTakeTheAudit)
{
    diskError = QStringLiteral("input/output error");
    desk.take(request(1), &plc);
    EXPECT_TRUE(plc.writes.isEmpty());
    ASSERT_EQ(1, told.size());
    EXPECT_EQ("the audit file cannot be written", told[0].reason);
    ASSERT_EQ(1, audited.size());
    EXPECT_EQ(WriteOutcome::Refused, audited[0].kind);
    EXPECT_EQ("input/output error", desk.audit().error());
}

TEST_F(WriteDeskTest, OutcomeThatTheAuditDoesNotTakeIsKeptForIt)
{
    desk.take(request(1), &plc);
    auditError = QStringLiteral("disk full");
    plc.writes[0](TransferOutcome());
    EXPECT_EQ(WriteOutcome::Done, told[0].kind);
    EXPECT_EQ("disk full", desk.audit().error());
    EXPECT_EQ(1u, desk.audit().waiting());
    auditError.clear();
    desk.secondPassed();
    ASSERT_EQ(2, audited.size());
    EXPECT_EQ(WriteOutcome::Done, audited[1].kind);
    EXPECT_EQ(0u, desk.audit().waiting());
    EXPECT_EQ(QString(), desk.audit().error());
}

TEST_F(WriteDeskTest, MoreOpenWritesThanAPlcCanTakeAreRefused)
{
    for (int i = 0; i < 101; ++i)
        desk.take(request(1), &plc);
    EXPECT_EQ(100, plc.writes.size());
    EXPECT_EQ("too many writes are under way", told.last().reason);
}

TEST_F(WriteDeskTest, EachRequestForWhatIsWritableHasItsOutcome)
{
    for (int i = 0; i < 400; ++i)
        desk.take(request(1), &plc);
    for (const host::WriteSettled& settled : std::as_const(plc.writes))
        settled(TransferOutcome());
    EXPECT_EQ(400, told.size());
    EXPECT_EQ(100u, desk.counts().done);
    EXPECT_EQ(300u, desk.counts().refused);
    EXPECT_EQ(500, audited.size()) << "those that were sent have a second line";
    EXPECT_EQ(0u, desk.flooded());
}

TEST_F(WriteDeskTest, ValueThatIsNotWritableIsShortInTheAudit)
{
    WriteRequest many = requestForWhatIsNotWritable();
    many.values = QVector<values::Value>(10000, values::Value(qint64(7)));
    desk.take(many, &plc);
    ASSERT_EQ(1, audited.size());
    EXPECT_EQ(257, audited[0].value.size()) << "256 and the sign for what is left out";
}

TEST_F(WriteDeskTest, FloodOfRefusalsIsCountedAndNotTold)
{
    for (int i = 0; i < 250; ++i)
        desk.take(requestForWhatIsNotWritable(), &plc);
    EXPECT_EQ(100, told.size());
    EXPECT_EQ(100, audited.size());
    EXPECT_EQ(150u, desk.flooded());
    desk.secondPassed();
    ASSERT_EQ(101, audited.size());
    EXPECT_EQ("so many requests were refused without a line of their own: 150",
              audited[100].reason.toStdString());
    desk.take(requestForWhatIsNotWritable(), &plc);
    EXPECT_EQ(101, told.size());
}

} // namespace
} // namespace plc::gateway
