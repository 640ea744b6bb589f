#ifndef PLC_SIMULATOR_PLC_MEMORY_H
#define PLC_SIMULATOR_PLC_MEMORY_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <map>

#include "project/project.h"

namespace plc::simulator {

/// The memory areas of the PLC. Access outside them is the caller's to avoid, by contains().
class PlcMemory {
public:
    explicit PlcMemory(const QVector<project::MemoryArea>& areas);

    bool hasArea(int area) const { return m_areas.count(area) != 0; }
    bool contains(int area, quint64 address, quint64 length) const;
    QByteArray read(int area, quint32 address, int length) const;
    void write(int area, quint32 address, const QByteArray& bytes);

    /// Bit `bitAddress & 15` of the big-endian 16-bit word at byte `bitAddress >> 4`.
    bool containsBit(int area, quint32 bitAddress) const;
    bool readBit(int area, quint32 bitAddress) const;
    void writeBit(int area, quint32 bitAddress, bool value);

private:
    std::map<int, QByteArray> m_areas;
};

} // namespace plc::simulator

#endif
