#ifndef PLC_PANEL_MODEL_WRITE_OUTCOME_H
#define PLC_PANEL_MODEL_WRITE_OUTCOME_H

#include <QtCore/QString>

namespace plc::panel {

/// How a write ended.
struct WriteOutcome {
    enum Kind {
        Done,
        Refused, ///< By the PLC.
        Unknown, ///< The link was lost while it was under way: it may have been carried out.
        NotSent
    };

    Kind kind = NotSent;
    int status = -1; ///< In the PLC's reply; -1: there was none.
    QString reason;  ///< Number and words; empty of one that is done.
    qint64 time = 0; ///< Milliseconds since 1970-01-01T00:00:00Z.

    static WriteOutcome notSent(const QString& reason, qint64 time)
    {
        return {NotSent, -1, reason, time};
    }
};

/// "done", "refused", "unknown", "notSent"
inline const char* outcomeWord(WriteOutcome::Kind kind)
{
    constexpr const char* kWords[] = {"done", "refused", "unknown", "notSent"};
    return kWords[kind];
}

} // namespace plc::panel

#endif
