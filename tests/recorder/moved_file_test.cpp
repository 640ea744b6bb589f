#include <QtCore/QDir>

#include "database/sqlite_database.h"
#include "tests/recorder/recording.h"

namespace plc::recorder {
namespace test {
namespace {

/// Recordings whose files are moved and removed while they are recorded into.
class MovedFile : public Recording {
protected:
    /// What a label holds, and when.
    QVector<Sample> samplesOf(const QString& path, const char* label)
    {
        file = path;
        const Expected<QVector<Series>> all = read()->series();
        for (const Series& series : *all) {
            if (series.description.label == QLatin1String(label))
                return history(series.id, 0, 1000000).samples;
        }
        return {};
    }
    QVector<Sample> samplesOf(const char* label) { return samplesOf(path("a.sqlite"), label); }
    /// All samples of one value; its bytes are a letter.
    static QVector<Sample> samples(std::initializer_list<std::pair<qint64, const char*>> all)
    {
        QVector<Sample> result;
        for (const auto& [time, bytes] : all)
            result.append(bytes ? good(1, time, bytes).sample : gap(time));
        return result;
    }
};

TEST_F(MovedFile, IsGoneOnWithInANewOneThatBeginsWithWhatHolds)
{
    std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 100, "1"), good(b, 100, "x")}, 1000);
    ASSERT_TRUE(QFile::rename(file, path("moved.sqlite")));
    // Nobody has looked yet.
    append(*recorder, {good(a, 1500, "2")}, 1999);
    EXPECT_EQ(0, recorder->changedFiles());
    append(*recorder, {good(a, 2900, "3")}, 3000);
    EXPECT_EQ(1, recorder->changedFiles());
    append(*recorder, {good(b, 3500, "y")}, 4000);
    EXPECT_EQ(a, recorder->series(ofType("P.a", "INT")));
    recorder.reset();
    EXPECT_EQ(samples({{2900, "3"}, {4000, nullptr}}), samplesOf("P.a"));
    EXPECT_EQ(samples({{3000, "x"}, {3500, "y"}, {4000, nullptr}}), samplesOf("P.b"));
    // Without the journal, which stays where it was when the file alone is moved.
    EXPECT_EQ("a.sqlite moved.sqlite", names());
    EXPECT_EQ(samples({{100, "1"}, {1500, "2"}, {1999, nullptr}}),
              samplesOf(path("moved.sqlite"), "P.a"));
    EXPECT_EQ(Ending::Ended, runs().last().ending);
    EXPECT_EQ(1999, runs().last().until);
}

TEST_F(MovedFile, OnlyWhatIsRecordedIsInTheNewOne)
{
    {
        const std::unique_ptr<Recorder> recorder = open(0);
        append(*recorder, {good(recorder->series(ofType("P.old", "INT")), 0, "1")}, 0);
    }
    std::unique_ptr<Recorder> recorder = open(1000);
    const int a = recorder->series(ofType("P.a", "INT"));
    append(*recorder, {good(a, 1000, "1")}, 1000);
    ASSERT_TRUE(QFile::remove(file));
    append(*recorder, {}, 2000);
    ASSERT_EQ(1, read()->series()->size());
    EXPECT_EQ("P.a", read()->series()->first().description.label.toStdString());
    // Both numbers are new to the file.
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(b, 3000, "x"), good(a, 3000, "2")}, 3000);
    recorder.reset();
    EXPECT_EQ(samples({{2000, "1"}, {3000, "2"}, {3000, nullptr}}), samplesOf("P.a"));
    EXPECT_EQ(samples({{3000, "x"}, {3000, nullptr}}), samplesOf("P.b"));
}

TEST_F(MovedFile, AnErrorStaysAsLongAsNoneCanBeBegun)
{
    QDir folder(files.path("."));
    ASSERT_TRUE(folder.mkdir(QStringLiteral("in")));
    file = path("in/a.sqlite");
    std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 0, "1"), good(b, 0, "x")}, 0);
    ASSERT_TRUE(folder.rename(QStringLiteral("in"), QStringLiteral("out")));
    EXPECT_FALSE(succeeds(recorder->append({good(a, 1000, "2")}, 1000)));
    EXPECT_THAT(error.toStdString(),
                testing::HasSubstr("in/a.sqlite: the recording was moved or removed while it was"
                                   " open, and none can be begun in its place: "));
    EXPECT_FALSE(succeeds(recorder->append({good(a, 1000, "2")}, 1000)));
    // Also what could not wait any longer is what holds then.
    recorder->giveUp({good(b, 1500, "y")});
    ASSERT_TRUE(folder.mkdir(QStringLiteral("in")));
    append(*recorder, {good(a, 1000, "2")}, 2000);
    EXPECT_EQ(1, recorder->changedFiles());
    recorder.reset();
    EXPECT_EQ(samples({{1000, "2"}, {2000, nullptr}}), samplesOf(path("in/a.sqlite"), "P.a"));
    EXPECT_EQ(samples({{2000, "y"}, {2000, nullptr}}), samplesOf(path("in/a.sqlite"), "P.b"));
    EXPECT_EQ(samples({{0, "1"}, {0, nullptr}}), samplesOf(path("out/a.sqlite"), "P.a"));
}

TEST_F(MovedFile, ARecordingThatStandsThereIsGoneOnWith)
{
    const QString other = path("other.sqlite");
    {
        Expected<std::unique_ptr<Recorder>> recorder = Recorder::open(other, Limits(), 0);
        ASSERT_TRUE(succeeds(recorder));
        const int b = (*recorder)->series(ofType("P.b", "INT"));
        append(**recorder,
               {good(b, 100, "o"), good((*recorder)->series(ofType("P.a", "INT")), 100, "p")}, 200);
    }
    std::unique_ptr<Recorder> recorder = open(1000);
    const int a = recorder->series(ofType("P.a", "INT"));
    const int b = recorder->series(ofType("P.b", "INT"));
    append(*recorder, {good(a, 1000, "1"), good(b, 1000, "x")}, 1000);
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::rename(other, file));
    append(*recorder, {good(b, 2000, "y")}, 2000);
    recorder.reset();
    EXPECT_EQ(samples({{100, "p"}, {200, nullptr}, {2000, "1"}, {2000, nullptr}}),
              samplesOf("P.a"));
    EXPECT_EQ(samples({{100, "o"}, {200, nullptr}, {2000, "y"}, {2000, nullptr}}),
              samplesOf("P.b"));
}

TEST_F(MovedFile, AnotherDatabaseThatStandsThereIsLeftAsItIs)
{
    std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    append(*recorder, {good(a, 0, "1")}, 0);
    ASSERT_TRUE(QFile::remove(file));
    {
        database::SqliteDatabase other;
        ASSERT_TRUE(other.open(file + QStringLiteral(".new"), true));
        ASSERT_TRUE(other.execute("CREATE TABLE x(y); INSERT INTO x VALUES(42)"));
    }
    ASSERT_TRUE(QFile::rename(file + QStringLiteral(".new"), file));
    EXPECT_FALSE(succeeds(recorder->append({}, 1000)));
    EXPECT_THAT(error.toStdString(), testing::HasSubstr("the database exists and is no recording"));
    database::SqliteDatabase other;
    ASSERT_TRUE(other.open(file, false));
    EXPECT_EQ(42, other.number("SELECT y FROM x"));
    ASSERT_TRUE(QFile::remove(file));
    append(*recorder, {}, 2000);
    recorder.reset();
    EXPECT_EQ(samples({{2000, "1"}, {2000, nullptr}}), samplesOf("P.a"));
}

TEST_F(MovedFile, IsWholeBeforeANewOneBegins)
{
    std::unique_ptr<Recorder> recorder = open(0);
    const int a = recorder->series(ofType("P.a", "INT"));
    append(*recorder, {good(a, 0, "1")}, 0);
    const std::unique_ptr<Reader> reader = read();
    ASSERT_TRUE(QFile::rename(file, path("moved.sqlite")));
    ASSERT_TRUE(succeeds(reader->inOneState({1}, [&] {
        // What it reads holds up the journal.
        EXPECT_TRUE(succeeds(reader->changes(1, 0, 10)));
        EXPECT_FALSE(succeeds(recorder->append({}, 1000)));
        EXPECT_THAT(error.toStdString(), testing::EndsWith("somebody still reads it"));
    })));
    append(*recorder, {}, 2000);
    recorder.reset();
    EXPECT_EQ(samples({{0, "1"}, {0, nullptr}}), samplesOf(path("moved.sqlite"), "P.a"));
    EXPECT_EQ(samples({{2000, "1"}, {2000, nullptr}}), samplesOf("P.a"));
}

TEST_F(MovedFile, IsWholeAlsoWhereTheRecorderEndsAtOnce)
{
    std::unique_ptr<Recorder> recorder = open(0);
    append(*recorder, {good(recorder->series(ofType("P.a", "INT")), 0, "1")}, 0);
    ASSERT_TRUE(QFile::rename(file, path("moved.sqlite")));
    recorder.reset();
    EXPECT_EQ("moved.sqlite", names());
    EXPECT_EQ(samples({{0, "1"}, {0, nullptr}}), samplesOf(path("moved.sqlite"), "P.a"));
}

} // namespace
} // namespace test
} // namespace plc::recorder
