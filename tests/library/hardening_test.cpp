// The built files as readelf shows them: what makes a mistake harder to exploit is in them.

#include <gtest/gtest.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace {

std::string readelf(const char* options, const std::string& file)
{
    const std::string command = std::string("readelf -W ") + options + " '" + file + "' 2>&1";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char buffer[4096];
    while (pipe && std::fgets(buffer, sizeof buffer, pipe.get()))
        output += buffer;
    return output;
}

/// The line of a listing that holds this text; empty when there is none.
std::string lineWith(const std::string& listing, const char* text)
{
    const std::size_t found = listing.find(text);
    if (found == std::string::npos)
        return std::string();
    const std::size_t start = listing.rfind('\n', found) + 1;
    return listing.substr(start, listing.find('\n', found) - start);
}

bool holds(const std::string& text, const char* part)
{
    return text.find(part) != std::string::npos;
}

class Hardening : public ::testing::Test {
protected:
    void SetUp() override
    {
        if (!PLC_HARDENED)
            GTEST_SKIP() << "only optimised builds without instrumentation are hardened";
    }

    static std::vector<std::string> programs()
    {
#ifdef PLC_HOST
        return {PLC_HOST, PLC_SIMULATOR};
#else
        return {};
#endif
    }
    static std::vector<std::string> files()
    {
        std::vector<std::string> all = programs();
        all.emplace_back(PLC_LIBRARY);
        return all;
    }
};

TEST_F(Hardening, AddressesAreResolvedAtTheStartAndThenReadOnly)
{
    for (const std::string& file : files()) {
        EXPECT_NE(lineWith(readelf("--program-headers", file), "GNU_RELRO"), "") << file;
        EXPECT_TRUE(holds(lineWith(readelf("--dynamic", file), "(FLAGS_1)"), "NOW")) << file;
    }
}

TEST_F(Hardening, StackIsNotExecutable)
{
    for (const std::string& file : files()) {
        const std::string stack = lineWith(readelf("--program-headers", file), "GNU_STACK");
        EXPECT_TRUE(holds(stack, " RW ")) << file << ": " << stack;
        EXPECT_FALSE(holds(stack, "RWE")) << file << ": " << stack;
    }
}

TEST_F(Hardening, NoSegmentIsWritableAndExecutable)
{
    for (const std::string& file : files())
        EXPECT_FALSE(holds(readelf("--program-headers", file), " RWE ")) << file;
}

TEST_F(Hardening, ReturnAddressesAreGuarded)
{
    for (const std::string& file : files())
        EXPECT_TRUE(holds(readelf("--dyn-syms", file), "__stack_chk_fail")) << file;
}

TEST_F(Hardening, ProgramsAreLoadedAnywhere)
{
    for (const std::string& file : programs()) {
        EXPECT_TRUE(holds(lineWith(readelf("--file-header", file), "Type:"), "DYN")) << file;
        EXPECT_TRUE(holds(lineWith(readelf("--dynamic", file), "(FLAGS_1)"), "PIE")) << file;
    }
}

TEST_F(Hardening, CallsIntoTheStandardLibraryKnowTheSizeOfTheirBuffers)
{
    // The library itself has no call that needs it.
    for (const std::string& file : programs())
        EXPECT_TRUE(holds(readelf("--dyn-syms", file), "printf_chk")) << file;
}

} // namespace
