#ifndef PLC_HOST_RESULT_TEXT_H
#define PLC_HOST_RESULT_TEXT_H

#include <QtCore/QString>

#include "host/transfer_outcome.h"

namespace plc {

/// What a result number of DataCom() means, in words.
QString resultText(int result);

/// How a write or read ended and what to do about it, in words: "done", "refused by the PLC …".
QString outcomeText(const TransferOutcome& outcome);

/// Why nothing can be written where the project is read-only.
QString readOnlyText();

/// The word for it in JSON output: "done", "refused", "lost" or "unsent".
QString outcomeWord(TransferOutcome::Kind kind);

} // namespace plc

#endif
