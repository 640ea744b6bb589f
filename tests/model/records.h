#ifndef PLC_TESTS_MODEL_RECORDS_H
#define PLC_TESTS_MODEL_RECORDS_H

#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

/// The model of the driver: its rules once more, written for the tests alone in the plainest way
/// that states them. It shares no code with the driver, so that a mistake in one shows as a
/// difference from the other.
namespace plc::model {

typedef std::vector<std::uint8_t> Bytes;

/// A number as a 32-bit member holds it. All rules count exactly; only members are reduced.
inline std::int32_t stored(std::int64_t exact)
{
    return std::int32_t(std::uint32_t(std::uint64_t(exact)));
}

// Sizes that no PLC has. What is larger is a mistake of the host and is refused, so that it costs
// the panel neither memory nor time.

constexpr std::int64_t kLargestValue = 16 * 1024 * 1024;
constexpr std::int64_t kMostPieces = 65536;

/// Whether a value of `length` bytes is small enough, and makes few enough pieces.
inline bool isWithinLimits(std::int64_t length, std::int64_t pieceSize)
{
    return length <= kLargestValue && (length + pieceSize - 1) / pieceSize <= kMostPieces;
}

/// One variable access, with the members of RW_VAR in their order.
struct Variable {
    std::int32_t category = 0;
    std::int32_t aux1 = 0;
    std::int32_t aux2 = 0;
    std::int32_t aux3 = 0;
    std::int32_t deviceNo = 0;
    std::int32_t result = 0;
    std::u16string label;
    std::u16string subLabel;
    std::int32_t dataType = 0;
    std::int32_t address = 0;
    std::int32_t station = 0;
    std::int32_t length = 0;
    std::int32_t aux12 = 0;
    std::int32_t areaIndex = 0;
    Bytes data;
};

inline bool operator==(const Variable& a, const Variable& b)
{
    return std::tie(a.category, a.aux1, a.aux2, a.aux3, a.deviceNo, a.result, a.label, a.subLabel,
                    a.dataType, a.address, a.station, a.length, a.aux12, a.areaIndex, a.data) ==
           std::tie(b.category, b.aux1, b.aux2, b.aux3, b.deviceNo, b.result, b.label, b.subLabel,
                    b.dataType, b.address, b.station, b.length, b.aux12, b.areaIndex, b.data);
}

/// One queued request; the members that are carried only are left out.
struct Request {
    Bytes frame;
    std::int32_t frameLength = 0;
    std::int32_t replyLength = 0;
    std::int32_t dataOffset = 0;
    std::int32_t minReplyLength = 0;
    Variable var;
};

inline bool operator==(const Request& a, const Request& b)
{
    return std::tie(a.frame, a.frameLength, a.replyLength, a.dataOffset, a.minReplyLength, a.var) ==
           std::tie(b.frame, b.frameLength, b.replyLength, b.dataOffset, b.minReplyLength, b.var);
}

/// One record of the symbol list; the members that are carried only are left out.
struct Symbol {
    std::u16string name;
    std::uint16_t typeFlags = 0;
    std::int32_t offset = 0;
    std::int32_t dimCount = 0;
    std::uint32_t memberCount = 0;
    std::vector<int> arrayBounds;
    std::vector<Symbol> members;
    std::vector<Symbol> typeDef;
    std::vector<int> areaInfo;
};

/// One cyclically read variable as the host lists it.
struct HostItem {
    std::uint8_t station = 0;
    std::u16string subLabel;
    std::u16string label;
    std::int32_t count = 0;
};

/// Words of the host's settings record.
enum SettingsWord {
    kMaxReadBytes = 4,
    kDefaultStation = 6,
    kRetryLimit = 7,
    kRetryCount = 8,
    kMultiStation = 9,
    kComWord10 = 10,
    kFrameCount = 11,
    kFrameIndex = 12,
    kComWord13 = 13,
    kRemoteMode = 14,
    kLocalDeviceNo = 15,
    kWriteMode = 16,
    kScanDone = 17,
    kHostTag = 18,
    kSettingsWords = 19
};

/// The host's settings record.
struct Settings {
    std::int32_t word[kSettingsWords] = {};
};

/// One call of a callback: which of the two, and its arguments.
struct CallbackCall {
    enum Kind { Result, Failure };
    Kind kind;
    /// Result: hostTag, category, aux1, status. Failure: entries of the list, category, mode, 0.
    std::int32_t argument[4];
};

inline bool operator==(const CallbackCall& a, const CallbackCall& b)
{
    return a.kind == b.kind && a.argument[0] == b.argument[0] && a.argument[1] == b.argument[1] &&
           a.argument[2] == b.argument[2] && a.argument[3] == b.argument[3];
}

} // namespace plc::model

#endif
