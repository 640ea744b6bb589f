#ifndef PLC_PANEL_HTTP_LOOPBACK_H
#define PLC_PANEL_HTTP_LOOPBACK_H

#include <QtCore/QString>

namespace plc::panel {

/// Whether only this machine itself reaches an address.
inline bool isLoopbackAddress(const QString& address)
{
    return address.startsWith(QLatin1String("127.")) || address == QLatin1String("::1");
}

} // namespace plc::panel

#endif
