#include "gateway/model/write_request.h"

namespace plc::gateway {

QString outcomeWord(WriteOutcome::Kind kind)
{
    switch (kind) {
        case WriteOutcome::Requested:
            return QStringLiteral("requested");
        case WriteOutcome::Done:
            return QStringLiteral("done");
        case WriteOutcome::Refused:
            return QStringLiteral("refused");
        case WriteOutcome::Unknown:
            break;
    }
    return QStringLiteral("unknown");
}

} // namespace plc::gateway
