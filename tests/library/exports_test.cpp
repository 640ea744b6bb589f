#include <cxxabi.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <set>
#include <sstream>
#include <string>

namespace {

std::string outputOf(const std::string& command)
{
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char buffer[4096];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe.get()))
        output += buffer;
    return output;
}

void replaceAll(std::string& text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at))
        text.replace(at, from.size(), to);
}

/// Qt 6 has QStringList as another name of QList<QString>.
std::string demangled(const std::string& symbol)
{
    int status = 0;
    std::unique_ptr<char, void (*)(void*)> name(
        abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), std::free);
    std::string text = status == 0 ? name.get() : symbol;
    replaceAll(text, "QList<QString>", "QStringList");
    return text;
}

std::set<std::string> exportedNames()
{
    std::istringstream lines(outputOf("nm --dynamic --defined-only --format=posix " PLC_LIBRARY));
    std::set<std::string> names;
    std::string line;
    while (std::getline(lines, line))
        names.insert(demangled(line.substr(0, line.find(' '))));
    return names;
}

std::set<std::string> listedNames()
{
    std::ifstream file(PLC_EXPORT_LIST);
    std::set<std::string> names;
    std::string line;
    while (std::getline(file, line)) {
        if (!line.empty() && line[0] != '#')
            names.insert(line);
    }
    return names;
}

} // namespace

TEST(Exports, AreExactlyTheListedNames)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "instrumentation adds exports of its own";
    const std::set<std::string> listed = listedNames();
    ASSERT_EQ(53u, listed.size());
    EXPECT_EQ(exportedNames(), listed);
}

TEST(Exports, HostEntryPointsAndDataHavePlainNames)
{
    const std::string symbols = outputOf("nm --dynamic --defined-only --format=posix " PLC_LIBRARY);
    for (const char* name :
         {"ComCommunication T", "DataCom T", "SetComInfo T", "RegistCallBackFuncIntf T",
          "FlashLocalRegister T", "QueryFinishFlag T", "EnCommStation T", "EnableEthernet T",
          "PassVarName_2 T", "PLCAddressChangeIntef T", "AddListReadVar T", "AddListWriteVar T",
          "AddListOnceReadVar T", "ReCreatReadVarList T", "GetRegisterData T", "SetRegisterData T",
          "LB B", "LW B", "RWI B"})
        EXPECT_NE(("\n" + symbols).find("\n" + std::string(name)), std::string::npos) << name;
}

TEST(Exports, LibraryNamesItsQtAndItsInterfaceVersion)
{
    const std::string dynamic = outputOf("readelf --dynamic --wide " PLC_LIBRARY);
    EXPECT_NE(dynamic.find("Library soname: [libplc_driver_qt" PLC_LIBRARY_QT ".so.1]"),
              std::string::npos)
        << dynamic;
    EXPECT_NE(dynamic.find("Core.so." PLC_LIBRARY_QT "]"), std::string::npos) << dynamic;
}

TEST(Exports, SymbolsAreBoundInsideTheLibrary)
{
    const std::string dynamic = outputOf("readelf --dynamic --wide " PLC_LIBRARY);
    EXPECT_NE(dynamic.find("SYMBOLIC"), std::string::npos) << dynamic;
}

TEST(Exports, QtCoreIsTheOnlyQtLibraryNeeded)
{
    std::istringstream lines(outputOf("readelf --dynamic --wide " PLC_LIBRARY " | grep NEEDED"));
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        ++count;
        const bool known = line.find("Qt") == std::string::npos
                               ? line.find("libstdc++") != std::string::npos ||
                                     line.find("libgcc_s") != std::string::npos ||
                                     line.find("libm.so") != std::string::npos ||
                                     line.find("libc.so") != std::string::npos ||
                                     // On ARM the guard of the stack is the loader's.
                                     line.find("[ld-linux") != std::string::npos ||
                                     line.find("san.so") != std::string::npos
                               : line.find("Core.so") != std::string::npos;
        EXPECT_TRUE(known) << line;
    }
    EXPECT_GT(count, 0);
}

TEST(Exports, OnlyTheDriverObjectIsInitialisedAtLoad)
{
    if (PLC_INSTRUMENTED)
        GTEST_SKIP() << "instrumentation initialises every object file";
    // The compiler's own entry and the driver object's constructor.
    const std::string sections = outputOf("readelf --sections --wide " PLC_LIBRARY);
    const size_t at = sections.find(".init_array");
    ASSERT_NE(at, std::string::npos);
    std::istringstream fields(sections.substr(at));
    std::string name, type, address, offset, size;
    fields >> name >> type >> address >> offset >> size;
    EXPECT_EQ(std::stoul(size, nullptr, 16), 2 * sizeof(void*));
}
