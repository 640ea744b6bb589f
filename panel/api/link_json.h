#ifndef PLC_PANEL_API_LINK_JSON_H
#define PLC_PANEL_API_LINK_JSON_H

#include "panel/api/json_text.h"
#include "panel/model/plc_link.h"

namespace plc::panel {

/// Members of an object: state, since, reason.
inline void appendLinkMembers(const PlcLink& link, QByteArray* json)
{
    appendMember("state", QLatin1String(linkWord(link.state)), json);
    appendMember("since", link.since, json);
    appendMember("reason", link.reason, json);
}

} // namespace plc::panel

#endif
