#include "panel/http/connection_table.h"

#include <limits>

namespace plc::panel {

bool ConnectionTable::admit(const QString& address)
{
    int all = 0;
    int ofAddress = 0;
    for (const auto& [id, entry] : m_entries) {
        if (entry.phase == Phase::Ending)
            continue;
        ++all;
        ofAddress += entry.address == address ? 1 : 0;
    }
    if (ofAddress >= m_limits.ofAddress)
        return makeRoom(&address);
    return all < m_limits.connections || makeRoom(nullptr);
}

ConnectionTable::Id ConnectionTable::add(const QString& address, qint64 now)
{
    m_entries[++m_last] = {address, Phase::Idle, now, 0};
    return m_last;
}

void ConnectionTable::enter(Id id, Phase phase, qint64 now)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->second.phase == Phase::Ending)
        return;
    entry->second.phase = phase;
    entry->second.since = now;
    entry->second.sent = 0;
}

void ConnectionTable::sent(Id id, qint64 bytes, qint64 now)
{
    const auto entry = m_entries.find(id);
    if (entry == m_entries.end() || entry->second.phase != Phase::Sending)
        return;
    if (m_limits.sentBytes <= 0 || bytes - entry->second.sent < m_limits.sentBytes)
        return;
    entry->second.sent = bytes;
    entry->second.since = now;
}

std::vector<ConnectionTable::Id> ConnectionTable::endOverdue(qint64 now)
{
    std::vector<Id> unanswered;
    for (auto& [id, entry] : m_entries) {
        if (now - entry.since < limitOf(entry.phase))
            continue;
        if (entry.phase == Phase::Answering)
            unanswered.push_back(id);
        else
            end(id);
    }
    return unanswered;
}

qint64 ConnectionTable::limitOf(Phase phase) const
{
    switch (phase) {
        case Phase::Idle:
            return m_limits.idle;
        case Phase::Receiving:
            return m_limits.receiving;
        case Phase::Answering:
            return m_limits.answering;
        case Phase::Sending:
            return m_limits.sending;
        case Phase::Streaming:
        case Phase::Ending:
            break;
    }
    return std::numeric_limits<qint64>::max();
}

/// Of one address, or of any.
bool ConnectionTable::makeRoom(const QString* address)
{
    auto oldest = m_entries.end();
    for (auto entry = m_entries.begin(); entry != m_entries.end(); ++entry) {
        if (entry->second.phase != Phase::Idle || (address && entry->second.address != *address))
            continue;
        if (oldest == m_entries.end() || entry->second.since < oldest->second.since)
            oldest = entry;
    }
    if (oldest == m_entries.end())
        return false;
    end(oldest->first);
    return true;
}

void ConnectionTable::end(Id id)
{
    m_entries[id].phase = Phase::Ending;
    ++m_ended;
    m_end(id);
}

} // namespace plc::panel
