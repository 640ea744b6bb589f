#ifndef PLC_TESTS_IMAGE_IMAGE_FIXTURE_H
#define PLC_TESTS_IMAGE_IMAGE_FIXTURE_H

#include "driver/image_access.h"

#include <climits>
#include <map>

#include "base/wrapped_int.h"
#include "driver/reply_judging.h"
#include "driver/request_building.h"
#include "support/driver_fixture.h"
#include "support/lock_check.h"
#include "support/random.h"

namespace plc::test {

constexpr int kArea = 3;

inline quint64 keyOf(int address, int area = kArea)
{
    return quint64(quint32(area)) << 32 | quint32(address);
}

inline bool exists(int address, int area = kArea)
{
    return PLC_driver.localImage.contains(keyOf(address, area));
}

inline int byteAt(int address, int area = kArea)
{
    return PLC_driver.localImage.value(keyOf(address, area));
}

inline int bytesInImage()
{
    return int(PLC_driver.localImage.size());
}

/// The bytes of the area from `address` on as hexadecimal pairs; ".." for one that does not exist.
inline std::string image(int address, int count, int area = kArea)
{
    std::string text;
    for (int i = 0; i < count; ++i) {
        const int place = advanced(address, i);
        const QByteArray pair =
            QByteArray::number(byteAt(place, area), 16).rightJustified(2, '0').toUpper();
        text += (i ? " " : "") +
                (exists(place, area) ? std::string(pair.constData()) : std::string(".."));
    }
    return text;
}

} // namespace plc::test

#endif
