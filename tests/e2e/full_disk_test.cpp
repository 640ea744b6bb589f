// What stays on a disk that gets full. A limit on the size of files is met like one: by a write in
// the middle of what a command has to write.

#include "tests/e2e/plant.h"
#include "tests/e2e/spawned_process.h"
#include "tests/support/test_folder.h"

namespace plc::test {
namespace {

constexpr char kFullDiskProject[] = R"({
  'name': 'Full',
  'areas': [{'index': 1, 'size': 256}, {'index': 2, 'size': 1000}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0},
    {'name': 'counter', 'type': 'UDINT', 'area': 1, 'offset': 4,
     'signal': {'kind': 'counter', 'from': 0, 'to': 4000000000, 'interval': 0.02}},
    {'name': 'table', 'type': 'SINT', 'area': 2, 'offset': 0, 'array': [[1, 1000]]}]}],
  'cyclic': ['R.counter']
})";

class FullDisk : public Plant {
protected:
    FullDisk()
    {
        writeProject(kFullDiskProject);
        put("a.st", "VAR_GLOBAL a AT %MW10 : INT; END_VAR\n");
    }

    TestFolder folder() const { return TestFolder(projectPath().section(QLatin1Char('/'), 0, -2)); }
    QString path(const char* name) const { return folder().path(name); }
    void put(const char* name, const char* text) const { folder().put(path(name), text); }
    std::string content(const char* name) const { return folder().content(path(name)); }
    std::string names() const { return folder().names(); }
    Ending runWithin(rlim_t bytes, const QStringList& arguments) const
    {
        Surroundings surroundings;
        surroundings.largestFile = bytes;
        return runToEnd(QStringLiteral(PLC_HOST), arguments, surroundings);
    }
    /// Code 1 and a message that names the file.
    static void expectTold(const Ending& ending, const char* name)
    {
        EXPECT_EQ(1, ending.exitCode) << ending.errors.toStdString();
        EXPECT_TRUE(ending.errors.contains(QByteArray(name))) << ending.errors.toStdString();
        EXPECT_TRUE(ending.errors.contains("File too large")) << ending.errors.toStdString();
    }
};

TEST_F(FullDisk, AMergedProjectStaysAsItWas)
{
    put("old.json", content("project.json").c_str());
    const std::string before = names();
    const Ending ending =
        runWithin(50, {QStringLiteral("import"), path("a.st"), QStringLiteral("--merge"),
                       path("old.json"), QStringLiteral("--output"), path("old.json")});
    expectTold(ending, "old.json: cannot be written: ");
    EXPECT_TRUE(ending.errors.contains("the file stays as it was"));
    EXPECT_FALSE(ending.errors.contains("imported"));
    EXPECT_EQ(content("project.json"), content("old.json"));
    EXPECT_EQ(before, names());
}

TEST_F(FullDisk, AnImportedProjectIsNotLeftInPart)
{
#if defined(__SANITIZE_THREAD__)
    GTEST_SKIP() << "ThreadSanitizer begins with a file of its own";
#endif
    const std::string before = names();
    for (const rlim_t bytes : {0, 1, 50}) {
        expectTold(runWithin(bytes, {QStringLiteral("import"), path("a.st"),
                                     QStringLiteral("--output"), path("new.json")}),
                   "new.json: cannot be written: ");
        EXPECT_EQ(before, names()) << bytes;
    }
}

TEST_F(FullDisk, AnImportOfAnyLengthReplacesTheWholeFileOrNothing)
{
    const QStringList import{QStringLiteral("import"), path("a.st"), QStringLiteral("--output"),
                             path("new.json")};
    ASSERT_EQ(0, runWithin(RLIM_INFINITY, import).exitCode);
    const rlim_t size = rlim_t(content("new.json").size());
    put("new.json", "old");
    EXPECT_EQ(1, runWithin(size - 1, import).exitCode);
    EXPECT_EQ("old", content("new.json"));
    EXPECT_EQ(0, runWithin(size, import).exitCode);
    EXPECT_EQ(size, content("new.json").size());
}

class FullDiskOfALink : public FullDisk {
protected:
    FullDiskOfALink() { startSimulator(); }

    QStringList linked(const char* command, const QStringList& rest) const
    {
        return arguments(command, rest);
    }
    QStringList log(const char* file, const char* seconds) const
    {
        return linked("log",
                      {QStringLiteral("--cycle"), QStringLiteral("10"), QStringLiteral("--for"),
                       QString::fromLatin1(seconds), QStringLiteral("--output"), path(file)});
    }
};

TEST_F(FullDiskOfALink, AnExportLeavesNoFile)
{
    // A thousand records are more than 40,000 bytes of CSV. The database itself needs 32 KiB.
    const QStringList all{QStringLiteral("R.table[1..1000]")};
    ASSERT_EQ(0, runWithin(RLIM_INFINITY, log("a.sqlite", "2") + all).exitCode);
    const std::string before = names();
    for (const rlim_t bytes : {33000, 40000}) {
        expectTold(runWithin(bytes, {QStringLiteral("log"), QStringLiteral("--export"),
                                     path("a.sqlite"), QStringLiteral("--output"), path("a.csv")}),
                   "a.csv: cannot be written: ");
        EXPECT_EQ(before, names()) << bytes;
    }
}

TEST_F(FullDiskOfALink, ALogThatIsFullFromTheStartIsTold)
{
    expectTold(runWithin(5, log("a.csv", "5")), "a.csv: cannot be written: ");
    EXPECT_EQ("", content("a.csv"));
    const Ending database = runWithin(5, log("a.sqlite", "5"));
    EXPECT_EQ(1, database.exitCode) << database.errors.toStdString();
    EXPECT_TRUE(database.errors.contains("a.sqlite: ")) << database.errors.toStdString();
}

TEST_F(FullDiskOfALink, ALogInADatabaseHasWhatWasWrittenBeforeAndTellsWhatIsMissing)
{
    // The write-ahead log has 32 KiB of index beside it.
    const Ending ending = runWithin(70000, log("a.sqlite", "6"));
    EXPECT_EQ(1, ending.exitCode) << ending.errors.toStdString();
    EXPECT_TRUE(ending.errors.contains("a.sqlite: ")) << ending.errors.toStdString();
    EXPECT_TRUE(ending.errors.contains("it is tried again each second"))
        << ending.errors.toStdString();
    EXPECT_TRUE(ending.errors.contains(" records are not known to be written; in their place "))
        << ending.errors.toStdString();
    const Ending exported =
        runWithin(RLIM_INFINITY, {QStringLiteral("log"), QStringLiteral("--export"),
                                  path("a.sqlite"), QStringLiteral("--output"), path("a.csv")});
    EXPECT_EQ(0, exported.exitCode) << exported.errors.toStdString();
    EXPECT_GT(content("a.csv").size(), 100u);
}

TEST_F(FullDiskOfALink, ACaptureThatCannotBeginLeavesTheOldOne)
{
    put("a.pcapng", "earlier session");
    const std::string before = names();
    const Ending ending =
        runWithin(20, linked("read", {QStringLiteral("R.a"), QStringLiteral("--capture"),
                                      path("a.pcapng"), QStringLiteral("--force")}));
    expectTold(ending, "cannot write the capture ");
    EXPECT_EQ("", ending.output.toStdString());
    EXPECT_EQ("earlier session", content("a.pcapng"));
    EXPECT_EQ(before, names());
}

TEST_F(FullDiskOfALink, ACaptureEndsWithAWholePacketAndIsTold)
{
    const Ending ending = runWithin(
        300,
        linked("read", {QStringLiteral("R.a"), QStringLiteral("--capture"), path("a.pcapng")}));
    expectTold(ending, "a.pcapng is incomplete: ");
    EXPECT_EQ("R.a = 0\n", ending.output.toStdString());
    // Blocks tell their length in their second word and in their last one.
    const std::string file = content("a.pcapng");
    size_t position = 0;
    while (position + 8 <= file.size())
        position += size_t(uchar(file[position + 4])) + 256 * size_t(uchar(file[position + 5]));
    EXPECT_EQ(file.size(), position);
    EXPECT_GT(position, 100u);
}

} // namespace
} // namespace plc::test
