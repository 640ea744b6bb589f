#include "host/transfers/write_places.h"

#include "tests/host/host_fixture.h"

namespace plc::host {
namespace test {
namespace {

FramePlace place(int area, quint32 address, quint32 length)
{
    return {quint16(area), address, length, false};
}

TEST(WritePlaces, NeighboursDoNotMeet)
{
    WritePlaces places;
    places.add(place(1, 10, 4));
    EXPECT_FALSE(places.isTaken(place(1, 8, 2)));
    EXPECT_FALSE(places.isTaken(place(1, 14, 2)));
}

TEST(WritePlaces, APlaceIsTakenByWhatSharesOneByteWithIt)
{
    WritePlaces places;
    places.add(place(1, 10, 4));
    for (const FramePlace& other : {place(1, 7, 4), place(1, 13, 1), place(1, 10, 2),
                                    place(1, 12, 8), place(1, 0, 100), place(1, 11, 1)})
        EXPECT_TRUE(places.isTaken(other)) << other.address << ' ' << other.length;
}

TEST(WritePlaces, InAnotherAreaOnlyTheSameAddressAndLengthAreTaken)
{
    WritePlaces places;
    places.add(place(2, 10, 4));
    EXPECT_TRUE(places.isTaken(place(1, 10, 4)));
    EXPECT_TRUE(places.isTaken(place(3, 10, 4)));
    EXPECT_FALSE(places.isTaken(place(1, 10, 2)));
    EXPECT_FALSE(places.isTaken(place(3, 11, 4)));
}

TEST(WritePlaces, TheLastByteOfAnAreaIsTaken)
{
    WritePlaces places;
    places.add(place(1, 0xFFFFFFFE, 2));
    EXPECT_TRUE(places.isTaken(place(1, 0xFFFFFFFF, 1)));
    EXPECT_TRUE(places.isTaken(place(1, 0xFFFFFFF0, 15)));
    EXPECT_FALSE(places.isTaken(place(1, 0xFFFFFFF0, 14)));
    EXPECT_FALSE(places.isTaken(place(2, 0, 1)));
}

TEST(WritePlaces, WhatWasRemovedIsFree)
{
    WritePlaces places;
    places.add(place(1, 10, 4));
    places.add(place(1, 20, 4));
    places.remove(place(1, 10, 4));
    EXPECT_FALSE(places.isTaken(place(1, 10, 4)));
    EXPECT_FALSE(places.isTaken(place(2, 10, 4)));
    EXPECT_TRUE(places.isTaken(place(1, 20, 4)));
    places.clear();
    EXPECT_FALSE(places.isTaken(place(1, 20, 4)));
    EXPECT_FALSE(places.isTaken(place(2, 20, 4)));
}

TEST(WritePlaces, MayBeAddedInAnyOrder)
{
    WritePlaces places;
    for (const quint32 address : {40u, 10u, 30u, 20u, 0u})
        places.add(place(int(address % 20 + 1), address, 4));
    EXPECT_TRUE(places.isTaken(place(1, 43, 1)));
    EXPECT_FALSE(places.isTaken(place(1, 44, 1)));
    EXPECT_TRUE(places.isTaken(place(11, 8, 3)));
    EXPECT_FALSE(places.isTaken(place(11, 14, 16)));
    EXPECT_TRUE(places.isTaken(place(11, 14, 17)));
    EXPECT_TRUE(places.isTaken(place(7, 20, 4)));
}

} // namespace
} // namespace test
} // namespace plc::host
