#include "host/tcp/name_lookup.h"

#include <netdb.h>
#include <sys/socket.h>
#include <cerrno>
#include <cstring>

#include <QtCore/QObject>
#include <QtCore/QUrl>

#include <mutex>
#include <thread>
#include <utility>

namespace plc::host {

/// Lives as long as the lookup or its thread.
struct NameLookup::Shared {
    std::mutex mutex;
    std::unique_ptr<QObject> receiver; ///< Null when nobody waits any more.
    Handle handle;
};

NameLookup::NameLookup(const QString& name, Handle handle, Resolve resolve)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->receiver = std::make_unique<QObject>();
    m_shared->handle = std::move(handle);
    std::thread([shared = m_shared, resolve = std::move(resolve), name] {
        const NameAddresses found = resolve(name);
        const std::lock_guard<std::mutex> lock(shared->mutex);
        if (!shared->receiver)
            return;
        // The event goes with its receiver.
        QMetaObject::invokeMethod(
            shared->receiver.get(), [handle = shared->handle, found] { handle(found); },
            Qt::QueuedConnection);
    }).detach();
}

NameLookup::~NameLookup()
{
    const std::lock_guard<std::mutex> lock(m_shared->mutex);
    m_shared->receiver.reset();
}

NameAddresses NameLookup::systemAddresses(const QString& name)
{
    addrinfo wanted = {};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    wanted.ai_flags = AI_ADDRCONFIG;
    const QByteArray encoded = QUrl::toAce(name);
    addrinfo* list = nullptr;
    const int code = encoded.isEmpty()
                         ? EAI_NONAME
                         : ::getaddrinfo(encoded.constData(), nullptr, &wanted, &list);
    NameAddresses found;
    if (code != 0) {
        found.error = QString::fromLocal8Bit(code == EAI_SYSTEM ? std::strerror(errno)
                                                                : ::gai_strerror(code));
        return found;
    }
    for (const addrinfo* entry = list; entry; entry = entry->ai_next)
        found.addresses.append(QHostAddress(entry->ai_addr));
    ::freeaddrinfo(list);
    return found;
}

} // namespace plc::host
