#ifndef PLC_HOST_DRIVER_DRIVER_LIBRARY_H
#define PLC_HOST_DRIVER_DRIVER_LIBRARY_H

#include <QtCore/QString>

#include <optional>

#include "driver/plc_driver.h"

namespace plc::host {

/// The entry points of a loaded driver library. The host links against none of them, so that it can
/// be pointed at any build of the library.
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
};

/// Loads the driver library in the file `path`, which then stays loaded until the process ends.
/// Nothing of a library that was built for another Qt than this program is loaded or run. On
/// failure returns nothing and sets `error`.
std::optional<DriverFunctions> loadDriver(const QString& path, QString* error);

/// Where the library is: `requested` if it is not empty, else what the environment variable
/// PLC_DRIVER names, else the first that exists in the folder of the program, in the lib folder of
/// its installation or in its build tree. On failure returns an empty string and sets `error`.
QString findDriver(const QString& requested, const QString& programFolder, QString* error);

} // namespace plc::host

#endif
