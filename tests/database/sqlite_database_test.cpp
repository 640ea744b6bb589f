#include "database/sqlite_database.h"

#include <atomic>
#include <thread>

#include "tests/support/file_test.h"

namespace plc::database {
namespace test {
namespace {

constexpr char kWithoutEnd[] =
    "WITH RECURSIVE c(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM c) SELECT count(*) FROM c";

class SqliteDatabaseTest : public plc::test::FileTest {
protected:
    SqliteDatabaseTest() { EXPECT_TRUE(database.open(path("a.sqlite"), true)); }

    SqliteDatabase database;
};

TEST_F(SqliteDatabaseTest, AStatementThatIsInterruptedFailsWhenever)
{
    EXPECT_EQ(1, database.number("SELECT 1"));
    std::atomic<bool> isInterrupted{false};
    std::thread other([&] {
        database.interrupt();
        isInterrupted = true;
    });
    // It may have begun by then, or not.
    EXPECT_EQ(std::nullopt, database.number(kWithoutEnd));
    other.join();
    EXPECT_TRUE(isInterrupted);
    EXPECT_EQ(std::nullopt, database.number("SELECT 1"));
    EXPECT_TRUE(database.error().endsWith(QLatin1String("a.sqlite: interrupted")));
}

TEST_F(SqliteDatabaseTest, OnceItIsClosedAllFails)
{
    database.close();
    EXPECT_EQ(std::nullopt, database.number("SELECT 1"));
    EXPECT_FALSE(database.execute("BEGIN"));
    ASSERT_TRUE(database.open(path("a.sqlite"), true));
    EXPECT_EQ(1, database.number("SELECT 1"));
}

} // namespace
} // namespace test
} // namespace plc::database
