#ifndef PLC_PANEL_API_LINK_JSON_H
#define PLC_PANEL_API_LINK_JSON_H

#include "panel/api/json_text.h"
#include "panel/model/plc_link.h"

#include <algorithm>

namespace plc::panel {

/// Members of an object: state, since, reason. A clock that was put back since then would have
/// readers take what the PLC confirms now for older than its connection, so since is never later
/// than `now`.
inline void appendLinkMembers(const PlcLink& link, qint64 now, QByteArray* json)
{
    appendMember("state", QLatin1String(linkWord(link.state)), json);
    appendMember("since", std::min(link.since, now), json);
    appendMember("reason", link.reason, json);
}

} // namespace plc::panel

#endif
