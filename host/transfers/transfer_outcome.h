#ifndef PLC_HOST_TRANSFERS_TRANSFER_OUTCOME_H
#define PLC_HOST_TRANSFERS_TRANSFER_OUTCOME_H

#include <QtCore/QString>

#include "host/link/session.h"

namespace plc::host {

/// How a write or a one-shot read ended; each ends in exactly one of these.
struct TransferOutcome {
    enum Kind {
        Done,
        /// The PLC answered, but not with success, as often as it was asked.
        Refused,
        /// The link was lost while it was under way: a write may or may not have been carried out.
        /// Also of a write that the PLC refused first, and of which a good reply to a repetition
        /// was turned down, because it was not as long as the refusal.
        LinkLost,
        /// It was not sent at all: the link was down, the station off, or the driver took it not.
        NotSent
    };

    Kind kind = Done;
    int result = 0;  ///< What DataCom() gave; 0 where it was not asked.
    int status = -1; ///< Status in the PLC's reply; -1 where there was none.
    QString reason;  ///< Why, for LinkLost and NotSent.
    /// Of a write of several requests that is not done: elements that the PLC took before, from the
    /// first on; of a text its bytes. After LinkLost it may have taken more.
    int taken = 0;

    bool isDone() const { return kind == Done; }

    /// Of a read that the PLC did not carry out.
    static TransferOutcome refused(int status) { return {Refused, 0, status, QString(), 0}; }
    static TransferOutcome lost(const QString& reason) { return {LinkLost, 0, -1, reason, 0}; }
    static TransferOutcome notSent(const QString& reason) { return {NotSent, 0, -1, reason, 0}; }
};

/// Outcome of the transfers in a request that was answered for good.
inline TransferOutcome transferOutcome(const Answer& answer)
{
    const bool isAccepted = answer.kind == Answer::Accepted;
    return {isAccepted ? TransferOutcome::Done : TransferOutcome::Refused, answer.result,
            answer.status, QString(), 0};
}

} // namespace plc::host

#endif
