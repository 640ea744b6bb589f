#ifndef PLC_PANEL_ACCESS_ACCESS_GUARD_H
#define PLC_PANEL_ACCESS_ACCESS_GUARD_H

#include <QtCore/QStringList>

#include "panel/access/access.h"
#include "panel/access/request_origin.h"
#include "panel/http/guard.h"

namespace plc::panel {

/// The one place where it is decided whether a request is carried out: by the name of this server,
/// the page that sends it, who sends it, what he may do, how often, and whether anything may be
/// changed at all.
class AccessGuard : public Guard {
public:
    /// `names`: by which this server is reached, beside localhost. `instance`: another one in each
    /// run of the program. `access` outlives the guard.
    AccessGuard(Access* access, const QStringList& names, QByteArray instance, bool isReadOnly)
        : m_access(access),
          m_names(names),
          m_instance(std::move(instance)),
          m_isReadOnly(isReadOnly)
    {
    }

    Decision decide(const RequestHead& head) override;

private:
    std::optional<Response> refusal(const RequestHead& head, const Caller& caller);
    std::optional<Response> checkInstance(const RequestHead& head) const;
    std::optional<Response> checkSender(const RequestHead& head) const;
    std::optional<Response> checkCaller(const Route& route, const Caller& caller) const;
    std::optional<Response> checkChange(const Route& route, const Caller& caller);

    Access* const m_access;
    const HostNames m_names;
    const QByteArray m_instance;
    const bool m_isReadOnly;
};

} // namespace plc::panel

#endif
