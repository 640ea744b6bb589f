#ifndef PLC_IEC_DIRECT_ADDRESS_H
#define PLC_IEC_DIRECT_ADDRESS_H

#include <QtCore/QString>

#include <optional>

namespace plc::iec {

/// A directly represented address, taken apart.
struct DirectAddress {
    enum Place {
        Memory,  ///< %M
        Process, ///< %I and %Q: inputs and outputs, which lie in no memory area
        Open     ///< %M* and the like: the place is left to the controller
    };

    Place place = Memory;
    std::optional<int> area; ///< Where the address names one.
    qint64 byte = 0;         ///< From the start of the area.
    std::optional<int> bit;  ///< Of %MX: 0 is the least significant one of the byte.
};

/// Reads %MB100, %MW1.100 (the word 100 of area 1), %MX12.3 (bit 3 of byte 12), %MX1.12.3. On
/// failure returns nothing and sets `expected`.
std::optional<DirectAddress> parseDirectAddress(const QString& text, QString* expected);

/// The address of a BIT in a project file: words have their high byte first.
qint64 bitOffset(qint64 byte, int bit);

} // namespace plc::iec

#endif
