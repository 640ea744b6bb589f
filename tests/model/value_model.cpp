#include <algorithm>

#include "model/driver_model.h"

namespace plc::model {

namespace {

/// Bytes of one element that is turned round between PLC and host; 0 for other types.
int turnedWidth(int dataType)
{
    switch (dataType) {
        case 3:
        case 4:
        case 16:
            return 2;
        case 5:
        case 6:
        case 7:
        case 17:
            return 4;
        case 8:
        case 9:
            return 8;
        default:
            return 0;
    }
}

/// Bytes that `count` registers of elements of this width take; whole elements.
std::int64_t turnedSize(int width, std::int64_t count)
{
    const std::int64_t registers = width / 2;
    return (count + registers - 1) / registers * width;
}

/// Zeros; none when they are more than a value can have.
Bytes zeros(std::int64_t count)
{
    if (count > kLargestValue)
        return Bytes();
    return Bytes(std::size_t(std::max<std::int64_t>(count, 0)), 0);
}

std::uint8_t byteAt(const Bytes& bytes, std::size_t index)
{
    return index < bytes.size() ? bytes[index] : std::uint8_t(0);
}

void putByte(Bytes& bytes, std::size_t index, std::uint8_t byte)
{
    if (index >= bytes.size())
        bytes.resize(index + 1, 0);
    bytes[index] = byte;
}

/// The host's value in the PLC's order; empty for types that have no conversion and for values that
/// are too large.
Bytes toPlcOrder(int dataType, const Bytes& value, int count)
{
    const std::int64_t exact = count;
    const int width = turnedWidth(dataType);
    const bool isPerRegister = dataType == 10 || dataType == 11;
    const std::int64_t size =
        width != 0 ? turnedSize(width, exact) : exact * (isPerRegister ? 2 : 1);
    if (size > kLargestValue)
        return Bytes();
    if (width != 0) {
        Bytes out = zeros(turnedSize(width, exact));
        for (std::size_t i = 0; i < value.size(); i += std::size_t(width)) {
            for (std::size_t j = 0; j < std::size_t(width); ++j)
                putByte(out, i + j, byteAt(value, i + std::size_t(width) - 1 - j));
        }
        return out;
    }
    Bytes out;
    switch (dataType) {
        case 1:
        case 13:
            out = zeros(exact);
            for (std::size_t i = 0; i < value.size(); ++i)
                putByte(out, i, value[i] != 0 ? 1 : 0);
            break;
        case 2:
        case 14:
        case 15:
            out = zeros(exact);
            for (std::size_t j = 0; 2 * j < value.size(); ++j)
                putByte(out, j, value[2 * j]);
            break;
        case 10:
        case 11:
            out = zeros(2 * exact);
            for (std::size_t i = 0; i < value.size(); ++i)
                putByte(out, i, value[i]);
            break;
        default:
            break;
    }
    return out;
}

} // namespace

int DriverModel::addressOf(const std::u16string& label) const
{
    Place place;
    return labels.resolve(label, place) == 0 ? place.address : -1;
}

int DriverModel::readValue(const std::u16string& label, int count, Bytes& value)
{
    const std::int64_t exact = count;
    value = zeros(2 * exact);
    Place place;
    if (labels.resolve(label, place) != 0)
        return 0;
    const int area = place.areaIndex;
    const std::int64_t address = place.address;
    const int width = turnedWidth(place.dataType);
    const bool isPerElement = place.dataType == 1 || place.dataType == 13;
    const std::int64_t size = width != 0     ? turnedSize(width, exact)
                              : isPerElement ? exact
                                             : 2 * exact;
    value = zeros(size);
    if (size > kLargestValue)
        return 0;
    if (width != 0) {
        for (std::size_t i = 0; i < value.size(); ++i) {
            const std::size_t element = i / std::size_t(width);
            const std::size_t j = i % std::size_t(width);
            const std::size_t from = (element + 1) * std::size_t(width) - 1 - j;
            value[i] = image.at(area, address + std::int64_t(from));
        }
        return 1;
    }
    switch (place.dataType) {
        case 1:
            for (std::size_t i = 0; i < value.size(); ++i)
                value[i] = image.at(area, address + std::int64_t(i)) != 0 ? 1 : 0;
            break;
        case 13:
            for (std::size_t i = 0; i < value.size(); ++i)
                value[i] = image.bit(area, address + std::int64_t(i)) ? 1 : 0;
            break;
        case 2:
        case 14:
        case 15:
            for (std::size_t i = 0; i < value.size() / 2; ++i)
                value[i] = image.at(area, address + std::int64_t(i));
            break;
        case 10:
        case 11:
            for (std::size_t i = 0; i < value.size(); ++i)
                value[i] = image.at(area, address + std::int64_t(i));
            break;
        default:
            break;
    }
    return 1;
}

int DriverModel::writeValue(const std::u16string& label, const std::u16string& subLabel,
                            int station, const Bytes& value, int count, int category, int aux1)
{
    constexpr int kQueuedMode = 2;
    constexpr int kBitCode = 13;
    Place place;
    if (!settings || labels.resolve(label, place) != 0)
        return 0;
    Variable var;
    var.category = category;
    var.aux1 = aux1;
    var.aux2 = 1;
    var.aux3 = settings->word[kRemoteMode];
    var.deviceNo = settings->word[kLocalDeviceNo];
    var.label = label;
    var.subLabel = subLabel;
    var.dataType = place.dataType;
    var.address = place.address;
    var.station = settings->word[kMultiStation] != 0 ? station : settings->word[kDefaultStation];
    var.length = count;
    var.areaIndex = place.areaIndex;
    if (settings->word[kWriteMode] != kQueuedMode) {
        if (count > kLargestValue)
            return 0;
        var.data = value;
        image.store(var);
        return 1;
    }
    const Bytes out = toPlcOrder(place.dataType, value, count);
    const std::size_t pieceSize = place.dataType == kBitCode ? 1 : 1000;
    if (!isWithinLimits(std::int64_t(out.size()), std::int64_t(pieceSize)))
        return 0;
    for (std::size_t position = 0; position < out.size(); position += pieceSize) {
        const std::size_t end = std::min(position + pieceSize, out.size());
        var.length = int(end - position);
        var.data.assign(out.begin() + std::ptrdiff_t(position), out.begin() + std::ptrdiff_t(end));
        addWrite(var, 0);
        if (failed != 0)
            image.store(var);
        var.address = stored(std::int64_t(var.address) + var.length);
    }
    return 0;
}

} // namespace plc::model
