#include "driver/stations.h"

#include <climits>
#include <thread>

#include "support/driver_fixture.h"

namespace plc::test {
namespace {

/// The map of the driver while these stations are switched off.
QMap<int, int> off(std::initializer_list<int> stations)
{
    QMap<int, int> map;
    for (int station : stations)
        map.insert(station, 0);
    return map;
}

struct EntryPoint {
    const char* name;
    void (*call)(int station, int enable);
};

void PrintTo(const EntryPoint& entry, std::ostream* out)
{
    *out << entry.name;
}

class StationSwitch : public DriverTest, public ::testing::WithParamInterface<EntryPoint> {
protected:
    static void switchStation(int station, int enable) { GetParam().call(station, enable); }
};

TEST_P(StationSwitch, EveryStationIsOnAfterLoading)
{
    for (int station : {0, 1, 5, 255, -1, INT_MAX, INT_MIN})
        EXPECT_EQ(0, Ethernetcontains(station)) << "station " << station;
}

TEST_P(StationSwitch, SwitchesOneStationOffAndNoOther)
{
    switchStation(5, 0);
    EXPECT_EQ(1, Ethernetcontains(5));
    EXPECT_EQ(0, Ethernetcontains(4));
    EXPECT_EQ(0, Ethernetcontains(6));
    EXPECT_EQ(0, Ethernetcontains(0));
    EXPECT_EQ(PLC_driver.disabledStations, off({5}));
}

TEST_P(StationSwitch, StationZeroAndTheLargestAreStationsLikeOthers)
{
    switchStation(0, 0);
    switchStation(INT_MAX, 0);
    EXPECT_EQ(1, Ethernetcontains(0));
    EXPECT_EQ(1, Ethernetcontains(INT_MAX));
    switchStation(0, 1);
    EXPECT_EQ(0, Ethernetcontains(0));
    EXPECT_EQ(1, Ethernetcontains(INT_MAX));
}

TEST_P(StationSwitch, OffTwiceAndOnOnceIsOn)
{
    switchStation(5, 0);
    switchStation(5, 0);
    EXPECT_EQ(1, PLC_driver.disabledStations.size());
    switchStation(5, 1);
    EXPECT_EQ(0, Ethernetcontains(5));
    EXPECT_TRUE(PLC_driver.disabledStations.isEmpty());
}

TEST_P(StationSwitch, OffTwiceKeepsTheEntryAsItIs)
{
    PLC_driver.disabledStations.insert(5, 9);
    switchStation(5, 0);
    EXPECT_EQ(9, PLC_driver.disabledStations.value(5));
}

TEST_P(StationSwitch, OnForAStationThatIsOnChangesNothing)
{
    switchStation(3, 0);
    switchStation(5, 1);
    EXPECT_EQ(PLC_driver.disabledStations, off({3}));
}

TEST_P(StationSwitch, OnLeavesTheOthersOff)
{
    switchStation(3, 0);
    switchStation(5, 0);
    switchStation(3, 1);
    EXPECT_EQ(0, Ethernetcontains(3));
    EXPECT_EQ(1, Ethernetcontains(5));
}

TEST_P(StationSwitch, NegativeStationSwitchesAllOnWhateverEnableSays)
{
    for (int enable : {0, 1, 2, -1, INT_MAX, INT_MIN}) {
        switchStation(1, 0);
        switchStation(5, 0);
        switchStation(-1, enable);
        EXPECT_TRUE(PLC_driver.disabledStations.isEmpty()) << "enable " << enable;
    }
    switchStation(1, 0);
    switchStation(INT_MIN, 0);
    EXPECT_EQ(0, Ethernetcontains(1));
    EXPECT_EQ(0, Ethernetcontains(INT_MIN));
}

TEST_P(StationSwitch, OtherValuesOfEnableChangeNothing)
{
    switchStation(3, 0);
    for (int enable : {2, -1, 100, INT_MAX, INT_MIN}) {
        switchStation(3, enable);
        switchStation(5, enable);
        EXPECT_EQ(PLC_driver.disabledStations, off({3})) << "enable " << enable;
    }
}

TEST_P(StationSwitch, ThreadsMaySwitchAndAskAtOnce)
{
    std::vector<std::thread> threads;
    for (int station = 0; station < 4; ++station)
        threads.emplace_back([station] {
            for (int i = 0; i < 500; ++i) {
                switchStation(station, 0);
                Ethernetcontains(station + 1);
                switchStation(station, 1);
            }
            switchStation(station, 0);
        });
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(PLC_driver.disabledStations, off({0, 1, 2, 3}));
}

INSTANTIATE_TEST_SUITE_P(BothNames, StationSwitch,
                         ::testing::Values(EntryPoint{"EnCommStation", EnCommStation},
                                           EntryPoint{"EnableEthernet", EnableEthernet}),
                         [](const auto& test) { return std::string(test.param.name); });

using Stations = DriverTest;

TEST_F(Stations, BothNamesWorkOnTheSameStations)
{
    EnCommStation(5, 0);
    EnableEthernet(6, 0);
    EnableEthernet(5, 1);
    EXPECT_EQ(0, Ethernetcontains(5));
    EXPECT_EQ(1, Ethernetcontains(6));
    EnCommStation(6, 1);
    EXPECT_EQ(0, Ethernetcontains(6));
}

TEST_F(Stations, WorkWithoutASettingsRecord)
{
    SetComInfo(nullptr);
    EnCommStation(5, 0);
    EXPECT_EQ(1, Ethernetcontains(5));
}

TEST_F(Stations, AreSwitchedWhileTheListLockIsHeld)
{
    PLC_driver.listMutex.lock();
    EnCommStation(5, 0);
    EXPECT_EQ(1, Ethernetcontains(5));
    PLC_driver.listMutex.unlock();
}

} // namespace
} // namespace plc::test
