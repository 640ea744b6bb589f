#ifndef PLC_HOST_TCP_NAME_LOOKUP_H
#define PLC_HOST_TCP_NAME_LOOKUP_H

#include <QtCore/QString>
#include <QtCore/QVector>
#include <QtNetwork/QHostAddress>

#include <functional>
#include <memory>

#include "values/export.h"

namespace plc::host {

/// What a name stands for.
struct NameAddresses {
    QVector<QHostAddress> addresses;
    QString error; ///< Why there are none.
};

/// Asks the system for the addresses of a name, in a thread of its own.
///
/// The system's call cannot be broken off and takes as long as name servers are silent. So nobody
/// waits for the thread: a lookup that goes leaves it behind, and the program may end meanwhile.
class PLC_HOST_EXPORT NameLookup {
public:
    using Resolve = std::function<NameAddresses(const QString&)>;
    using Handle = std::function<void(const NameAddresses&)>;

    /// Calls `handle` from the event loop of this thread, unless the lookup has gone before.
    NameLookup(const QString& name, Handle handle) : NameLookup(name, handle, systemAddresses) {}
    NameLookup(const QString& name, Handle handle, Resolve resolve);
    ~NameLookup();
    NameLookup(const NameLookup&) = delete;
    NameLookup& operator=(const NameLookup&) = delete;

    /// What the system says; takes its time.
    static NameAddresses systemAddresses(const QString& name);

private:
    struct Shared;
    std::shared_ptr<Shared> m_shared;
};

} // namespace plc::host

#endif
