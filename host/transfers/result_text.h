#ifndef PLC_HOST_TRANSFERS_RESULT_TEXT_H
#define PLC_HOST_TRANSFERS_RESULT_TEXT_H

#include <QtCore/QString>

#include "host/points/data_point.h"
#include "host/transfers/transfer_outcome.h"
#include "values/export.h"

namespace plc::host {

/// What a result number of DataCom() means, in words.
PLC_HOST_EXPORT QString resultText(int result);

/// "status 0x0031"; "no status" for -1.
PLC_HOST_EXPORT QString statusText(int status);

/// How a write ended and what to do about it, in words: "done", "refused: …". Of a write that the
/// PLC took in part, how much.
PLC_HOST_EXPORT QString writeOutcomeText(const DataPoint& point, const TransferOutcome& outcome);

/// The same of a read.
PLC_HOST_EXPORT QString readOutcomeText(const TransferOutcome& outcome);

/// Why nothing can be written where the project is read-only.
PLC_HOST_EXPORT QString readOnlyText();

/// The word for it in JSON output: "done", "refused", "lost" or "unsent".
PLC_HOST_EXPORT QString outcomeWord(TransferOutcome::Kind kind);

} // namespace plc::host

#endif
