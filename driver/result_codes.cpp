#include "driver/result_codes.h"

#include "base/result_numbers.h"
#include "driver/Communication_Protocol.h"

namespace {

/// Category of the request at the head of the queue; 0, which shifts by 1, without one.
int currentCategory()
{
    return PLC_driver.requestQueue.isEmpty() ? 0 : PLC_driver.requestQueue.at(0).var.category;
}

} // namespace

int GetDriverReturnValue(int code)
{
    return plc::resultNumber(code, currentCategory());
}

int SwitchErrorReturn(int base)
{
    return plc::shiftedResult(base, currentCategory());
}
