#ifndef PLC_HOST_WIRE_READ_LIMITS_H
#define PLC_HOST_WIRE_READ_LIMITS_H

#include <QtCore/QtGlobal>

namespace plc::host {

// What the driver puts into one read request: entries up to a budget, each counted with one byte
// more than its data, and no more than so many. The first entry goes in any case.
constexpr int kReadRequestBudget = 999;
constexpr int kReadEntryOverhead = 1;
constexpr int kMostReadEntries = 99;

/// A value of so many bytes comes in one reply whatever the project's setting is.
constexpr int kLongestSharedEntry = kReadRequestBudget - kReadEntryOverhead;

/// The longest entry that a value is read in; a longer value takes several.
inline int longestEntry(int maxReadBytes)
{
    return qMax(kLongestSharedEntry, maxReadBytes);
}

/// Adds up the entries of a read request as the driver does.
class ReadRequestBudget {
public:
    bool hasRoomFor(qint64 bytes) const
    {
        return m_entries == 0 || (m_entries < kMostReadEntries &&
                                  m_used + bytes + kReadEntryOverhead <= kReadRequestBudget);
    }
    void add(qint64 bytes)
    {
        m_used += bytes + kReadEntryOverhead;
        ++m_entries;
    }

private:
    qint64 m_used = 0;
    int m_entries = 0;
};

} // namespace plc::host

#endif
