#ifndef PLC_BASE_RESULT_NUMBERS_H
#define PLC_BASE_RESULT_NUMBERS_H

namespace plc {

/// What becomes of a reply; resultNumber() turns it into the host's number.
enum ReplyOutcome {
    kLocalGood = 0,
    kLocalCheckFailed = 1,
    kLocalNothingReceived = 2,
    kLocalWrongLength = 3,
    kRemoteGood = 4,
    kRemoteCheckFailed = 5,
    kRemoteNothingReceived = 6,
    kRemoteWrongLength = 7
};

/// Host number of a ReplyOutcome; PLC_RESULT_NO_SETTINGS for any other code. Failures are shifted
/// by the category of the host request.
int resultNumber(int outcome, int category);

/// `base` plus the shift of the category: category + 1 for the categories 1 to 11, else 1.
int shiftedResult(int base, int category);

} // namespace plc

#endif
