#include "recorder/series_portion.h"

#include <iterator>

namespace plc::recorder {

bool SeriesPortion::wants(const RunAndSeries& key) const
{
    return (!m_begin || !(key < *m_begin)) && (!m_end || key < *m_end);
}

void SeriesPortion::append(const RunAndSeries& key, const Sample& sample)
{
    BatchEncoder& changes = m_changes[key];
    m_bytes -= changes.batch().size();
    changes.append(key.second, sample);
    m_bytes += changes.batch().size();
    while (m_bytes > m_most && m_changes.size() > 1)
        dropLast();
}

void SeriesPortion::dropLast()
{
    const auto last = std::prev(m_changes.end());
    m_bytes -= last->batch().size();
    m_end = last.key();
    m_changes.erase(last);
}

void SeriesPortion::goOn()
{
    m_changes.clear();
    m_bytes = 0;
    m_begin = m_end;
    m_end.reset();
}

} // namespace plc::recorder
