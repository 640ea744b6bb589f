#ifndef PLC_RECORDER_TIMELINE_H
#define PLC_RECORDER_TIMELINE_H

#include <QtCore/QVector>

#include "recorder/change.h"

namespace plc::recorder {

inline bool isGap(const Sample& sample)
{
    return sample.quality == Quality::Gap;
}

/// What a series held in a range of time, made of its samples in the order in which they were
/// recorded. One that was recorded later replaces what was recorded for times from its own on: the
/// clock was set back.
template <typename Element>
class Timeline {
public:
    Timeline(qint64 from, qint64 to, const Element& nothing)
        : m_from(from), m_to(to), m_before(nothing)
    {
    }

    void add(const Element& element)
    {
        while (!m_elements.isEmpty() && m_elements.last().time > element.time)
            m_elements.removeLast();
        if (element.time < m_from) {
            m_before = element;
            return;
        }
        const Element& last = m_elements.isEmpty() ? m_before : m_elements.last();
        const bool isRepeatedGap = isGap(element) && isGap(last);
        if (element.time < m_to && !isRepeatedGap)
            m_elements.append(element);
    }

    /// What was held before the range.
    const Element& before() const { return m_before; }
    const QVector<Element>& elements() const { return m_elements; }

private:
    const qint64 m_from;
    const qint64 m_to;
    Element m_before;
    QVector<Element> m_elements;
};

} // namespace plc::recorder

#endif
