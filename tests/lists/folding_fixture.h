#ifndef PLC_TESTS_LISTS_FOLDING_FIXTURE_H
#define PLC_TESTS_LISTS_FOLDING_FIXTURE_H

#include "lists/read_list_rebuild.h"

#include <climits>
#include <map>
#include <set>

#include "driver/list_access.h"
#include "lists/variable_lists.h"
#include "support/lock_check.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"
#include "support/watched_text.h"

namespace plc::test {

inline RW_VAR entry(int address, int length, const QString& label = QString(), int areaIndex = 3)
{
    RW_VAR var = makeVar(areaIndex, address, length);
    var.label = label;
    return var;
}

inline QList<RW_VAR> entries(const Places& list)
{
    QList<RW_VAR> out;
    for (const std::pair<int, int>& place : list)
        out.append(entry(place.first, place.second));
    return out;
}

inline Places folded(const Places& group, int maxLen)
{
    PLC_driver.readList.clear();
    QList<RW_VAR> list = entries(group);
    BitVarReCreat(&list, maxLen);
    return places(PLC_driver.readList);
}

} // namespace plc::test

#endif
