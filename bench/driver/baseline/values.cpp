#include "baseline/straightforward_driver.h"
#include "support/symbols.h"

namespace plc::bench {
namespace baseline {

namespace {

constexpr int kRegisterBytes = 2;

int registersOf(int dataType)
{
    switch (dataType) {
        case kQuadWordCode:
            return 4;
        case kDoubleWordCode:
            return 2;
        default:
            return 1;
    }
}

} // namespace

uchar& StraightforwardDriver::byteAt(int areaIndex, int address)
{
    return m_image[quint64(quint32(areaIndex)) << 32 | quint32(address)];
}

int StraightforwardDriver::readValue(const QString& label, QByteArray* value, int count)
{
    value->clear();
    Place place;
    if (!resolve(label, place)) {
        value->fill('\0', kRegisterBytes * count);
        return 0;
    }
    QMutexLocker lock(&m_imageMutex);
    const int registers = registersOf(place.dataType);
    const int width = kRegisterBytes * registers;
    const int elements = (count + registers - 1) / registers;
    QByteArray buffer(elements * width, '\0');
    for (int k = 0; k < elements; ++k) {
        for (int j = 0; j < width; ++j)
            buffer[k * width + j] =
                char(byteAt(place.areaIndex, place.address + k * width + width - 1 - j));
    }
    *value = buffer;
    return 1;
}

int StraightforwardDriver::writeValue(const QString& label, QByteArray* value, int count)
{
    Place place;
    if (!resolve(label, place))
        return 0;
    RW_VAR write;
    write.label = label;
    write.dataType = place.dataType;
    write.address = place.address;
    write.areaIndex = place.areaIndex;
    write.length = count;
    write.data = *value;
    QMutexLocker lock(&m_imageMutex);
    for (int i = 0; i < write.length; ++i)
        byteAt(write.areaIndex, write.address + i) =
            i < int(write.data.size()) ? uchar(write.data.at(i)) : uchar(0);
    return 1;
}

void StraightforwardDriver::store(int areaIndex, int address, const QByteArray& bytes)
{
    QMutexLocker lock(&m_imageMutex);
    for (int i = 0; i < int(bytes.size()); ++i)
        byteAt(areaIndex, address + i) = uchar(bytes.at(i));
}

} // namespace baseline
} // namespace plc::bench
