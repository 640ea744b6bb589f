#ifndef PLC_TESTS_SUPPORT_LOCK_CHECK_H
#define PLC_TESTS_SUPPORT_LOCK_CHECK_H

#include <QtCore/QMutex>

#include <functional>

namespace plc::test {

/// Whether `call`, made in a thread of its own while `mutex` is held, comes to wait for it. Returns
/// when the call has ended.
bool waitsFor(QMutex& mutex, const std::function<void()>& call);

} // namespace plc::test

#endif
