#ifndef PLC_TESTS_LISTS_VARIABLE_LISTS_FIXTURE_H
#define PLC_TESTS_LISTS_VARIABLE_LISTS_FIXTURE_H

#include "lists/variable_lists.h"

#include <climits>
#include <thread>

#include "base/wrapped_int.h"
#include "support/lock_check.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"

namespace plc::test {

inline RW_VAR writeOf(int address, int aux1)
{
    return makeWrite(3, address, hex("12 34"), 2, aux1);
}

inline int addWrite(int address, int aux1, int append = 0)
{
    RW_VAR var = writeOf(address, aux1);
    return AddListWriteVar(&var, append);
}

/// Tags of all entries, to tell which of several writes to one place is in the list.
inline std::vector<int> writeTags()
{
    std::vector<int> tags;
    for (const RW_VAR& var : PLC_driver.writeList)
        tags.push_back(var.aux1);
    return tags;
}

} // namespace plc::test

#endif
