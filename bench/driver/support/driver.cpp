#include "support/driver.h"

#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>

#include "support/replies.h"

namespace plc::bench {

namespace {

constexpr int kMaxReadBytes = 200;
constexpr int kOff = 0;
constexpr int kOn = 1;

[[noreturn]] void giveUp(const char* what)
{
    std::fprintf(stderr, "bench_driver: cannot use %s: %s\n", PLC_LIBRARY, what);
    std::exit(EXIT_FAILURE);
}

void* openLibrary()
{
    if (dlopen(PLC_LIBRARY, RTLD_NOW | RTLD_NOLOAD))
        giveUp("it is still loaded, so its driver object is not a fresh one");
    void* library = dlopen(PLC_LIBRARY, RTLD_NOW | RTLD_LOCAL);
    if (!library)
        giveUp(dlerror());
    return library;
}

void* findSymbol(void* library, const char* name)
{
    void* symbol = dlsym(library, name);
    if (!symbol)
        giveUp(dlerror());
    return symbol;
}

/// The function `name`, of the type of the member that is to hold it.
template <typename Function>
Function function(void* library, const char* name)
{
    return reinterpret_cast<Function>(findSymbol(library, name));
}

} // namespace

#define PLC_FIND(member, name) member(function<decltype(member)>(m_library, name))

Driver::Driver()
    : m_library(openLibrary()),
      PLC_FIND(passVarName, "PassVarName_2"),
      PLC_FIND(addressOf, "PLCAddressChangeIntef"),
      PLC_FIND(addListReadVar, "AddListReadVar"),
      PLC_FIND(addListWriteVar, "AddListWriteVar"),
      PLC_FIND(addListOnceReadVar, "AddListOnceReadVar"),
      PLC_FIND(reCreatReadVarList, "ReCreatReadVarList"),
      PLC_FIND(comCommunication, "ComCommunication"),
      PLC_FIND(dataCom, "DataCom"),
      PLC_FIND(getRegisterData, "GetRegisterData"),
      PLC_FIND(setRegisterData, "SetRegisterData"),
      PLC_FIND(enCommStation, "EnCommStation"),
      PLC_FIND(resolve, "_Z22get_label_address_infoRK7QStringR19ControlInformationM"),
      PLC_FIND(saveToLocalDataErea, "_Z19SaveToLocalDataEreaP10QByteArray"),
      PLC_FIND(writeDataToLocal, "_Z16WriteDataToLocalP6RW_VAR")
{
    settings.maxReadBytes = kMaxReadBytes;
    settings.defaultStation = kStation;
    function<decltype(&::SetComInfo)>(m_library, "SetComInfo")(&settings);
}

#undef PLC_FIND

Driver::~Driver()
{
    dlclose(m_library);
}

void Driver::logIn()
{
    for (QByteArray reply : {identificationReply(), fileReply()}) {
        comCommunication();
        for (int pass = 0; pass < kPassesOfAReply; ++pass) {
            if (dataCom(&reply, int(reply.size()))->result != kReplyAccepted)
                giveUp("it refuses the login");
        }
    }
}

void Driver::dropQueued()
{
    enCommStation(kStation, kOff);
    if (comCommunication())
        giveUp("it sends to a station that is switched off");
    enCommStation(kStation, kOn);
}

} // namespace plc::bench
