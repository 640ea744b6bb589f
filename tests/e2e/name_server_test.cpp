// What plc does while the name server is silent: it ends all the same. A limit of ctest ends what
// waits for the answer, which never comes.

#include "tests/e2e/plant.h"
#include "tests/e2e/spawned_process.h"

namespace plc::test {
namespace {

constexpr char kNameServerProject[] = R"({
  'name': 'Named',
  'plc': {'address': 'plc.example'},
  'settings': {'connectTimeout': 300, 'reconnectDelay': 50, 'reconnectDelayLimit': 50},
  'areas': [{'index': 1, 'size': 16}],
  'scopes': [{'name': 'R', 'variables': [
    {'name': 'a', 'type': 'INT', 'area': 1, 'offset': 0}]}],
  'cyclic': ['R.a']
})";

class SilentNameServer : public Plant {
protected:
    SilentNameServer() { writeProject(kNameServerProject); }

    Ending runSilent(const char* command, const QStringList& rest) const
    {
        Surroundings surroundings;
        surroundings.environment.append(QStringLiteral("LD_PRELOAD=" PLC_SILENT_NAME_SERVER));
        return runToEnd(QStringLiteral(PLC_HOST), arguments(command, rest), surroundings);
    }
};

TEST_F(SilentNameServer, DoesNotOutlastATimeout)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "sanitizers take the same call over";
    const Ending read = runSilent("read", {QStringLiteral("R.a")});
    EXPECT_EQ(1, read.exitCode);
    EXPECT_TRUE(read.errors.startsWith("plc: no link to plc.example:"))
        << read.errors.toStdString();
    EXPECT_EQ(1, runSilent("write", {QStringLiteral("R.a=1")}).exitCode);
    EXPECT_EQ(1, runSilent("run", {QStringLiteral("--once")}).exitCode);
    const Ending diagnosis = runSilent("diagnose", {});
    EXPECT_EQ(1, diagnosis.exitCode);
    EXPECT_TRUE(diagnosis.output.contains("no name server answered within 300 ms"))
        << diagnosis.output.toStdString();
}

TEST_F(SilentNameServer, DoesNotOutlastTheTimeOfARun)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "sanitizers take the same call over";
    const QStringList soon{QStringLiteral("--for"), QStringLiteral("0.5")};
    for (const char* command : {"run", "watch", "stats"})
        EXPECT_EQ(1, runSilent(command, soon).exitCode) << command;
    const QString log = projectPath() + QStringLiteral(".csv");
    EXPECT_EQ(1, runSilent("log", soon + QStringList{QStringLiteral("--output"), log}).exitCode);
}

} // namespace
} // namespace plc::test
