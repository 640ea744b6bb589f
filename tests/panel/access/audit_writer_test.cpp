#include "panel/access/audit_writer.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include "panel/access/audit_reading.h"
#include "tests/support/file_test.h"
#include "tests/support/gate.h"

namespace plc::panel {
namespace {

constexpr std::chrono::minutes kLong(5);

AuditRecord record(const QString& id, AuditRecord::Phase phase = AuditRecord::Requested)
{
    AuditRecord record;
    record.phase = phase;
    record.id = id;
    return record;
}

AuditRecord record(const char* id, AuditRecord::Phase phase = AuditRecord::Requested)
{
    return record(QString::fromLatin1(id), phase);
}

/// A medium that answers while its gate is open, and fails behind a number of records.
class SlowMedium : public AuditMedium {
public:
    AuditAppended append(const QVector<AuditRecord>& records) override
    {
        gate.pass();
        ++appends;
        AuditAppended appended;
        for (const AuditRecord& record : records) {
            if (int(kept.size()) == room)
                break;
            kept.append(record.id);
            ++appended.kept;
        }
        appended.failure.text = QStringLiteral("the disk is full");
        hasAnswered.ring();
        return appended;
    }
    Expected<void> reopen(qint64) override
    {
        gate.pass();
        kept.append(QStringLiteral("(reopened)"));
        return {};
    }
    QString takeFlaw() override { return {}; }

    test::Gate gate;
    test::Bell bell;
    test::Bell hasAnswered;
    // Looked at while nothing waits.
    int room = 1000000;
    int appends = 0;
    QStringList kept;
};

class AuditWriterTest : public testing::Test {
protected:
    void append(const AuditRecord& one)
    {
        writer->append(one, [this, id = one.id](const Expected<void>& isKept) {
            told.append(id + (isKept ? QString() : QStringLiteral(": ") + isKept.error().text));
        });
    }
    /// As many as these are told.
    void deliverUntil(int count)
    {
        while (told.size() < count) {
            medium->bell.await();
            writer->deliver();
        }
    }
    std::string all(const QStringList& texts) const
    {
        return texts.join(QLatin1Char(' ')).toStdString();
    }
    /// One record before which the disk stands still.
    void hang()
    {
        medium->gate.setOpen(false);
        append(record("first"));
        medium->gate.awaitArrival();
    }
    void begin(const AuditWriter::Limits& limits)
    {
        writer = std::make_unique<AuditWriter>(
            medium, [medium = medium] { medium->bell.ring(); }, limits);
    }

    std::shared_ptr<SlowMedium> medium = std::make_shared<SlowMedium>();
    QStringList told;
    std::unique_ptr<AuditWriter> writer = std::make_unique<AuditWriter>(
        medium, [medium = medium] { medium->bell.ring(); }, AuditWriter::Limits());
};

TEST_F(AuditWriterTest, TellsInOrderWhatIsOnTheDisk)
{
    for (const char* id : {"a", "b", "c"})
        append(record(id));
    EXPECT_EQ("", all(told)) << "nobody waits for the disk";
    deliverUntil(3);
    EXPECT_EQ("a b c", all(told));
    EXPECT_EQ("a b c", all(medium->kept));
    EXPECT_FALSE(writer->busySince());
}

TEST_F(AuditWriterTest, WritesAtOnceWhatHasComeMeanwhile)
{
    hang();
    for (int i = 0; i < 100; ++i)
        append(record(QString::number(i)));
    EXPECT_TRUE(writer->busySince());
    EXPECT_EQ("", all(told));
    medium->gate.setOpen(true);
    deliverUntil(101);
    EXPECT_EQ(2, medium->appends);
    EXPECT_EQ("99", told.last().toStdString());
}

TEST_F(AuditWriterTest, TellsOfEachWhetherItIsKept)
{
    hang();
    medium->room = 2;
    for (const char* id : {"b", "c", "d"})
        append(record(id));
    medium->gate.setOpen(true);
    deliverUntil(4);
    EXPECT_EQ("first b c: the disk is full d: the disk is full", all(told));
    EXPECT_EQ("first b", all(medium->kept));
}

TEST_F(AuditWriterTest, TakesNoMoreThanMayWaitAndLongerWhatCameOfIt)
{
    AuditWriter::Limits limits;
    limits.asked = 3;
    limits.all = 4;
    begin(limits);
    hang();
    append(record("b"));
    append(record("c"));
    append(record("d"));
    append(record("e", AuditRecord::Outcome));
    append(record("f", AuditRecord::Outcome));
    EXPECT_EQ("d: 3 records wait for the disk already f: 4 records wait for the disk already",
              all(told));
    medium->gate.setOpen(true);
    deliverUntil(6);
    EXPECT_EQ("first b c e", all(medium->kept));
    append(record("g"));
    deliverUntil(7);
    EXPECT_EQ("g", told.last().toStdString());
}

TEST_F(AuditWriterTest, TakesNoMoreBytesThanMayWait)
{
    AuditWriter::Limits limits;
    limits.askedBytes = 3000;
    begin(limits);
    hang();
    AuditRecord large = record("b");
    large.newValue = QString(2000, QLatin1Char('7'));
    append(large);
    append(record("c"));
    append(record("d", AuditRecord::Outcome));
    EXPECT_EQ("c: 2 records wait for the disk already", all(told));
    medium->gate.setOpen(true);
    deliverUntil(4);
    EXPECT_EQ("first b d", all(medium->kept));
}

TEST_F(AuditWriterTest, ReopensBetweenWhatWasAndWhatIsToBeWritten)
{
    hang();
    append(record("b"));
    writer->reopen(1, [this](const Expected<void>&) { told.append(QStringLiteral("reopened")); });
    medium->gate.setOpen(true);
    deliverUntil(3);
    EXPECT_EQ("first (reopened) b", all(medium->kept));
}

TEST_F(AuditWriterTest, WritesAtTheEndWhatWaitsAndWhatComesOfIt)
{
    hang();
    writer->append(record("asked"), [this](const Expected<void>& isKept) {
        EXPECT_TRUE(isKept);
        append(record("came of it", AuditRecord::Outcome));
    });
    medium->gate.setOpen(true);
    writer->finish(kLong);
    EXPECT_EQ("first came of it", all(told));
    EXPECT_EQ("first asked came of it", all(medium->kept));
    append(record("late"));
    EXPECT_EQ("late: the program ends", told.last().toStdString());
    EXPECT_EQ(3, medium->kept.size());
}

TEST_F(AuditWriterTest, EndsThoughTheDiskDoesNotAnswerAndTellsSoOnce)
{
    hang();
    append(record("b"));
    writer->finish(std::chrono::milliseconds(1));
    EXPECT_EQ(
        "first: the disk did not answer before the program ended "
        "b: the disk did not answer before the program ended",
        all(told));
    writer.reset();
    medium->gate.setOpen(true);
    medium->hasAnswered.await();
    EXPECT_EQ("first", all(medium->kept)) << "what had not begun never does";
    EXPECT_EQ(2, told.size());
}

class AuditFileTest : public test::FileTest {};

TEST_F(AuditFileTest, IsBegunWhenItCanBe)
{
    const QString path = this->path("audit");
    ASSERT_TRUE(QDir().mkdir(path));
    AuditFile file(path);
    EXPECT_FALSE(succeeds(file.open(1)));
    EXPECT_FALSE(succeeds(file.reopen(1)));
    const AuditAppended none = file.append({record("a")});
    EXPECT_EQ(0, none.kept);
    EXPECT_TRUE(none.failure.text.startsWith(path)) << none.failure.text.toStdString();
    ASSERT_TRUE(QDir().rmdir(path));
    EXPECT_EQ(2, file.append({record("b"), record("c")}).kept);
    const Expected<AuditVerification> verified = verifyAudit(path);
    ASSERT_TRUE(succeeds(verified)) << error.toStdString();
    EXPECT_EQ(AuditVerification::None, verified->flaw);
    EXPECT_EQ(3, verified->lines);
}

TEST_F(AuditFileTest, TellsOnceWhatIsWrongWithTheEndThatItGoesOnWith)
{
    const QString path = this->path("audit");
    ASSERT_TRUE(succeeds(AuditFile(path).open(1)));
    files.append(path, "nothing\nto see\n");
    AuditFile file(path);
    ASSERT_TRUE(succeeds(file.open(2)));
    EXPECT_EQ((path + QStringLiteral(": its last lines are none of an audit")).toStdString(),
              file.takeFlaw().toStdString());
    EXPECT_EQ("", file.takeFlaw().toStdString());
}

} // namespace
} // namespace plc::panel
