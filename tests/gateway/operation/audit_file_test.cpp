#include "gateway/operation/audit_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

#include "tests/support/file_test.h"

namespace plc::gateway {
namespace test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// 2026-11-22T08:00:00.007Z: 20779 days of 86400 s since 1970, eight hours and 7 ms.
constexpr qint64 kTime = (20779LL * 86400 + 8 * 3600) * 1000 + 7;

class AuditFileTest : public plc::test::FileTest {
protected:
    static AuditRecord record(const char* value)
    {
        AuditRecord record;
        record.time = kTime;
        record.device = QStringLiteral("Press 1");
        record.label = QStringLiteral("Plant.pump[1].setpoint");
        record.value = QString::fromUtf8(value);
        record.outcome = WriteOutcome::Done;
        record.id = QStringLiteral("17");
        record.topic = QStringLiteral("spBv1.0/G/DCMD/N/Press 1");
        return record;
    }
    static std::string line(const char* value)
    {
        return R"({"time":"2026-11-22T08:00:00.007Z","device":"Press 1",)"
               R"("label":"Plant.pump[1].setpoint","value":")" +
               std::string(value) +
               R"(","outcome":"done","reason":"","id":"17","topic":"spBv1.0/G/DCMD/N/Press 1"})"
               "\n";
    }
    std::unique_ptr<AuditFile> open()
    {
        Expected<std::unique_ptr<AuditFile>> audit = AuditFile::open(file);
        EXPECT_TRUE(succeeds(audit)) << error.toStdString();
        return audit ? std::move(*audit) : nullptr;
    }
    std::string content() const { return files.content(file); }

    const QString file = path("writes.jsonl");
};

TEST_F(AuditFileTest, HasALineForEachWrite)
{
    const auto audit = open();
    ASSERT_TRUE(audit->append({record("1"), record("2")}));
    EXPECT_EQ(line("1") + line("2"), content());
}

TEST_F(AuditFileTest, TellsAllThatIsKnown)
{
    AuditRecord refused = record("[1, 2]");
    refused.outcome = WriteOutcome::Unknown;
    refused.reason = QStringLiteral("the \"link\" was lost");
    const QJsonObject object = QJsonDocument::fromJson(auditLine(refused)).object();
    EXPECT_EQ("unknown", object.value(QLatin1String("outcome")).toString().toStdString());
    EXPECT_EQ("the \"link\" was lost",
              object.value(QLatin1String("reason")).toString().toStdString());
    EXPECT_EQ("[1, 2]", object.value(QLatin1String("value")).toString().toStdString());
    EXPECT_EQ(8, object.size());
}

TEST_F(AuditFileTest, WhatConsumersSendStaysInItsLine)
{
    AuditRecord sly = record("1\n{\"time\":\"x\"}");
    sly.id = QStringLiteral("\u001b[2J\u202e\u2028");
    sly.topic = QString(QChar(0xD83D)); // half of a character
    const QByteArray line = auditLine(sly);
    EXPECT_FALSE(line.contains('\n'));
    EXPECT_FALSE(line.contains('\x1b'));
    EXPECT_THAT(line.toStdString(), HasSubstr(R"("value":"1\u000a{\"time\":\"x\"}")"));
    EXPECT_THAT(line.toStdString(), HasSubstr(R"("id":"\u001b[2J\u202e\u2028")"));
    EXPECT_THAT(line.toStdString(), HasSubstr(R"("topic":"\ud83d")"));
}

TEST_F(AuditFileTest, GoesOnWithWhatIsThere)
{
    ASSERT_TRUE(open()->append({record("1")}));
    ASSERT_TRUE(open()->append({record("2")}));
    EXPECT_EQ(line("1") + line("2"), content());
}

TEST_F(AuditFileTest, BeginsALineBehindHalfAOne)
{
    files.put(file, "{\"time\":\"2026");
    ASSERT_TRUE(open()->append({record("1")}));
    EXPECT_EQ("{\"time\":\"2026\n" + line("1"), content());
}

TEST_F(AuditFileTest, IsForOwnerAndGroup)
{
    const mode_t before = ::umask(0);
    open();
    ::umask(before);
    struct stat status = {};
    ASSERT_EQ(0, ::stat(file.toLocal8Bit().constData(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777u);
}

TEST_F(AuditFileTest, FollowsARenamedFileWhenAsked)
{
    const auto audit = open();
    ASSERT_TRUE(audit->append({record("1")}));
    ASSERT_TRUE(QFile::rename(file, path("writes.jsonl.1")));
    ASSERT_TRUE(audit->append({record("2")}));
    ASSERT_TRUE(audit->reopen());
    ASSERT_TRUE(audit->append({record("3")}));
    EXPECT_EQ(line("1") + line("2"), files.content(path("writes.jsonl.1")));
    EXPECT_EQ(line("3"), content());
}

TEST_F(AuditFileTest, KeepsItsFileWhenANewOneCannotBeMade)
{
    const QString folder = path("folder");
    ASSERT_TRUE(QDir().mkdir(folder));
    const auto audit = AuditFile::open(folder + QStringLiteral("/a"));
    ASSERT_TRUE(audit);
    ASSERT_TRUE(QDir().rename(folder, path("moved")));
    EXPECT_FALSE(succeeds((*audit)->reopen()));
    EXPECT_THAT(error.toStdString(),
                EndsWith("folder/a: cannot be opened for writing: No such file or directory"));
    ASSERT_TRUE((*audit)->append({record("1")}));
    EXPECT_EQ(line("1"), files.content(path("moved/a")));
}

TEST_F(AuditFileTest, AFullDiskIsToldAndTheNextLineIsWhole)
{
    rlimit before = {};
    ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, &before));
    std::signal(SIGXFSZ, SIG_IGN);
    const auto audit = open();
    ASSERT_TRUE(audit->append({record("1")}));
    const rlimit limit = {line("1").size() + 20, before.rlim_max};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_FALSE(succeeds(audit->append({record("2")})));
    EXPECT_THAT(error.toStdString(), EndsWith("writes.jsonl: cannot be written: File too large"));
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &before));
    ASSERT_TRUE(audit->append({record("3")}));
    EXPECT_EQ(line("1") + line("2").substr(0, 20) + "\n" + line("3"), content());
}

/// A disk of which the test says when, and whether, it has taken a file.
class SlowDisk {
public:
    /// To be set before the sync that it is for has begun.
    std::atomic<int> error{0};
    /// Lets one sync more end.
    void letEnd()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        ++m_allowed;
        m_changed.notify_all();
    }
    DiskSync::Sync sync()
    {
        return [this](int) {
            const int result = error;
            std::unique_lock<std::mutex> lock(m_mutex);
            ++m_begun;
            m_changed.notify_all();
            m_changed.wait(lock, [this] { return m_allowed > 0; });
            --m_allowed;
            return result;
        };
    }
    void awaitBegun(int count)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this, count] { return m_begun >= count; });
    }
    int begun()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_begun;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    int m_allowed = 0;
    int m_begun = 0;
};

class AuditFileOnSlowDisk : public AuditFileTest {
protected:
    /// Asks at this time until the sync that was let end has been seen.
    void awaitProblem(qint64 now, const std::function<bool(const QString&)>& isIt)
    {
        while (!isIt(audit->problem())) {
            audit->bringOntoDisk(now);
            std::this_thread::yield();
        }
    }
    ~AuditFileOnSlowDisk() override
    {
        for (int i = 0; i < 3; ++i)
            disk.letEnd();
    }

    SlowDisk disk;
    const std::unique_ptr<AuditFile> audit = std::move(*AuditFile::open(file, disk.sync()));
};

TEST_F(AuditFileOnSlowDisk, NobodyWaitsForTheDisk)
{
    ASSERT_TRUE(audit->append({record("1")}));
    audit->bringOntoDisk(1000);
    disk.awaitBegun(1);
    ASSERT_TRUE(audit->append({record("2")}));
    audit->bringOntoDisk(6000);
    EXPECT_EQ("", audit->problem().toStdString());
    audit->bringOntoDisk(6001);
    EXPECT_THAT(audit->problem().toStdString(),
                EndsWith("writes.jsonl: the disk takes too long for it"));
    EXPECT_EQ(1, disk.begun());
    disk.letEnd();
    awaitProblem(6002, [](const QString& problem) { return problem.isEmpty(); });
    disk.awaitBegun(2);
    EXPECT_EQ(line("1") + line("2"), content());
}

TEST_F(AuditFileOnSlowDisk, ADiskThatTakesNothingIsToldUntilItDoes)
{
    disk.error = EIO;
    ASSERT_TRUE(audit->append({record("1")}));
    audit->bringOntoDisk(1000);
    disk.awaitBegun(1);
    disk.error = 0;
    disk.letEnd();
    awaitProblem(2000, [](const QString& problem) { return !problem.isEmpty(); });
    EXPECT_THAT(audit->problem().toStdString(),
                EndsWith("writes.jsonl: cannot be brought onto the disk, which may lack its last "
                         "lines: Input/output error"));
    ASSERT_TRUE(audit->append({record("2")}));
    EXPECT_NE("", audit->problem().toStdString()) << "it is in the file, and not on the disk";
    disk.letEnd();
    awaitProblem(3000, [](const QString& problem) { return problem.isEmpty(); });
}

TEST_F(AuditFileOnSlowDisk, ANewFileIsGoneOnWithAlsoWhenTheDiskDoesNotTakeTheOldOne)
{
    ASSERT_TRUE(audit->append({record("1")}));
    ASSERT_TRUE(QFile::rename(file, path("writes.jsonl.1")));
    disk.error = EIO;
    EXPECT_TRUE(succeeds(audit->reopen()));
    disk.awaitBegun(1);
    disk.error = 0;
    disk.letEnd();
    awaitProblem(2000, [](const QString& problem) { return !problem.isEmpty(); });
    ASSERT_TRUE(audit->append({record("2")}));
    EXPECT_EQ(line("1"), files.content(path("writes.jsonl.1")));
    EXPECT_EQ(line("2"), content());
    disk.letEnd();
    awaitProblem(3000, [](const QString& problem) { return problem.isEmpty(); });
}

TEST_F(AuditFileTest, AFileThatCannotBeMadeIsNamed)
{
    EXPECT_FALSE(succeeds(AuditFile::open(path("nowhere/a"))));
    EXPECT_THAT(error.toStdString(),
                EndsWith("nowhere/a: cannot be opened for writing: No such file or directory"));
}

TEST_F(AuditFileTest, ADeviceThatTakesNothingIsTold)
{
    const auto audit = AuditFile::open(QStringLiteral("/dev/full"));
    ASSERT_TRUE(audit);
    EXPECT_FALSE(succeeds((*audit)->append({record("1")})));
    EXPECT_EQ("/dev/full: cannot be written: No space left on device", error.toStdString());
}

} // namespace
} // namespace test
} // namespace plc::gateway
