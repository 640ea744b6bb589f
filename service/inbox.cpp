#include "service/inbox.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QEvent>

#include <utility>

#if defined(__SANITIZE_THREAD__)
#include <sanitizer/tsan_interface.h>
#endif

namespace plc::service {
namespace {

class PostedWork : public QEvent {
public:
    explicit PostedWork(std::function<void()> work) : QEvent(QEvent::User), m_work(std::move(work))
    {
    }

    void perform() const { m_work(); }

private:
    const std::function<void()> m_work;
};

/// What orders the two threads is inside Qt, where ThreadSanitizer does not see it: it is told.
#if defined(__SANITIZE_THREAD__)
void tellHandedOver(void* event)
{
    __tsan_release(event);
}
void tellTakenOver(void* event)
{
    __tsan_acquire(event);
}
#else
void tellHandedOver(void*) {}
void tellTakenOver(void*) {}
#endif

} // namespace

void Inbox::post(std::function<void()> work)
{
    auto* const event = new PostedWork(std::move(work));
    tellHandedOver(event);
    QCoreApplication::postEvent(this, event); // which owns it from now on
}

void Inbox::customEvent(QEvent* event)
{
    tellTakenOver(event);
    static_cast<const PostedWork*>(event)->perform();
}

} // namespace plc::service
