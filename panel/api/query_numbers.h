#ifndef PLC_PANEL_API_QUERY_NUMBERS_H
#define PLC_PANEL_API_QUERY_NUMBERS_H

#include "panel/http/request.h"
#include "values/expected.h"

namespace plc::panel {

/// A whole number of the query; `usual` where it is not given. An error names it.
inline Expected<qint64> numberOf(const Request& request, const char* name, qint64 usual,
                                 qint64 lowest, qint64 highest)
{
    const std::optional<QString> text = request.first(QLatin1String(name));
    if (!text)
        return usual;
    bool ok = false;
    const qint64 number = text->toLongLong(&ok);
    if (!ok || number < lowest || number > highest)
        return Error{QStringLiteral("\"%1\": a number from %2 to %3 is expected")
                         .arg(QLatin1String(name))
                         .arg(lowest)
                         .arg(highest)};
    return number;
}

/// A time of the query, in ms since 1970-01-01T00:00:00Z.
inline Expected<qint64> timeOf(const Request& request, const char* name, qint64 usual)
{
    constexpr qint64 kLatest = qint64(1) << 53;
    return numberOf(request, name, usual, 0, kLatest);
}

} // namespace plc::panel

#endif
