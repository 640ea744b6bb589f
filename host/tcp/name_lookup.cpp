#include "host/tcp/name_lookup.h"

#include <netdb.h>
#include <sys/socket.h>
#include <cerrno>
#include <cstring>

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>
#include <QtCore/QUrl>

#include <mutex>
#include <thread>
#include <utility>

namespace plc::host {

/// Lives as long as the lookup or its thread.
struct NameLookup::Shared {
    class Receiver;

    std::mutex mutex;
    std::unique_ptr<Receiver> receiver; ///< Null when nobody waits any more.
    std::unique_ptr<QEvent> answered;   ///< Until it is sent to the receiver.
    NameAddresses found;
    Handle handle;
};

/// Tells the answer in the thread that waits for it.
class NameLookup::Shared::Receiver : public QObject {
public:
    explicit Receiver(Shared* shared) : m_shared(shared) {}

    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::User)
            return QObject::event(event);
        std::unique_lock<std::mutex> lock(m_shared->mutex);
        const Handle tell = m_shared->handle;
        const NameAddresses answer = m_shared->found;
        lock.unlock();
        tell(answer); // may end the lookup, and this with it
        return true;
    }

private:
    Shared* const m_shared;
};

NameLookup::NameLookup(const QString& name, Handle handle, Resolve resolve)
    : m_shared(std::make_shared<Shared>())
{
    m_shared->receiver = std::make_unique<Shared::Receiver>(m_shared.get());
    m_shared->answered = std::make_unique<QEvent>(QEvent::User);
    m_shared->handle = std::move(handle);
    std::thread([shared = m_shared, resolve = std::move(resolve), name] {
        NameAddresses found = resolve(name);
        const std::lock_guard<std::mutex> lock(shared->mutex);
        if (!shared->receiver)
            return;
        shared->found = std::move(found);
        // The event goes with its receiver.
        QCoreApplication::postEvent(shared->receiver.get(), shared->answered.release());
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
