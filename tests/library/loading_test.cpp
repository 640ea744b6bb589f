#include <gtest/gtest.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <memory>

#include "loaded_driver.h"
#include "support/qt_differences.h"

namespace {

int g_done = 0;
int g_lastTag = 0;

void onResult(int, int, int tag, int status)
{
    g_lastTag = tag;
    g_done += status == 1 ? 1 : 0;
}

void onFailure(QList<own::Access>*, int, int) {}

/// MAIN.speed: type code 4 (two bytes) at byte 10 of area 3.
QList<own::Symbol> symbols()
{
    own::Symbol speed;
    speed.name = QStringLiteral("speed");
    speed.flags = 4;
    speed.offset = 10;
    speed.area.append(3);
    own::Symbol definition;
    definition.memberCount = 1;
    definition.members.append(speed);
    own::Symbol scope;
    scope.name = QStringLiteral("MAIN");
    scope.definition.append(definition);
    QList<own::Symbol> list;
    list.append(scope);
    return list;
}

own::Settings hostSettings()
{
    own::Settings settings;
    settings.words[own::kMaxReadBytes] = 200;
    settings.words[own::kRetryLimit] = 2;
    settings.words[own::kComWord10] = 7;
    settings.words[own::kComWord13] = 7;
    settings.words[own::kWriteMode] = 2;
    settings.words[own::kHostTag] = 42;
    return settings;
}

/// A reply with a payload of `payload` bytes, all 0 but byte 24 and 25 of the frame.
QByteArray loginReply(int payload)
{
    QByteArray reply(6 + payload, '\0');
    reply[0] = reply[1] = char(0xBB);
    reply[4] = char(payload >> 8);
    reply[5] = char(payload & 0xFF);
    reply[24] = 0x34;
    reply[25] = 0x12;
    return reply;
}

void answer(LoadedDriver& driver, QByteArray reply)
{
    EXPECT_EQ(1, driver.dataCom(&reply, int(reply.size()))->result);
    EXPECT_EQ(1, driver.dataCom(&reply, int(reply.size()))->result);
}

void logIn(LoadedDriver& driver)
{
    ASSERT_NE(driver.comCommunication(), nullptr);
    EXPECT_EQ(20, driver.comCommunication()->frameLength);
    answer(driver, loginReply(200));
    ASSERT_NE(driver.comCommunication(), nullptr);
    EXPECT_EQ(23, driver.comCommunication()->frameLength);
    answer(driver, loginReply(30));
}

void readSpeed(LoadedDriver& driver)
{
    own::Request* request = driver.comCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(QByteArray("bbbb000000142e00000000010003"
                         "0000000a0000000200011234"),
              request->frame.toHex());
    EXPECT_EQ(-1, request->replyLength);
    EXPECT_EQ(10, request->access.address);
    answer(driver, QByteArray::fromHex("bbbb00000009 0000 00000001 00 1234"));

    QByteArray value;
    EXPECT_EQ(1, driver.getRegisterData(QStringLiteral("MAIN.speed"), 0, 0, 0, &value, 1));
    EXPECT_EQ(QByteArray("3412"), value.toHex());
}

void writeSpeed(LoadedDriver& driver)
{
    QByteArray value = QByteArray::fromHex("7856");
    EXPECT_EQ(
        0, driver.setRegisterData(QStringLiteral("MAIN.speed"), 0, QString(), 0, &value, 1, 3, 99));
    own::Request* request = driver.comCommunication();
    ASSERT_NE(request, nullptr);
    EXPECT_EQ(QByteArray("bbbb000000163c00000000010003"
                         "0000000a00000002567800011234"),
              request->frame.toHex());
    answer(driver, QByteArray::fromHex("bbbb00000002 0000"));
    EXPECT_EQ(99, g_lastTag);
}

/// What a host does from loading to unloading.
void useOnce(const std::string& path)
{
    LoadedDriver driver(path);
    own::Settings settings = hostSettings();
    driver.setComInfo(&settings);
    EXPECT_EQ(0, settings.words[own::kComWord10]);
    EXPECT_EQ(0, settings.words[own::kComWord13]);
    driver.registerCallbacks(onResult, onFailure);
    EXPECT_EQ(1, driver.queryFinishFlag());
    QList<own::Symbol> list = symbols();
    driver.passVarName(&list);
    EXPECT_EQ(10, driver.addressOf(0, QStringLiteral("MAIN.speed")));

    own::CyclicItem item;
    item.label = QStringLiteral("MAIN.speed");
    item.count = 1;
    QList<own::CyclicItem> items;
    items.append(item);
    EXPECT_EQ(1, driver.recreateReadList(&items));

    logIn(driver);
    readSpeed(driver);
    EXPECT_EQ(1, settings.words[own::kFrameCount]);
    g_done = 0;
    writeSpeed(driver);
    EXPECT_EQ(1, g_done);
}

bool isLoaded(const char* path)
{
    void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle)
        dlclose(handle);
    return bool(handle);
}

std::string copyOfLibrary(const char* name)
{
    const auto path = std::filesystem::path(testing::TempDir()) /
                      (std::string(name) + std::to_string(getpid()) + ".so");
    std::filesystem::copy_file(PLC_LIBRARY, path,
                               std::filesystem::copy_options::overwrite_existing);
    return path.string();
}

} // namespace

TEST(Loading, HostWithItsOwnRecordsReadsAndWritesThroughThePlainNames)
{
    useOnce(PLC_LIBRARY);
}

TEST(Loading, LibraryIsGoneAfterUnloading)
{
    useOnce(PLC_LIBRARY);
    EXPECT_FALSE(isLoaded(PLC_LIBRARY));
}

TEST(Loading, StateIsFreshAfterLoadingAgain)
{
    useOnce(PLC_LIBRARY);
    LoadedDriver driver(PLC_LIBRARY);
    EXPECT_EQ(-1, driver.addressOf(0, QStringLiteral("MAIN.speed")));
    EXPECT_EQ(nullptr, driver.comCommunication());
}

TEST(Loading, RepeatedLoadingUseAndUnloadingLeavesNoMemoryBehind)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "the instrumented allocator keeps its own accounts";
    // The allocator counts what it caches for the next use: a little noise, but less than the
    // smallest block a round, which is what the smallest leak would add.
    constexpr int kWarmUp = 3;
    constexpr size_t kRounds = 200;
    constexpr size_t kSmallestBlock = 32;
    for (int i = 0; i < kWarmUp; ++i)
        useOnce(PLC_LIBRARY);
    const size_t before = mallinfo2().uordblks;
    for (size_t i = 0; i < kRounds; ++i)
        useOnce(PLC_LIBRARY);
    EXPECT_LT(mallinfo2().uordblks, before + kRounds * kSmallestBlock);
}

TEST(Loading, TwoCopiesInOneProcessDoNotSeeEachOthersState)
{
    const std::string firstPath = copyOfLibrary("plc_first");
    const std::string secondPath = copyOfLibrary("plc_second");
    {
        LoadedDriver first(firstPath);
        LoadedDriver second(secondPath);
        EXPECT_NE(first.symbol("PLC_driver"), second.symbol("PLC_driver"));

        int memory = 0;
        void** firstPlace = first.flashLocalRegister(nullptr, &memory, nullptr);
        void** secondPlace = second.flashLocalRegister(nullptr, nullptr, nullptr);
        EXPECT_EQ(firstPlace, first.symbol("LW"));
        EXPECT_EQ(secondPlace, second.symbol("LW"));
        EXPECT_EQ(*firstPlace, &memory);
        EXPECT_EQ(nullptr, *secondPlace);

        own::Access access;
        EXPECT_EQ(1, first.addListReadVar(&access));
        EXPECT_EQ(2, first.addListReadVar(&access));
        EXPECT_EQ(1, second.addListReadVar(&access));

        QList<own::Symbol> list = symbols();
        first.passVarName(&list);
        EXPECT_EQ(10, first.addressOf(0, QStringLiteral("MAIN.speed")));
        EXPECT_EQ(-1, second.addressOf(0, QStringLiteral("MAIN.speed")));
    }
    std::filesystem::remove(firstPath);
    std::filesystem::remove(secondPath);
}

TEST(Loading, TwoCopiesServeTwoPlcsSideBySide)
{
    const std::string copy = copyOfLibrary("plc_other");
    {
        LoadedDriver idle(copy);
        own::Settings settings = hostSettings();
        idle.setComInfo(&settings);
        useOnce(PLC_LIBRARY);
        EXPECT_EQ(nullptr, idle.comCommunication());
        QByteArray value;
        EXPECT_EQ(0, idle.getRegisterData(QStringLiteral("MAIN.speed"), 0, 0, 0, &value, 1));
    }
    std::filesystem::remove(copy);
}

TEST(Loading, LinksToALoadedFileGiveItsObject)
{
    const std::string file = copyOfLibrary("plc_linked");
    const std::string symbolic = file + ".symbolic";
    const std::string hard = file + ".hard";
    std::filesystem::create_symlink(file, symbolic);
    std::filesystem::create_hard_link(file, hard);
    {
        LoadedDriver driver(file);
        EXPECT_EQ(LoadedDriver(symbolic).symbol("PLC_driver"), driver.symbol("PLC_driver"));
        EXPECT_EQ(LoadedDriver(hard).symbol("PLC_driver"), driver.symbol("PLC_driver"));
    }
    for (const std::string& path : {file, symbolic, hard})
        std::filesystem::remove(path);
}

TEST(Loading, NewFileUnderTheNameOfALoadedOneGivesTheLoadedObject)
{
    const std::string path = copyOfLibrary("plc_named");
    {
        LoadedDriver driver(path);
        std::filesystem::remove(path); // it stays in use
        EXPECT_EQ(1, driver.queryFinishFlag());
        ASSERT_EQ(copyOfLibrary("plc_named"), path);
        EXPECT_EQ(LoadedDriver(path).symbol("PLC_driver"), driver.symbol("PLC_driver"));
    }
    std::filesystem::remove(path);
}

namespace {

/// A copy of the library in memory, without a name in any folder.
class CopyInMemory {
public:
    CopyInMemory() : m_descriptor(memfd_create("driver", 0))
    {
        std::ifstream file(PLC_LIBRARY, std::ios::binary);
        const std::string content(std::istreambuf_iterator<char>(file), {});
        EXPECT_EQ(write(m_descriptor, content.data(), content.size()), ssize_t(content.size()));
    }
    ~CopyInMemory() { close(m_descriptor); }
    CopyInMemory(const CopyInMemory&) = delete;
    CopyInMemory& operator=(const CopyInMemory&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

} // namespace

TEST(Loading, CopiesBehindOpenDescriptorsAreObjectsOfTheirOwn)
{
    const CopyInMemory first, second;
    LoadedDriver one(first.path());
    LoadedDriver other(second.path());
    EXPECT_NE(one.symbol("PLC_driver"), other.symbol("PLC_driver"));
}

TEST(Loading, DescriptorThatWasClosedIsTakenForTheLoadedFileWhenItsNumberComesBack)
{
    auto first = std::make_unique<CopyInMemory>();
    const std::string path = first->path();
    LoadedDriver one(path);
    first.reset();
    const CopyInMemory second;
    ASSERT_EQ(second.path(), path);
    EXPECT_EQ(LoadedDriver(second.path()).symbol("PLC_driver"), one.symbol("PLC_driver"));
}
