#ifndef PLC_HOST_TRANSFERS_TAG_WALK_H
#define PLC_HOST_TRANSFERS_TAG_WALK_H

#include <QtCore/QVector>

#include "host/transfers/tag.h"

namespace plc::host {

/// Tells of one tag after the other, asked for in ascending order, whether it is among some tags
/// that ascend as well.
class TagWalk {
public:
    /// `tags` must outlive the walk.
    explicit TagWalk(const QVector<Tag>& tags) : m_next(tags.begin()), m_end(tags.end()) {}

    bool meets(Tag tag)
    {
        while (m_next != m_end && *m_next < tag)
            ++m_next;
        return m_next != m_end && *m_next == tag;
    }

private:
    QVector<Tag>::const_iterator m_next;
    const QVector<Tag>::const_iterator m_end;
};

} // namespace plc::host

#endif
