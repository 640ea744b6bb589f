#include "cli/label_file.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include "tests/project/test_project.h"

namespace plc::cli {
namespace test {

using project::test::testProject;
namespace {

class LabelFile : public ::testing::Test {
protected:
    /// The labels that the file gives, or the error behind its path.
    QStringList labelsOf(const QByteArray& text)
    {
        const QString path = folder.filePath(QStringLiteral("labels.csv"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        const Expected<QStringList> labels = readLabels(path, testProject());
        if (labels)
            return *labels;
        const QString error = labels.error().text;
        EXPECT_TRUE(error.startsWith(path + QStringLiteral(": "))) << error.toStdString();
        return {error.mid(path.size() + 2)};
    }

    QTemporaryDir folder;
};

TEST_F(LabelFile, HasALabelALineInTheFirstColumn)
{
    EXPECT_EQ((QStringList{"Main.speed", "Main.count"}), labelsOf("Main.speed\nMain.count\n"));
    EXPECT_EQ((QStringList{"Main.speed", "Main.count"}),
              labelsOf("Main.speed,INT,\"rpm, fast\"\r\n\r\n Main.count ,x"));
}

TEST_F(LabelFile, MayNameItsColumnsFirst)
{
    EXPECT_EQ((QStringList{"Main.speed"}), labelsOf("Label,type\nMain.speed,INT\n"));
    EXPECT_EQ("line 2: label \"label\": expected Scope.variable",
              labelsOf("Main.speed\nlabel\n").first());
}

TEST_F(LabelFile, TakesWhatTheCommandLineTakes)
{
    EXPECT_EQ((QStringList{"Big.block[0]*600", "Big.block[0..3]", "Main.*"}),
              labelsOf("Big.block[0]*600\nBig.block[0..3]\nMain.*\n"));
}

TEST_F(LabelFile, APatternMayEndInANumber)
{
    EXPECT_EQ((QStringList{"*1", "Main.table[*5]", "Main.s*1"}),
              labelsOf("*1\nMain.table[*5]\nMain.s*1\n"));
}

TEST_F(LabelFile, ALabelThatIsUnknownIsShownWithItsLine)
{
    EXPECT_EQ(
        "line 3: label \"Main.sped\": scope \"Main\" has no \"sped\" (did you mean "
        "\"speed\"?)",
        labelsOf("Main.speed\n\nMain.sped\n").first());
    EXPECT_EQ("line 2: the first column is empty, expected a label",
              labelsOf("Main.speed\n,x\n").first());
}

TEST_F(LabelFile, ALabelWithACommaNeedsQuotes)
{
    EXPECT_EQ(
        "line 2: \"Main.table[1\" ends within its subscripts; a label with a comma stands in "
        "quotes: \"Plant.table[1,2]\"",
        labelsOf("Main.speed\nMain.table[1,2]\n").first());
}

TEST_F(LabelFile, BrokenQuotesAreShownWithTheirLine)
{
    EXPECT_TRUE(
        labelsOf("Main.speed\n\"Main.count\n")
            .first()
            .startsWith(QStringLiteral("line 2: found the end of the file in a field in quotes")));
}

TEST_F(LabelFile, WithoutLabelsIsRefused)
{
    EXPECT_EQ("has no labels; expected one a line, in the first column",
              labelsOf("label\n").first());
    const auto errorOf = [](const QString& path) {
        return readLabels(path, testProject()).error().text.toStdString();
    };
    EXPECT_THAT(errorOf(folder.filePath(QStringLiteral("none.csv"))),
                ::testing::HasSubstr("cannot be read"));
    EXPECT_THAT(errorOf(folder.path()), ::testing::HasSubstr("it is a folder"));
}

} // namespace
} // namespace test
} // namespace plc::cli
