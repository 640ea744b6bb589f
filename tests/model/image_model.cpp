#include "model/image_model.h"

namespace plc::model {

namespace {

constexpr int kBitCode = 13;

} // namespace

bool ImageModel::bit(std::int64_t areaIndex, std::int64_t bitAddress)
{
    const std::uint32_t number = std::uint32_t(bitAddress);
    const std::uint32_t wordIndex = number >> 4;
    const std::uint8_t high = at(areaIndex, wordIndex);
    const std::uint8_t low = at(areaIndex, std::int64_t(wordIndex) + 1);
    const int word = high * 256 + low;
    return (word >> (number & 15)) % 2 == 1;
}

void ImageModel::setBit(std::int64_t areaIndex, std::int64_t bitAddress, bool on)
{
    const std::uint32_t number = std::uint32_t(bitAddress);
    const std::uint32_t wordIndex = number >> 4;
    std::uint8_t& high = at(areaIndex, wordIndex);
    std::uint8_t& low = at(areaIndex, std::int64_t(wordIndex) + 1);
    int word = high * 256 + low;
    const int mask = 1 << (number & 15);
    if (on)
        word |= mask;
    else
        word &= ~mask;
    low = std::uint8_t(word % 256);
    high = std::uint8_t(word / 256);
}

void ImageModel::store(const Variable& var)
{
    if (var.length > kLargestValue)
        return;
    for (std::int64_t i = 0; i < var.length; ++i) {
        const std::uint8_t byte =
            i < std::int64_t(var.data.size()) ? var.data[std::size_t(i)] : std::uint8_t(0);
        if (var.dataType == kBitCode)
            setBit(var.areaIndex, var.address + i, byte != 0);
        else
            at(var.areaIndex, var.address + i) = byte;
    }
}

} // namespace plc::model
