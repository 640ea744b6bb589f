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
    {PLC_RESULT_ACCEPTED, false},
    {PLC_RESULT_REFUSED_BASE, true},
    {PLC_RESULT_NOTHING_RECEIVED_BASE, true},
    {PLC_RESULT_LENGTH_WRONG_BASE, true},
    {PLC_RESULT_REMOTE_ACCEPTED, false},
    {PLC_RESULT_REMOTE_REFUSED_BASE, true},
    {PLC_RESULT_REMOTE_NOTHING_RECEIVED_BASE, true},
    {PLC_RESULT_REMOTE_LENGTH_WRONG_BASE, true},
};
const int kOutcomeCount = int(sizeof kHostNumbers / sizeof kHostNumbers[0]);

} // namespace

int GetDriverReturnValue(int code)
{
    if (code < 0 || code >= kOutcomeCount)
        return PLC_RESULT_NO_SETTINGS;
    const HostNumber& number = kHostNumbers[code];
    return number.shifted ? SwitchErrorReturn(number.base) : number.base;
}

int SwitchErrorReturn(int base)
{
    int shift = 1;
    if (!PLC_driver.requestQueue.isEmpty()) {
        const int category = PLC_driver.requestQueue.at(0).var.category;
        if (category >= PLC_FIRST_SHIFTING_CATEGORY && category <= PLC_LAST_SHIFTING_CATEGORY)
            shift = category + 1;
    }
    return plc::toInt32(qint64(base) + shift);
}
