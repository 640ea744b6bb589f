#ifndef PLC_TESTS_LIBRARY_LOADED_DRIVER_H
#define PLC_TESTS_LIBRARY_LOADED_DRIVER_H

#include <dlfcn.h>

#include <stdexcept>
#include <string>

#include "own_records.h"

/// A copy of the driver library in this process, reached by the plain names alone.
class LoadedDriver {
public:
    explicit LoadedDriver(const std::string& path) : m_handle(dlopen(path.c_str(), RTLD_NOW))
    {
        if (!m_handle)
            throw std::runtime_error(dlerror());
        resolve(setComInfo, "SetComInfo");
        resolve(registerCallbacks, "RegistCallBackFuncIntf");
        resolve(flashLocalRegister, "FlashLocalRegister");
        resolve(queryFinishFlag, "QueryFinishFlag");
        resolve(passVarName, "PassVarName_2");
        resolve(addressOf, "PLCAddressChangeIntef");
        resolve(addListReadVar, "AddListReadVar");
        resolve(addListWriteVar, "AddListWriteVar");
        resolve(recreateReadList, "ReCreatReadVarList");
        resolve(comCommunication, "ComCommunication");
        resolve(dataCom, "DataCom");
        resolve(getRegisterData, "GetRegisterData");
        resolve(setRegisterData, "SetRegisterData");
    }
    ~LoadedDriver() { dlclose(m_handle); }
    LoadedDriver(const LoadedDriver&) = delete;
    LoadedDriver& operator=(const LoadedDriver&) = delete;

    void* symbol(const char* name) const { return dlsym(m_handle, name); }

    void (*setComInfo)(own::Settings*);
    void (*registerCallbacks)(void (*)(int, int, int, int),
                              void (*)(QList<own::Access>*, int, int));
    void** (*flashLocalRegister)(void*, void*, void*);
    int (*queryFinishFlag)();
    void (*passVarName)(QList<own::Symbol>*);
    int (*addressOf)(int, QString);
    int (*addListReadVar)(own::Access*);
    int (*addListWriteVar)(own::Access*, int);
    int (*recreateReadList)(QList<own::CyclicItem>*);
    own::Request* (*comCommunication)();
    own::Access* (*dataCom)(QByteArray*, int);
    int (*getRegisterData)(const QString&, int, int, int, QByteArray*, int);
    int (*setRegisterData)(const QString&, int, const QString&, int, QByteArray*, int, int, int);

private:
    template <typename Function>
    void resolve(Function& function, const char* name)
    {
        function = reinterpret_cast<Function>(symbol(name));
        if (!function)
            throw std::runtime_error(std::string("missing: ") + name);
    }

    void* m_handle;
};

#endif
