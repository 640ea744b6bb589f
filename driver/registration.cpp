#include "driver/Communication_Protocol.h"

void* LB = nullptr;
void* LW = nullptr;
void* RWI = nullptr;

void SetComInfo(ComInfo* info)
{
    if (info) {
        info->comWord10 = 0;
        info->comWord13 = 0;
    }
    PLC_driver.settings = info;
}

void RegistCallBackFuncIntf(PlcResultCallback callback1, PlcFailureCallback callback2)
{
    PLC_driver.resultCallback = callback1;
    PLC_driver.failureCallback = callback2;
}

void** FlashLocalRegister(void* lb, void* lw, void* rwi)
{
    LB = lb;
    LW = lw;
    RWI = rwi;
    return &LW;
}

int QueryFinishFlag()
{
    return 1;
}
