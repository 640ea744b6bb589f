#ifndef PLC_HOST_DRIVER_DRIVER_FUNCTIONS_H
#define PLC_HOST_DRIVER_DRIVER_FUNCTIONS_H

#include "driver/plc_driver.h"

namespace plc::host {

/// The entry points of a loaded driver library. The host links against none of them, so that it can
/// be pointed at any build of the library, and at a copy of it for each PLC.
struct DriverFunctions {
    decltype(&::SetComInfo) setComInfo = nullptr;
    decltype(&::RegistCallBackFuncIntf) registCallBackFuncIntf = nullptr;
    decltype(&::FlashLocalRegister) flashLocalRegister = nullptr;
    decltype(&::QueryFinishFlag) queryFinishFlag = nullptr;
    decltype(&::EnCommStation) enCommStation = nullptr;
    decltype(&::EnableEthernet) enableEthernet = nullptr;
    decltype(&::PassVarName_2) passVarName2 = nullptr;
    decltype(&::PLCAddressChangeIntef) plcAddressChangeIntef = nullptr;
    decltype(&::AddListReadVar) addListReadVar = nullptr;
    decltype(&::AddListWriteVar) addListWriteVar = nullptr;
    decltype(&::AddListOnceReadVar) addListOnceReadVar = nullptr;
    decltype(&::ReCreatReadVarList) reCreatReadVarList = nullptr;
    decltype(&::ComCommunication) comCommunication = nullptr;
    decltype(&::DataCom) dataCom = nullptr;
    decltype(&::GetRegisterData) getRegisterData = nullptr;
    decltype(&::SetRegisterData) setRegisterData = nullptr;
    /// The driver's LB, a word that it carries for its host and never looks at. See DriverClaim.
    void** hostWord = nullptr;
};

} // namespace plc::host

#endif
