#include "streams/input_file.h"

#include <gtest/gtest.h>

#include <QtCore/QTemporaryDir>

#include "tests/support/test_folder.h"

namespace plc::streams {
namespace {

constexpr qint64 kMebibyte = 1024 * 1024;
constexpr InputFileKind kPlan = {"a plan", kMebibyte, "a plan has less"};

class InputFileTest : public testing::Test {
protected:
    std::string errorOf(const QString& path, const InputFileKind& kind = kPlan)
    {
        const Expected<QByteArray> bytes = readInputFile(path, kind);
        return bytes ? std::string() : bytes.error().text.toStdString();
    }

    QTemporaryDir m_temporary;
    plc::test::TestFolder folder{m_temporary.path()};
};

TEST_F(InputFileTest, GivesAllBytes)
{
    const QString path = folder.path("plan");
    folder.put(path, "one\ntwo");
    EXPECT_EQ("one\ntwo", *readInputFile(path, kPlan));
}

TEST_F(InputFileTest, FolderIsNoFile)
{
    const QString path = m_temporary.path();
    EXPECT_EQ(path.toStdString() + ": is a folder, expected a plan", errorOf(path));
}

TEST_F(InputFileTest, FileThatIsNotThereIsToldWithItsReason)
{
    const QString path = folder.path("none");
    EXPECT_EQ(path.toStdString() + ": cannot be read: No such file or directory", errorOf(path));
}

TEST_F(InputFileTest, LargestFileIsReadAndALargerOneIsNot)
{
    const QString path = folder.path("plan");
    folder.put(path, std::string(size_t(kMebibyte), 'x').c_str());
    EXPECT_EQ("", errorOf(path));
    folder.append(path, "x");
    EXPECT_EQ(path.toStdString() + ": the file has more than 1 MiB; a plan has less",
              errorOf(path));
    EXPECT_EQ(path.toStdString() + ": the file has more than 1 MiB",
              errorOf(path, {"a plan", kMebibyte, ""}));
}

TEST_F(InputFileTest, DeviceWithoutAnEndIsTooLarge)
{
    EXPECT_EQ("/dev/zero: the file has more than 1 MiB; a plan has less",
              errorOf(QStringLiteral("/dev/zero")));
}

TEST_F(InputFileTest, BytesThatCameAnotherWayAreJudgedAlike)
{
    EXPECT_TRUE(checkInputSize(QByteArray(int(kMebibyte), 'x'), QStringLiteral("p"), kPlan));
    const auto judged =
        checkInputSize(QByteArray(int(kMebibyte) + 1, 'x'), QStringLiteral("p"), kPlan);
    ASSERT_FALSE(judged);
    EXPECT_EQ("p: the file has more than 1 MiB; a plan has less",
              judged.error().text.toStdString());
}

} // namespace
} // namespace plc::streams
