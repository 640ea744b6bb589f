#include "driver/result_codes.h"

#include "driver/Communication_Protocol.h"
#include "driver/wrapped_int.h"

namespace {

struct HostNumber {
    int base;
    bool shifted;
};

// By plc::ReplyOutcome.
const HostNumber kHostNumbers[] = {
    {plc::kAccepted, false},       {10, true},  {40, true},  {70, true},
    {plc::kRemoteAccepted, false}, {110, true}, {140, true}, {170, true},
};
const int kOutcomeCount = int(sizeof kHostNumbers / sizeof kHostNumbers[0]);

const int kFirstShiftingCategory = 1;
const int kLastShiftingCategory = 11;

} // namespace

int GetDriverReturnValue(int code)
{
    if (code < 0 || code >= kOutcomeCount)
        return plc::kNotClassified;
    const HostNumber& number = kHostNumbers[code];
    return number.shifted ? SwitchErrorReturn(number.base) : number.base;
}

int SwitchErrorReturn(int base)
{
    int shift = 1;
    if (!PLC_driver.requestQueue.isEmpty()) {
        const int category = PLC_driver.requestQueue.at(0).var.category;
        if (category >= kFirstShiftingCategory && category <= kLastShiftingCategory)
            shift = category + 1;
    }
    return plc::toInt32(qint64(base) + shift);
}
