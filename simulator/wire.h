#ifndef PLC_SIMULATOR_WIRE_H
#define PLC_SIMULATOR_WIRE_H

#include <QtCore/QtGlobal>

namespace plc::simulator {

// Every frame begins BB BB and the number of bytes that follow those six. A request goes on with
// its service and a zero byte, a reply with its status; all numbers are big-endian.
constexpr quint8 kFrameMark = 0xbb;
constexpr int kFrameHeaderSize = 6;
constexpr int kServicePosition = 6;
constexpr int kRequestDataPosition = 8;
/// Senders fill in the low half of the length only.
constexpr quint32 kLargestPayload = 0xffff;
/// Service or status.
constexpr int kSmallestPayload = 2;

enum class Service : quint8 {
    Identification = 0x01,
    ReadVariables = 0x2e,
    FileRequest = 0x31,
    WriteVariables = 0x3c
};

/// First number of a reply. 0 is all that a client relies on; the others are this simulator's.
enum class Status : quint16 {
    Good = 0x0000,
    UnknownService = 0x0001,
    BadLength = 0x0002,     ///< The request ends too early or its header is wrong.
    TrailingBytes = 0x0003, ///< The request goes on behind its end.
    BadParameter = 0x0004,  ///< A fixed byte has another value.
    NotLoggedIn = 0x0010,   ///< Login frames missing, or the request does not end in their bytes.
    LoginRefused = 0x0011,
    NoSuchFile = 0x0012,
    TooManyEntries = 0x0020,
    ReplyTooLarge = 0x0021,
    UnknownArea = 0x0030,
    OutsideArea = 0x0031,
    WriteRefused = 0x0040
};

/// Name of a status for traces and messages.
const char* statusName(Status status);

} // namespace plc::simulator

#endif
