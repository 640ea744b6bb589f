#include "streams/file_replacement.h"

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <csignal>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include "tests/support/file_test.h"

namespace plc::streams {
namespace test {
namespace {

class FileReplacementTest : public plc::test::FileTest {
protected:
    void put(const char* name, const char* text) const { files.put(path(name), text); }
    std::string content(const char* name) const { return files.content(path(name)); }
    bool replace(const char* name, const QByteArray& bytes)
    {
        FileReplacement file(path(name));
        return succeeds(file.open()) && file.write(bytes) && succeeds(file.commit());
    }
};

TEST_F(FileReplacementTest, PutsTheNewFileInThePlaceOfTheOldOne)
{
    EXPECT_TRUE(replace("a", "first"));
    EXPECT_EQ("first", content("a"));
    EXPECT_TRUE(replace("a", "second")) << error.toStdString();
    EXPECT_EQ("second", content("a"));
    EXPECT_EQ("a", names());
}

TEST_F(FileReplacementTest, LeavesTheOldFileUntilItIsCommitted)
{
    put("a", "old");
    {
        FileReplacement file(path("a"));
        ASSERT_TRUE(succeeds(file.open()));
        EXPECT_TRUE(file.write(QByteArray(100000, 'x')));
        EXPECT_EQ("old", content("a"));
    }
    EXPECT_EQ("old", content("a"));
    EXPECT_EQ("a", names());
}

TEST_F(FileReplacementTest, KeepsTheRightsOfTheOldFile)
{
    put("a", "old");
    ASSERT_EQ(0, ::chmod(QFile::encodeName(path("a")).constData(), 0640));
    EXPECT_TRUE(replace("a", "new"));
    struct stat status = {};
    ASSERT_EQ(0, ::stat(QFile::encodeName(path("a")).constData(), &status));
    EXPECT_EQ(0640u, status.st_mode & 07777u);
}

TEST_F(FileReplacementTest, ReplacesWhatALinkLeadsTo)
{
    put("a", "old");
    ASSERT_TRUE(QFile::link(path("a"), path("link")));
    EXPECT_TRUE(replace("link", "new"));
    EXPECT_EQ("new", content("a"));
    EXPECT_TRUE(QFileInfo(path("link")).isSymLink());
}

TEST_F(FileReplacementTest, TakesADiskThatIsFullForAFailure)
{
    put("a", "old");
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit = {10, RLIM_INFINITY};
    ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &limit));
    EXPECT_FALSE(replace("a", "eleven byte"));
    EXPECT_EQ(path("a") + QStringLiteral(": cannot be written: File too large; the file stays as "
                                         "it was"),
              error);
    EXPECT_EQ("old", content("a"));
    EXPECT_EQ("a", names());
    EXPECT_TRUE(replace("a", "ten bytes."));
    EXPECT_EQ("ten bytes.", content("a"));
}

TEST_F(FileReplacementTest, WritesIntoWhatIsNoFileOnADisk)
{
    // As root, taking the name over would put a file in the place of the device.
    EXPECT_TRUE(succeeds(FileReplacement(QStringLiteral("/dev/null")).open()));
    FileReplacement null(QStringLiteral("/dev/null"));
    ASSERT_TRUE(succeeds(null.open()));
    EXPECT_TRUE(null.write("x"));
    EXPECT_TRUE(succeeds(null.commit())) << error.toStdString();
    struct stat status = {};
    ASSERT_EQ(0, ::stat("/dev/null", &status));
    EXPECT_TRUE(S_ISCHR(status.st_mode));

    FileReplacement full(QStringLiteral("/dev/full"));
    ASSERT_TRUE(succeeds(full.open()));
    full.write("x");
    EXPECT_FALSE(succeeds(full.commit()));
    EXPECT_EQ("/dev/full: cannot be written: No space left on device", error.toStdString());
}

TEST_F(FileReplacementTest, NamesWhatCannotBeAFile)
{
    EXPECT_FALSE(succeeds(FileReplacement(path("nowhere/a")).open()));
    EXPECT_EQ(path("nowhere/a") + QStringLiteral(": cannot be written: No such file or directory"),
              error);
    EXPECT_FALSE(succeeds(FileReplacement(QStringLiteral("/")).open()));
    EXPECT_EQ("/: cannot be written: Is a directory", error.toStdString());
}

} // namespace
} // namespace test
} // namespace plc::streams
