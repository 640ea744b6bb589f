#ifndef PLC_PANEL_HTTP_TARGET_H
#define PLC_PANEL_HTTP_TARGET_H

#include <QtCore/QStringList>

#include <optional>

#include "panel/http/request.h"

namespace plc::panel {

/// What a request line asks for.
struct Target {
    QStringList parts; ///< Of the path, decoded one by one, so that a name may have a slash.
    Query query;

    QString path() const { return QLatin1Char('/') + parts.join(QLatin1Char('/')); }
};

/// Takes a target apart: a path from the root, perhaps a query. Nothing for what is no such path,
/// holds a bad escape, or is not UTF-8 without control characters when decoded.
std::optional<Target> parseTarget(const QByteArray& target);

/// Nothing for a bad escape, for what is not UTF-8, and for control characters.
std::optional<QString> decodePercent(const QByteArray& text);

} // namespace plc::panel

#endif
