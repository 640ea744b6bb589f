#ifndef PLC_HOST_TRANSFERS_RESULT_TEXT_H
#define PLC_HOST_TRANSFERS_RESULT_TEXT_H

#include <QtCore/QString>

#include "host/points/data_point.h"
#include "host/transfers/transfer_outcome.h"

namespace plc::host {

/// What a result number of DataCom() means, in words.
QString resultText(int result);

/// "status 0x0031"; "no status" for -1.
QString statusText(int status);

/// How a write ended and what to do about it, in words: "done", "refused: …". Of a write that the
/// PLC took in part, how much.
QString writeOutcomeText(const DataPoint& point, const TransferOutcome& outcome);

/// The same of a read.
QString readOutcomeText(const TransferOutcome& outcome);

/// Why nothing can be written where the project is read-only.
QString readOnlyText();

/// The word for it in JSON output: "done", "refused", "lost" or "unsent".
QString outcomeWord(TransferOutcome::Kind kind);

} // namespace plc::host

#endif
