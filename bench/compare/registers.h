#ifndef PLC_BENCH_COMPARE_REGISTERS_H
#define PLC_BENCH_COMPARE_REGISTERS_H

#include <cstdint>
#include <vector>

#include "plant.h"

namespace plc::bench {

// The plant as Modbus registers: block and clusters are input registers, what is scattered or
// written are holding registers. Between the holding registers lie addresses that do not exist: a
// request that touches one is refused, as devices do whose map has holes.

constexpr int kRegisterDistance = 6;
/// Registers that the protocol reads at once.
constexpr int kMostRegisters = 125;

/// A request of one pass.
struct RegisterRequest {
    enum Kind { ReadInput, ReadHolding, Write, WriteAndRead };

    Kind kind;
    int address;
    int registers;
    int values; ///< Of the application, that it moves.
};

/// The fewest requests that do a work: reads as long as the protocol has them, and for what is read
/// back after a write the function that does both.
std::vector<RegisterRequest> registerRequests(Work work);

/// What a server holds at the start.
struct RegisterMap {
    std::vector<std::uint16_t> input;
    std::vector<std::uint16_t> holding;
};
RegisterMap registerMap();

/// What a read of a work gives its application, in the order of the requests.
struct ReceivedValues {
    std::vector<std::uint16_t> words; ///< Block and scattered values.
    std::vector<double> numbers;      ///< Values of clusters.
};

/// Takes the registers of one answered read.
void receive(Work work, const std::uint16_t* registers, int count, ReceivedValues* values);
/// Whether these are the values that the plant holds.
bool areRight(Work work, const ReceivedValues& values);

} // namespace plc::bench

#endif
