#ifndef PLC_HOST_WIRE_READ_LIMITS_H
#define PLC_HOST_WIRE_READ_LIMITS_H

#include <QtCore/QtGlobal>

#include "driver/plc_driver.h"
#include "values/export.h"

namespace plc::host {

/// A value of so many bytes comes in one reply whatever the project's setting is.
constexpr int kLongestSharedEntry = PLC_REQUEST_BUDGET - PLC_READ_ENTRY_OVERHEAD;

/// The longest entry that a value is read in; a longer value takes several.
inline int longestEntry(int maxReadBytes)
{
    return qMax(kLongestSharedEntry, maxReadBytes);
}

/// Adds up the entries of a read request as the driver does. The first one goes in any case.
class PLC_HOST_EXPORT ReadRequestBudget {
public:
    bool hasRoomFor(qint64 bytes) const
    {
        return m_entries == 0 || (m_entries < PLC_MOST_READ_ENTRIES &&
                                  m_used + bytes + PLC_READ_ENTRY_OVERHEAD <= PLC_REQUEST_BUDGET);
    }
    void add(qint64 bytes)
    {
        m_used += bytes + PLC_READ_ENTRY_OVERHEAD;
        ++m_entries;
    }

private:
    qint64 m_used = 0;
    int m_entries = 0;
};

} // namespace plc::host

#endif
