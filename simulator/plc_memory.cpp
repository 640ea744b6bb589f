#include "simulator/plc_memory.h"

#include <algorithm>

namespace plc::simulator {
namespace {

struct BytePlace {
    quint32 address;
    quint8 mask;
};

/// The byte and the bit in it. The word's high byte, with bits 8 to 15, comes first.
BytePlace placeOf(quint32 bitAddress)
{
    const quint32 word = bitAddress >> 4;
    const quint32 bit = bitAddress & 15;
    return {bit < 8 ? word + 1 : word, quint8(1u << (bit & 7))};
}

} // namespace

PlcMemory::PlcMemory(const QVector<project::MemoryArea>& areas)
{
    for (const project::MemoryArea& area : areas)
        m_areas.emplace(area.index, QByteArray(area.size, '\0'));
}

bool PlcMemory::contains(int area, quint64 address, quint64 length) const
{
    const auto found = m_areas.find(area);
    if (found == m_areas.end())
        return false;
    const quint64 size = quint64(found->second.size());
    return address <= size && length <= size - address;
}

QByteArray PlcMemory::read(int area, quint32 address, int length) const
{
    return m_areas.at(area).mid(int(address), length);
}

void PlcMemory::write(int area, quint32 address, const QByteArray& bytes)
{
    std::copy(bytes.begin(), bytes.end(), m_areas.at(area).begin() + address);
}

bool PlcMemory::containsBit(int area, quint32 bitAddress) const
{
    return contains(area, bitAddress >> 4, 2);
}

bool PlcMemory::readBit(int area, quint32 bitAddress) const
{
    const BytePlace place = placeOf(bitAddress);
    return (quint8(m_areas.at(area)[int(place.address)]) & place.mask) != 0;
}

void PlcMemory::writeBit(int area, quint32 bitAddress, bool value)
{
    const BytePlace place = placeOf(bitAddress);
    QByteArray& bytes = m_areas.at(area);
    const quint8 old = quint8(bytes[int(place.address)]);
    bytes[int(place.address)] = char(value ? old | place.mask : old & ~place.mask);
}

} // namespace plc::simulator
