#ifndef PLC_CLI_LINK_OBSERVER_H
#define PLC_CLI_LINK_OBSERVER_H

#include <QtCore/QVector>

#include "host/runtime/runtime.h"

namespace plc::cli {

/// Hands what a runtime tells on to its observers, in the order in which they were added.
class LinkObservers : public host::RuntimeListener {
public:
    /// `observer` must live until the next clear().
    void add(host::RuntimeListener* observer) { m_observers.append(observer); }
    void clear() { m_observers.clear(); }

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSent(const host::SentRequest& request) override;
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;
    void requestSettled() override;
    void valueRefused(int row) override;
    void valueGivenAgain(int row) override;

private:
    QVector<host::RuntimeListener*> m_observers;
};

} // namespace plc::cli

#endif
