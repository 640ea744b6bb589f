#include "registers.h"

#include <QtCore/QtGlobal>

#include <cstring>

namespace plc::bench {
namespace {

constexpr int kFirstCluster = 10000;
constexpr int kClusterDistance = 2500;
constexpr int kInputRegisters = kFirstCluster + kClusters * kClusterDistance;
constexpr int kHoldingRegisters = kScatteredValues * kRegisterDistance;

std::vector<RegisterRequest> blockRequests()
{
    std::vector<RegisterRequest> requests;
    for (int first = 0; first < kBlockValues; first += kMostRegisters) {
        const int count = qMin(kMostRegisters, kBlockValues - first);
        requests.push_back({RegisterRequest::ReadInput, first, count, count});
    }
    return requests;
}

std::vector<RegisterRequest> singleRequests(RegisterRequest::Kind kind, int count)
{
    std::vector<RegisterRequest> requests;
    for (int i = 0; i < count; ++i)
        requests.push_back({kind, i * kRegisterDistance, 1, 1});
    return requests;
}

std::vector<RegisterRequest> clusterRequests()
{
    std::vector<RegisterRequest> requests;
    for (int cluster = 0; cluster < kClusters; ++cluster)
        requests.push_back({RegisterRequest::ReadInput, kFirstCluster + cluster * kClusterDistance,
                            registersInCluster(), valuesInCluster()});
    return requests;
}

/// Most significant register first.
template <typename Number, typename Bits>
Number numberAt(const std::uint16_t* registers)
{
    Bits bits = 0;
    for (int i = 0; i < int(sizeof(Bits) / sizeof(std::uint16_t)); ++i)
        bits = Bits(bits << 16 | registers[i]);
    Number number;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

template <typename Number, typename Bits>
void putNumber(int value, std::uint16_t* registers)
{
    const Number number = Number(value);
    Bits bits;
    std::memcpy(&bits, &number, sizeof bits);
    for (int i = int(sizeof(Bits) / sizeof(std::uint16_t)) - 1; i >= 0;
         --i, bits = Bits(bits >> 16))
        registers[i] = std::uint16_t(bits);
}

double clusterNumber(const ClusterType& type, const std::uint16_t* registers)
{
    switch (type.registers) {
        case 4:
            return numberAt<double, std::uint64_t>(registers);
        case 2:
            return type.name[0] == 'R' ? double(numberAt<float, std::uint32_t>(registers))
                                       : double(numberAt<std::int32_t, std::uint32_t>(registers));
        default:
            return type.name[0] == 'U' ? double(registers[0]) : double(std::int16_t(registers[0]));
    }
}

void putClusterNumber(const ClusterType& type, int value, std::uint16_t* registers)
{
    switch (type.registers) {
        case 4:
            putNumber<double, std::uint64_t>(value, registers);
            break;
        case 2:
            if (type.name[0] == 'R')
                putNumber<float, std::uint32_t>(value, registers);
            else
                putNumber<std::int32_t, std::uint32_t>(value, registers);
            break;
        default:
            registers[0] = std::uint16_t(value);
            break;
    }
}

void fillClusters(std::vector<std::uint16_t>* input)
{
    for (int cluster = 0; cluster < kClusters; ++cluster) {
        std::uint16_t* next = input->data() + kFirstCluster + cluster * kClusterDistance;
        int member = 0;
        for (const ClusterType& type : clusterTypes()) {
            for (int i = 0; i < type.members; ++i, ++member, next += type.registers)
                putClusterNumber(type, clusterValue(cluster, member), next);
        }
    }
}

} // namespace

std::vector<RegisterRequest> registerRequests(Work work)
{
    switch (work) {
        case Work::Block:
            return blockRequests();
        case Work::Scattered:
            return singleRequests(RegisterRequest::ReadHolding, kScatteredValues);
        case Work::Clusters:
            return clusterRequests();
        case Work::Writes:
            return singleRequests(RegisterRequest::Write, kSettings);
        case Work::ReadBacks:
            break;
    }
    return singleRequests(RegisterRequest::WriteAndRead, 1);
}

RegisterMap registerMap()
{
    RegisterMap map;
    map.input.resize(size_t(kInputRegisters));
    map.holding.resize(size_t(kHoldingRegisters));
    for (int i = 0; i < kBlockValues; ++i)
        map.input[size_t(i)] = std::uint16_t(blockValue(i));
    fillClusters(&map.input);
    for (int i = 0; i < kScatteredValues; ++i)
        map.holding[size_t(i * kRegisterDistance)] = std::uint16_t(scatteredValue(i));
    return map;
}

void receive(Work work, const std::uint16_t* registers, int count, ReceivedValues* values)
{
    if (work != Work::Clusters) {
        values->words.insert(values->words.end(), registers, registers + count);
        return;
    }
    for (const ClusterType& type : clusterTypes()) {
        for (int i = 0; i < type.members; ++i, registers += type.registers)
            values->numbers.push_back(clusterNumber(type, registers));
    }
}

bool areRight(Work work, const ReceivedValues& values)
{
    const size_t expected = size_t(valuesIn(work));
    if (work == Work::Clusters) {
        for (size_t i = 0; i < values.numbers.size(); ++i) {
            const int cluster = int(i) / valuesInCluster();
            const int member = int(i) % valuesInCluster();
            if (int(values.numbers[i]) != clusterValue(cluster, member))
                return false;
        }
        return values.numbers.size() == expected;
    }
    for (size_t i = 0; i < values.words.size(); ++i) {
        const int index = int(i);
        if (values.words[i] != (work == Work::Block ? blockValue(index) : scatteredValue(index)))
            return false;
    }
    return values.words.size() == expected;
}

} // namespace plc::bench
