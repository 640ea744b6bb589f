#ifndef PLC_TESTS_SYMBOLS_LABEL_FIXTURE_H
#define PLC_TESTS_SYMBOLS_LABEL_FIXTURE_H

#include "symbols/label_resolution.h"

#include <gtest/gtest.h>

#include <climits>

#include "base/wrapped_int.h"
#include "support/random.h"
#include "support/symbol_fixture.h"

namespace plc::test {

inline Resolution failed(int result)
{
    return Resolution{result, kKeptType, kKeptAddress, kKeptArea};
}

/// A failure after the variable was found: its area and address are written, its type is not.
inline Resolution failedAt(int result, int address, int areaIndex)
{
    return Resolution{result, kKeptType, address, areaIndex};
}

inline void passVariables(const QList<Label_Type_Info>& variables)
{
    passSymbols({scope("MAIN", variables)});
}

} // namespace plc::test

#endif
