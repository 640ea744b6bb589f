#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <limits>

#include "panel/access/audit_log.h"
#include "panel/access/audit_reading.h"
#include "panel/access/secrets.h"
#include "tests/support/file_test.h"
#include "tests/support/stated_text.h"

namespace plc::panel {
namespace {

using test::stated;

AuditRecord record(const char* id)
{
    AuditRecord record;
    record.time = 1000;
    record.user = QStringLiteral("anna");
    record.address = QStringLiteral("10.0.0.7");
    record.plc = QStringLiteral("line1");
    record.label = QStringLiteral("MAIN.speed");
    record.oldValue = QStringLiteral("1");
    record.newValue = QStringLiteral("2");
    record.id = QString::fromLatin1(id);
    return record;
}

class Audit : public test::FileTest {
protected:
    QString file() const { return path("audit.jsonl"); }
    std::unique_ptr<AuditLog> open(const char* name = "audit.jsonl")
    {
        Expected<std::unique_ptr<AuditLog>> log = AuditLog::open(path(name), 0);
        return succeeds(log) ? std::move(*log) : nullptr;
    }
    /// A file of a beginning and records 1 to `count`.
    void write(int count)
    {
        const auto log = open();
        ASSERT_TRUE(log);
        for (int i = 1; i <= count; ++i)
            ASSERT_TRUE(log->append(record(QByteArray::number(i).constData())));
    }
    QList<QByteArray> lines() const
    {
        QList<QByteArray> all = QByteArray::fromStdString(files.content(file())).split('\n');
        all.removeLast();
        return all;
    }
    void put(const QList<QByteArray>& all)
    {
        files.put(file(), (all.join('\n') + '\n').constData());
    }
    AuditVerification verify(const char* name = "audit.jsonl")
    {
        const Expected<AuditVerification> result = verifyAudit(path(name));
        EXPECT_TRUE(succeeds(result)) << error.toStdString();
        return result.valueOr({});
    }
    void expectFlaw(AuditVerification::Flaw flaw, qint64 line)
    {
        const AuditVerification result = verify();
        EXPECT_EQ(flaw, result.flaw) << result.sentence.toStdString();
        EXPECT_EQ(line, result.flawedLine) << result.sentence.toStdString();
    }
};

TEST(AuditLine, HoldsWhoWhenWhatAndTheHashOfTheLineBefore)
{
    EXPECT_EQ(
        "{\"time\":\"1970-01-01T00:00:01.000Z\",\"action\":\"write\",\"phase\":\"requested\","
        "\"user\":\"anna\",\"address\":\"10.0.0.7\",\"plc\":\"line1\",\"label\":\"MAIN.speed\","
        "\"old\":\"1\",\"seen\":null,\"new\":\"2\",\"id\":\"w1\",\"outcome\":\"\",\"reason\":\"\","
        "\"n\":7,"
        "\"previous\":\"ab\"}",
        recordLine(record("w1"), 7, "ab").toStdString());
}

TEST(AuditLine, TellsAnUnknownOldValueAsNullAndAnOutcomeWithItsReason)
{
    AuditRecord outcome = record("w1");
    outcome.phase = AuditRecord::Outcome;
    outcome.oldValue = QString();
    outcome.outcome = stated("refused");
    outcome.reason = stated("status 8: \"no\"\n");
    const QByteArray line = recordLine(outcome, 1, "ab");
    EXPECT_TRUE(line.contains("\"phase\":\"outcome\""));
    EXPECT_TRUE(line.contains("\"old\":null"));
    EXPECT_TRUE(
        line.contains("\"outcome\":\"refused\",\"reason\":\"status 8: \\\"no\\\"\\u000a\""));
}

TEST(AuditLine, TellsALongValueByItsBeginningLengthAndHash)
{
    AuditRecord longOne = record("w1");
    longOne.newValue = QString(1000000, QLatin1Char('7'));
    const QByteArray line = recordLine(longOne, 1, QByteArray(64, 'a'));
    EXPECT_LT(line.size(), 100000);
    EXPECT_TRUE(line.contains("(1000000 characters, SHA-256 "));
    EXPECT_TRUE(parseAuditLine(line));
}

TEST(AuditLine, TellsALongValueOnceHoweverOftenItIsAsked)
{
    const QString told = auditText(QString(1000000, QLatin1Char('7')));
    EXPECT_TRUE(told.contains(QLatin1String("(1000000 characters, SHA-256 ")));
    EXPECT_LE(int(told.size()), kLongestAuditText);
    EXPECT_EQ(told, auditText(told));
    const QString longest(kLongestAuditText, QLatin1Char('7'));
    EXPECT_EQ(longest, auditText(longest));
}

TEST(Sha256, IsTheOneOfSha256sum)
{
    // printf abc | sha256sum
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", sha256("abc"));
}

TEST_F(Audit, BeginsWithARandomLineAndChainsTheOthersToIt)
{
    write(2);
    const QList<QByteArray> all = lines();
    ASSERT_EQ(3, all.size());
    const auto first = parseAuditLine(all[0]);
    ASSERT_TRUE(first);
    EXPECT_TRUE(first->isBeginning);
    EXPECT_EQ(0, first->number);
    EXPECT_EQ(sha256(all[0]), parseAuditLine(all[1])->previous);
    EXPECT_EQ(sha256(all[1]), parseAuditLine(all[2])->previous);
    EXPECT_EQ(2, parseAuditLine(all[2])->number);
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_EQ(sha256(all[2]), verify().head);

    open("other.jsonl");
    EXPECT_NE(first->previous, verify("other.jsonl").previous);
}

TEST_F(Audit, IsForOwnerAndGroupAlone)
{
    const mode_t mask = ::umask(0);
    write(1);
    ::umask(mask);
    struct stat status = {};
    ASSERT_EQ(0, ::stat(QFile::encodeName(file()).constData(), &status));
    EXPECT_EQ(mode_t(0640), status.st_mode & 0777);
}

TEST_F(Audit, GoesOnWithAFileThatIsThere)
{
    write(1);
    write(1);
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_EQ(3, verify().lines);
    EXPECT_EQ(2, verify().lastNumber);
}

TEST_F(Audit, NamesTheFirstAlteredLine)
{
    write(5);
    QList<QByteArray> all = lines();
    all[2].replace("\"new\":\"2\"", "\"new\":\"3\"");
    all[4].replace("\"new\":\"2\"", "\"new\":\"3\"");
    put(all);
    expectFlaw(AuditVerification::Altered, 3);
}

TEST_F(Audit, NamesALineWhoseHashOfTheLineBeforeWasAltered)
{
    write(5);
    QList<QByteArray> all = lines();
    all[2].replace(parseAuditLine(all[2])->previous, QByteArray(64, '0'));
    put(all);
    expectFlaw(AuditVerification::Altered, 3);
}

TEST_F(Audit, NamesALineWhoseNumberWasAltered)
{
    write(5);
    QList<QByteArray> all = lines();
    all[3].replace("\"n\":3,", "\"n\":8,");
    put(all);
    expectFlaw(AuditVerification::Altered, 4);
}

TEST_F(Audit, NamesALineThatWasMadeIllegible)
{
    write(5);
    QList<QByteArray> all = lines();
    all[3] = "nothing to see";
    put(all);
    expectFlaw(AuditVerification::Altered, 4);
}

TEST_F(Audit, NamesThePlaceOfMissingLines)
{
    write(6);
    QList<QByteArray> all = lines();
    all.removeAt(3);
    all.removeAt(3);
    put(all);
    expectFlaw(AuditVerification::Missing, 4);
    all.removeFirst();
    put(all);
    expectFlaw(AuditVerification::Missing, 1);
}

TEST_F(Audit, NamesReorderedLines)
{
    write(6);
    QList<QByteArray> all = lines();
    std::swap(all[3], all[4]);
    put(all);
    expectFlaw(AuditVerification::Reordered, 4);
}

TEST_F(Audit, NamesALineThatStandsThereTwice)
{
    write(3);
    QList<QByteArray> all = lines();
    all.insert(2, all[1]);
    put(all);
    expectFlaw(AuditVerification::Reordered, 3);
}

TEST_F(Audit, ShowsWhatWasTakenAwayAtTheEndByTheHeadAlone)
{
    QByteArray noted;
    {
        const auto log = open();
        ASSERT_TRUE(log->append(record("1")));
        noted = log->head();
    }
    EXPECT_EQ(noted, verify().head);
    QList<QByteArray> all = lines();
    all.removeLast();
    put(all);
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_NE(noted, verify().head);
}

TEST_F(Audit, GoesOnBehindHalfALineWithoutBreakingTheChain)
{
    write(2);
    const QByteArray whole = lines()[2];
    // Every place at which a process can end, also right before the end of the line.
    for (const int length : {1, 20, int(whole.size()) - 1, int(whole.size())}) {
        files.put(file(), "");
        ASSERT_EQ(0, ::unlink(QFile::encodeName(file()).constData()));
        write(1);
        const QByteArray next =
            recordLine(record("half"), 2, sha256(lines()[1])).left(length) + QByteArray(3, '\0');
        QFile opened(file());
        ASSERT_TRUE(opened.open(QIODevice::Append));
        opened.write(next.left(length));
        opened.close();
        EXPECT_EQ(AuditVerification::None, verify().flaw) << length;
        write(2);
        const AuditVerification result = verify();
        EXPECT_EQ(AuditVerification::None, result.flaw) << result.sentence.toStdString();
        EXPECT_EQ(1, result.cuts);
        EXPECT_EQ(6, result.lines);
    }
}

TEST_F(Audit, GoesOnWhereItWasCutAgainBeforeItCouldSaySo)
{
    write(1);
    files.append(file(), "{\"time\":\"19\n{\"time\":\"1970-01");
    write(1);
    EXPECT_EQ(AuditVerification::None, verify().flaw) << verify().sentence.toStdString();
    EXPECT_EQ(1, verify().cuts);
}

TEST_F(Audit, NamesLastLinesThatWereMadeIllegibleThoughTheFileEndsWithinALine)
{
    write(6);
    QList<QByteArray> all = lines();
    for (int i = 4; i < 7; ++i)
        all[i].replace("anna", "eve\"a");
    const QByteArray scrambled = all.join('\n');
    files.put(file(), scrambled.constData());
    expectFlaw(AuditVerification::Altered, 5);
    // One alone looks like what a crash leaves.
    files.put(file(), QByteArray(all.mid(0, 4).join('\n') + '\n' + all[4]).constData());
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_TRUE(verify().endsWithinLine);
    // Whole lines may neither stand behind it.
    files.put(file(),
              QByteArray(all.mid(0, 4).join('\n') + "\n{\"time\":\"19\n" + all[4]).constData());
    expectFlaw(AuditVerification::Altered, 5);
}

TEST_F(Audit, BlessesNoIllegibleLinesByGoingOnBehindThem)
{
    write(6);
    QList<QByteArray> all = lines();
    for (int i = 4; i < 7; ++i)
        all[i].replace("anna", "eve\"a");
    files.put(file(), all.join('\n').constData());
    {
        const auto log = open();
        ASSERT_TRUE(log);
        EXPECT_EQ(file() + stated(": its last lines are none of an audit"), log->flaw());
        EXPECT_TRUE(log->append(record("7"))) << "writes go on";
    }
    expectFlaw(AuditVerification::Altered, 5);
    EXPECT_EQ(0, verify().cuts);
}

TEST_F(Audit, HasNoFlawBehindHalfALine)
{
    write(1);
    EXPECT_EQ("", open()->flaw().toStdString());
    files.append(file(), "{\"time\":\"19\n{\"time\":\"1970-01");
    EXPECT_EQ("", open()->flaw().toStdString());
}

TEST_F(Audit, ShowsWhenACutPartWasAlteredLater)
{
    write(1);
    files.append(file(), "{\"time\":\"19");
    write(1);
    QList<QByteArray> all = lines();
    all[2] = "{\"time\":\"20";
    put(all);
    expectFlaw(AuditVerification::Altered, 3);
}

TEST_F(Audit, BeginsAnewWhereNotEvenTheFirstLineCameOntoTheDisk)
{
    files.put(file(), "{\"time\":\"1970-01-0");
    write(1);
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_EQ(2, verify().lines);
}

TEST_F(Audit, LeavesAnotherFileAlone)
{
    files.put(file(), "root:x:0:0\n");
    EXPECT_FALSE(open());
    EXPECT_EQ(file() + stated(": is no audit that can be gone on with"), error);
    EXPECT_EQ("root:x:0:0\n", files.content(file()));
}

TEST_F(Audit, LeavesFilesAloneThatLookLikeItsFirstLineForAWhile)
{
    const char* const others[] = {
        "{\"time\":\"",
        "{\"time\":\"1970-01-01T00:00:01.000Z\",\"message\":\"started\"}\n",
        "{\"time\":\"1970-01-01T00:00:01.000Z\",\"message\":\"star",
        "{\"time\":\"1970-01-01T00:00:01.000Z\",\"audit\":\"ok\"}",
        "{\"time\":\"1970-01-0\n",
    };
    for (const char* const other : others) {
        files.put(file(), other);
        EXPECT_FALSE(open()) << other;
        EXPECT_EQ(other, files.content(file()));
    }
}

TEST_F(Audit, BeginsAnewWhereverItsFirstLineWasCut)
{
    write(0);
    const QByteArray first = lines()[0];
    for (const int length : {10, 40, 60, 100, int(first.size())}) {
        files.put(file(), first.left(length).constData());
        write(1);
        EXPECT_EQ(AuditVerification::None, verify().flaw) << length;
        EXPECT_EQ(2, verify().lines) << length;
    }
}

TEST_F(Audit, IsWrittenByOneProcessAtATime)
{
    const auto log = open();
    EXPECT_FALSE(open());
    EXPECT_EQ(file() + stated(": another process writes it"), error);
}

TEST_F(Audit, GoesOnAcrossFiles)
{
    const auto log = open();
    ASSERT_TRUE(log->append(record("1")));
    ASSERT_TRUE(log->reopen(5)); // nothing was renamed
    ASSERT_TRUE(QFile::rename(file(), path("audit.1")));
    ASSERT_TRUE(log->append(record("2"))); // to the file that it has
    ASSERT_TRUE(log->reopen(6));
    ASSERT_TRUE(log->append(record("3")));
    const AuditVerification before = verify("audit.1");
    const AuditVerification after = verify();
    EXPECT_EQ(AuditVerification::None, before.flaw);
    EXPECT_EQ(AuditVerification::None, after.flaw);
    EXPECT_EQ(3, before.lines);
    EXPECT_FALSE(before.isContinued);
    EXPECT_TRUE(after.isContinued);
    EXPECT_EQ(before.head, after.previous);
    EXPECT_EQ(before.lastNumber + 1, after.firstNumber);
    EXPECT_EQ(log->head(), after.head);
}

TEST_F(Audit, GoesOnInANewFileWhereItsOwnWasRemoved)
{
    const auto log = open();
    ASSERT_TRUE(log->append(record("1")));
    const QByteArray head = log->head();
    ASSERT_TRUE(QFile::remove(file()));
    ASSERT_TRUE(succeeds(log->append(record("2")))) << error.toStdString();
    const AuditVerification after = verify();
    EXPECT_EQ(AuditVerification::None, after.flaw) << after.sentence.toStdString();
    EXPECT_TRUE(after.isContinued);
    EXPECT_EQ(head, after.previous);
    EXPECT_EQ(2, after.firstNumber);
    EXPECT_EQ(2, after.lines);
    EXPECT_NE(std::string::npos, files.content(file()).find("\"id\":\"2\""));
}

TEST_F(Audit, RefusesWhereItsFileWasRemovedAndNoOtherCanBeMade)
{
    const auto log = open();
    ASSERT_TRUE(QFile::remove(file()));
    ASSERT_TRUE(QDir().mkdir(file()));
    EXPECT_FALSE(succeeds(log->append(record("1"))));
    EXPECT_TRUE(error.startsWith(file())) << error.toStdString();
    EXPECT_FALSE(log->isWorking());
    ASSERT_TRUE(QDir().rmdir(file()));
    EXPECT_TRUE(succeeds(log->append(record("2")))) << error.toStdString();
    EXPECT_TRUE(log->isWorking());
    EXPECT_EQ(2, verify().lines);
}

TEST_F(Audit, StaysWithItsFileWhereAnotherCannotBeOpened)
{
    const auto log = open();
    ASSERT_TRUE(QFile::rename(file(), path("audit.1")));
    ASSERT_TRUE(QDir().mkdir(file()));
    EXPECT_FALSE(succeeds(log->reopen(6)));
    EXPECT_TRUE(succeeds(log->append(record("1"))));
    EXPECT_EQ(2, verify("audit.1").lines);
}

TEST_F(Audit, TellsWhatCouldNotBeWrittenAndGoesOnLater)
{
    const auto log = open();
    const auto before = ::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &unlimited));
    rlimit limit = unlimited;
    // Room for some of the line.
    limit.rlim_cur = rlim_t(files.content(file()).size()) + 50;
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_FALSE(succeeds(log->append(record("1"))));
    EXPECT_EQ(file() + stated(": cannot be written: File too large"), error);
    EXPECT_FALSE(log->isWorking());
    EXPECT_FALSE(succeeds(log->append(record("2"))));
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &unlimited));
    ::signal(SIGXFSZ, before);
    EXPECT_TRUE(succeeds(log->append(record("3"))));
    EXPECT_TRUE(log->isWorking());
    EXPECT_EQ(AuditVerification::None, verify().flaw) << verify().sentence.toStdString();
    EXPECT_EQ(1, verify().cuts);
    EXPECT_NE(std::string::npos, files.content(file()).find("\"id\":\"3\""));
    EXPECT_EQ(std::string::npos, files.content(file()).find("\"id\":\"2\""));
}

TEST_F(Audit, ChainsRecordsThatAreAddedAtOnce)
{
    const auto log = open();
    const AuditAppended appended = log->append(QVector<AuditRecord>{record("1"), record("2")});
    EXPECT_EQ(2, appended.kept);
    ASSERT_TRUE(log->append(record("3")));
    const QList<QByteArray> all = lines();
    ASSERT_EQ(4, all.size());
    for (int i = 1; i < 4; ++i) {
        EXPECT_EQ(recordLine(record(QByteArray::number(i).constData()), i, sha256(all[i - 1])),
                  all[i]);
    }
    EXPECT_EQ(AuditVerification::None, verify().flaw);
    EXPECT_EQ(sha256(all[3]), log->head());
}

TEST_F(Audit, KeepsOfRecordsThatAreAddedAtOnceThoseThatHaveRoom)
{
    const auto log = open();
    const auto before = ::signal(SIGXFSZ, SIG_IGN);
    rlimit unlimited = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &unlimited));
    rlimit limit = unlimited;
    const int line = int(recordLine(record("1"), 1, QByteArray(64, 'a')).size()) + 1;
    // Room for two lines and some of the third.
    limit.rlim_cur = rlim_t(files.content(file()).size()) + rlim_t(2 * line + 50);
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    const AuditAppended appended =
        log->append(QVector<AuditRecord>{record("1"), record("2"), record("3"), record("4")});
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &unlimited));
    ::signal(SIGXFSZ, before);
    EXPECT_EQ(2, appended.kept);
    EXPECT_EQ(file() + stated(": cannot be written: File too large"), appended.failure.text);
    EXPECT_FALSE(log->isWorking());

    EXPECT_EQ(2, log->append(QVector<AuditRecord>{record("5"), record("6")}).kept);
    EXPECT_TRUE(log->isWorking());
    EXPECT_EQ(AuditVerification::None, verify().flaw) << verify().sentence.toStdString();
    EXPECT_EQ(1, verify().cuts);
    QByteArrayList ids;
    for (const QByteArray& one : lines()) {
        const int begin = int(one.indexOf("\"id\":\""));
        if (begin >= 0 && parseAuditLine(one))
            ids.append(one.mid(begin + 6, 1));
    }
    EXPECT_EQ("1256", ids.join().toStdString()) << "none is lost, and none there twice";
}

TEST_F(Audit, IsReadInPages)
{
    write(5);
    const Expected<AuditPage> page = readAudit(file(), 2, 2);
    ASSERT_TRUE(succeeds(page));
    EXPECT_EQ(6, page->verification.lines);
    EXPECT_EQ(AuditVerification::None, page->verification.flaw);
    ASSERT_EQ(2, page->lines.size());
    EXPECT_TRUE(page->lines[0].contains("\"id\":\"2\""));
    const Expected<AuditPage> last = readAudit(file(), -1, 10);
    ASSERT_TRUE(succeeds(last));
    ASSERT_EQ(1, last->lines.size());
    EXPECT_TRUE(last->lines[0].contains("\"id\":\"5\""));
    const Expected<AuditPage> before = readAudit(file(), -4, 2);
    ASSERT_TRUE(succeeds(before));
    ASSERT_EQ(2, before->lines.size());
    EXPECT_TRUE(before->lines[0].contains("\"id\":\"2\""));
    EXPECT_TRUE(before->lines[1].contains("\"id\":\"3\""));
    const Expected<AuditPage> all = readAudit(file(), std::numeric_limits<qint64>::min(), 10);
    ASSERT_TRUE(succeeds(all));
    EXPECT_EQ(6, all->lines.size());
}

TEST_F(Audit, PageTellsWhatTheWholeFileDoes)
{
    write(5);
    QList<QByteArray> altered = lines();
    altered[1].replace("\"id\":\"1\"", "\"id\":\"9\"");
    put(altered);
    const Expected<AuditPage> page = readAudit(file(), -2, 2);
    ASSERT_TRUE(succeeds(page));
    EXPECT_EQ(2, page->lines.size());
    EXPECT_EQ(AuditVerification::Altered, page->verification.flaw);
    EXPECT_EQ(2, page->verification.flawedLine);
}

} // namespace
} // namespace plc::panel
