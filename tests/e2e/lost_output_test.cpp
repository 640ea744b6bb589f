// What the programs do when their standard output takes nothing: a disk that is full, a pipe whose
// reader has gone, or no output at all.

#include "tests/e2e/command_table.h"
#include "tests/e2e/plant.h"

namespace plc::test {
namespace {

constexpr char kLostOutputProject[] = R"({
  'name': 'Unheard',
  'areas': [{'index': 1, 'size': 256}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0, 'overlay': true},
    {'name': 'b', 'type': 'INT', 'area': 1, 'offset': 0},
    {'name': 'counter', 'type': 'UDINT', 'area': 1, 'offset': 4,
     'signal': {'kind': 'counter', 'from': 0, 'to': 4000000000, 'interval': 0.02}}]}],
  'cyclic': ['R.a']
})";

constexpr char kLoss[] = ": the standard output cannot be written: ";

class LostOutput : public Plant {
protected:
    LostOutput()
    {
        writeProject(kLostOutputProject);
        startSimulator();
        m_full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        int ends[2] = {-1, -1};
        EXPECT_EQ(0, ::pipe2(ends, O_CLOEXEC));
        ::close(ends[0]);
        m_brokenPipe = ends[1];
    }
    ~LostOutput() override
    {
        ::close(m_full);
        ::close(m_brokenPipe);
    }

    QString path(const char* name) const
    {
        return projectPath().section(QLatin1Char('/'), 0, -2) + QLatin1Char('/') +
               QLatin1String(name);
    }
    QString declarations() const
    {
        const QString file = path("a.st");
        QFile source(file);
        source.open(QIODevice::WriteOnly);
        source.write("VAR_GLOBAL a AT %MW10 : INT; END_VAR\n");
        return file;
    }
    /// Ways to call each command, all of which print something and end with 0 if they can.
    QVector<QStringList> calls(const QString& command) const
    {
        const QString label = QStringLiteral("R.a");
        const QStringList soon{QStringLiteral("--for"), QStringLiteral("0.3")};
        const QString json = QStringLiteral("--json");
        if (command == QLatin1String("read"))
            return {{label}, {label, json}, {label, QStringLiteral("--csv")}};
        if (command == QLatin1String("write"))
            return {{label + QStringLiteral("=1")}, {label + QStringLiteral("=1"), json}};
        if (command == QLatin1String("run"))
            return {soon, soon + QStringList{json}, {QStringLiteral("--once")}};
        if (command == QLatin1String("watch") || command == QLatin1String("stats"))
            return {soon, soon + QStringList{json}};
        if (command == QLatin1String("log"))
            return {soon + QStringList{QStringLiteral("--output"), path("a.csv")},
                    soon + QStringList{json, QStringLiteral("--output"), path("a.sqlite")}};
        if (command == QLatin1String("resolve"))
            return {{label}, {label, json}};
        if (command == QLatin1String("symbols"))
            return {{},
                    {json},
                    {QStringLiteral("--csv")},
                    {QStringLiteral("--tree")},
                    {QStringLiteral("--tree"), json},
                    {QStringLiteral("--check")},
                    {QStringLiteral("--check"), json}};
        if (command == QLatin1String("import"))
            return {{declarations()}};
        if (command == QLatin1String("plan") || command == QLatin1String("diagnose"))
            return {{}, {json}};
        ADD_FAILURE() << "no call is known of " << command.toStdString();
        return {};
    }
    /// Without what a command does not take.
    QStringList argumentsFor(const QString& command, const QStringList& call)
    {
        if (command == QLatin1String("import"))
            return QStringList{command} + call;
        const QStringList common{QStringLiteral("--project"), projectPath(),
                                 QStringLiteral("--driver"), QStringLiteral(PLC_LIBRARY)};
        const QStringList withoutLink{QStringLiteral("resolve"), QStringLiteral("symbols"),
                                      QStringLiteral("plan")};
        QStringList all = QStringList{command} + common;
        if (!withoutLink.contains(command))
            all += QStringList{QStringLiteral("--port"), simulator().port()};
        return all + call;
    }
    void expectTold(const QString& program, const QStringList& arguments,
                    const Surroundings& surroundings, const char* reason) const
    {
        const Ending ending = runToEnd(program, arguments, surroundings);
        EXPECT_EQ(1, ending.exitCode) << arguments.join(QLatin1Char(' ')).toStdString();
        const QByteArray expected = QByteArray(kLoss) + reason + '\n';
        EXPECT_EQ(1, ending.errors.count(expected))
            << arguments.join(QLatin1Char(' ')).toStdString() << "\n"
            << ending.errors.toStdString();
    }
    /// For every way in which an output can be missing.
    void expectAllTold(const QString& program, const QStringList& arguments) const
    {
        Surroundings surroundings;
        surroundings.output = m_full;
        expectTold(program, arguments, surroundings, "No space left on device");
        surroundings.output = m_brokenPipe;
        expectTold(program, arguments, surroundings, "Broken pipe");
        surroundings.output = -1;
        surroundings.hasOutput = false;
        expectTold(program, arguments, surroundings, "Bad file descriptor");
    }

    int m_full = -1;
    int m_brokenPipe = -1;
};

TEST_F(LostOutput, IsToldByEveryCommand)
{
    for (const QString& command : allCommands()) {
        for (const QStringList& call : calls(command))
            expectAllTold(QStringLiteral(PLC_HOST), argumentsFor(command, call));
    }
}

TEST_F(LostOutput, IsToldByHelpAndVersionOfBothPrograms)
{
    for (const char* program : {PLC_HOST, PLC_SIMULATOR}) {
        for (const char* option : {"--help", "--version"})
            expectAllTold(QString::fromLatin1(program), {QString::fromLatin1(option)});
    }
}

TEST_F(LostOutput, OfARunEndsItCalmly)
{
    SpawnedProcess run(
        QStringLiteral(PLC_HOST),
        argumentsFor(QStringLiteral("run"), {QStringLiteral("R.counter"),
                                             QStringLiteral("--interval"), QStringLiteral("20")}),
        {});
    ASSERT_TRUE(run.waitForOutput("R.counter = "));
    run.closeOutput();
    const Ending ending = run.wait();
    EXPECT_EQ(1, ending.exitCode);
    EXPECT_EQ("plc: the standard output cannot be written: Broken pipe\n",
              ending.errors.toStdString());
}

TEST_F(LostOutput, OfARunLeavesTheOutcomeOfAWriteToTheStandardError)
{
    SpawnedProcess run(QStringLiteral(PLC_HOST), argumentsFor(QStringLiteral("run"), {}), {});
    ASSERT_TRUE(run.waitForOutput("R.a = 0"));
    run.closeOutput();
    run.send("write R.a=5\n");
    const Ending ending = run.wait();
    EXPECT_EQ(1, ending.exitCode);
    EXPECT_TRUE(ending.errors.contains("write R.a = 5: done\n")) << ending.errors.toStdString();
    EXPECT_EQ("00 05", peek(1, 0, 2));
}

TEST_F(LostOutput, OfAWriteLeavesTheOutcomeToTheStandardError)
{
    Surroundings surroundings;
    surroundings.output = m_full;
    const Ending ending =
        runToEnd(QStringLiteral(PLC_HOST),
                 argumentsFor(QStringLiteral("write"), {QStringLiteral("R.a=7")}), surroundings);
    EXPECT_EQ(1, ending.exitCode);
    EXPECT_TRUE(ending.errors.contains("R.a = 7: done\n")) << ending.errors.toStdString();
}

TEST_F(LostOutput, NeverGoesIntoAFileThatTookItsNumber)
{
    // The first file that a program opens gets the lowest free number: that of the missing output.
    Surroundings surroundings;
    surroundings.hasOutput = false;
    const QStringList call{QStringLiteral("--for"), QStringLiteral("0.3"),
                           QStringLiteral("--output"), path("b.csv")};
    runToEnd(QStringLiteral(PLC_HOST), argumentsFor(QStringLiteral("log"), call), surroundings);
    QFile log(path("b.csv"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QByteArray content = log.readAll();
    EXPECT_TRUE(content.startsWith("time,label,value,state\n"));
    EXPECT_FALSE(content.contains("records in")) << content.toStdString();
}

TEST_F(LostOutput, OfTheSimulatorDoesNotKeepItFromServing)
{
    Surroundings surroundings;
    surroundings.output = m_full;
    surroundings.input = "status\nstop\n";
    const Ending ending = runToEnd(
        QStringLiteral(PLC_SIMULATOR),
        {projectPath(), QStringLiteral("--port"), QStringLiteral("0"), QStringLiteral("--quiet")},
        surroundings);
    EXPECT_EQ(1, ending.exitCode);
    EXPECT_EQ("plc-simulator: the standard output cannot be written: No space left on device\n",
              ending.errors.toStdString());
}

} // namespace
} // namespace plc::test
