#ifndef PLC_SERVICE_INBOX_H
#define PLC_SERVICE_INBOX_H

#include <QtCore/QObject>

#include <functional>

namespace plc::service {

/// Takes work from other threads for the one that has made it, whose event loop does it in the
/// order in which it was posted. What has not been done when the inbox ends is dropped.
///
/// Thread safety: post() may be called by any thread.
class Inbox : public QObject {
public:
    void post(std::function<void()> work);

protected:
    void customEvent(QEvent* event) override;
};

} // namespace plc::service

#endif
