#ifndef PLC_BENCH_SUPPORT_DRIVER_H
#define PLC_BENCH_SUPPORT_DRIVER_H

#include "driver/image_access.h"
#include "driver/label_access.h"
#include "driver/plc_driver.h"

namespace plc::bench {

/// Station of everything that is read or written.
constexpr int kStation = 1;

/// The shared library, loaded as a host does. Only one may live at a time: the next one finds the
/// driver as it is after loading.
class Driver {
    void* const m_library;

public:
    Driver();
    ~Driver();

    /// Takes the driver through the login exchange; needs something to send.
    void logIn();
    /// Drops all queued writes and one-shot reads.
    void dropQueued();

    ComInfo settings; ///< Handed over.

    // The entry points, and functions exported under their parameter-typed names.
    decltype(&::PassVarName_2) const passVarName;
    decltype(&::PLCAddressChangeIntef) const addressOf;
    decltype(&::AddListReadVar) const addListReadVar;
    decltype(&::AddListWriteVar) const addListWriteVar;
    decltype(&::AddListOnceReadVar) const addListOnceReadVar;
    decltype(&::ReCreatReadVarList) const reCreatReadVarList;
    decltype(&::ComCommunication) const comCommunication;
    decltype(&::DataCom) const dataCom;
    decltype(&::GetRegisterData) const getRegisterData;
    decltype(&::SetRegisterData) const setRegisterData;
    decltype(&::EnCommStation) const enCommStation;
    decltype(&::get_label_address_info) const resolve;
    decltype(&::SaveToLocalDataErea) const saveToLocalDataErea;
    decltype(&::WriteDataToLocal) const writeDataToLocal;

private:
    Q_DISABLE_COPY(Driver)
};

} // namespace plc::bench

#endif
