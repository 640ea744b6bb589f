#include "base/result_numbers.h"

#include "base/wrapped_int.h"
#include "driver/plc_driver.h"

namespace plc {

namespace {

struct HostNumber {
    int base;
    bool shifted;
};

// By ReplyOutcome.
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

int resultNumber(int outcome, int category)
{
    if (outcome < 0 || outcome >= kOutcomeCount)
        return PLC_RESULT_NO_SETTINGS;
    const HostNumber& number = kHostNumbers[outcome];
    return number.shifted ? shiftedResult(number.base, category) : number.base;
}

int shiftedResult(int base, int category)
{
    const bool shifts =
        category >= PLC_FIRST_SHIFTING_CATEGORY && category <= PLC_LAST_SHIFTING_CATEGORY;
    return toInt32(qint64(base) + (shifts ? category + 1 : 1));
}

} // namespace plc
