#ifndef PLC_TESTS_MODEL_STEPS_H
#define PLC_TESTS_MODEL_STEPS_H

#include <optional>
#include <variant>

#include "model/records.h"

namespace plc::model {

// One thing that a host does. A sequence of them is what a run consists of; printed, they are the
// initialisers of a test.

/// The host hands one of its settings records over, or null (-1).
struct SetSettings {
    int record;
};

/// The host changes a word of one of its settings records.
struct ChangeWord {
    int record;
    int word;
    int value;
};

/// The host registers its callbacks, or null for some.
struct SetCallbacks {
    bool result;
    bool failure;
};

struct EnableStation {
    int station;
    int enable;
    /// Which of the two entry points is called.
    bool byEthernetName;
};

/// Without a value the host hands null over; likewise below.
struct PassSymbols {
    std::optional<std::vector<Symbol>> records;
};

struct AddRead {
    std::optional<Variable> var;
};

struct AddWrite {
    std::optional<Variable> var;
    int append;
};

struct AddOnce {
    std::optional<Variable> var;
    int append;
};

struct RebuildReadList {
    std::optional<std::vector<HostItem>> items;
};

/// WhetherGroup() with a list of its own.
struct Cut {
    int total;
    int maxLen;
    Variable var;
};

/// Bubble_Sort() and BitVarReCreat(), which append to the cyclic list.
struct Fold {
    std::vector<Variable> group;
    int maxLen;
    bool isSorted;
};

struct AskAddress {
    std::u16string label;
};

struct ResolveLabel {
    std::u16string label;
};

struct ReadValue {
    std::u16string label;
    int count;
    bool hasBuffer;
};

struct WriteValue {
    std::u16string label;
    std::u16string subLabel;
    int station;
    std::optional<Bytes> value;
    int count;
    int category;
    int aux1;
};

/// The host asks what to send.
struct Ask {};

/// The host changes a member of the request that it was given; nothing when none waits.
struct ChangeRequest {
    enum Member { ReplyLength, DataOffset, MinReplyLength };
    Member member;
    int value;
};

/// What is done to a good reply before it is handed over.
struct ReplyPlan {
    enum Kind {
        Good,          ///< As the PLC sends it.
        Again,         ///< The reply before this one, once more.
        Head,          ///< Its first `number` bytes.
        Tail,          ///< It without its first `number` bytes.
        Longer,        ///< With `number` bytes behind it.
        Joined,        ///< Twice.
        Status,        ///< With this status.
        ToldLength,    ///< With this number in its length field.
        Empty,         ///< Nothing arrived.
        EmptyFrame,    ///< A frame of `number` payload bytes.
        DifferentByte, ///< With one byte changed.
        LoginPayload   ///< A login reply of `number` payload bytes.
    };
    Kind kind;
    int number;
    /// Where the data bytes of the reply come from.
    std::uint32_t seed;
};

/// The host hands a reply over: these bytes or, where a plan is given, those that the plan makes of
/// the request which waits.
struct TakeReply {
    std::optional<Bytes> bytes;
    /// Added to the size for the number of bytes that were received.
    int receivedOffset;
    std::optional<ReplyPlan> plan;
};

typedef std::variant<SetSettings, ChangeWord, SetCallbacks, EnableStation, PassSymbols, AddRead,
                     AddWrite, AddOnce, RebuildReadList, Cut, Fold, AskAddress, ResolveLabel,
                     ReadValue, WriteValue, Ask, ChangeRequest, TakeReply>
    Step;

typedef std::vector<Step> Sequence;

/// Settings records that the host owns.
constexpr int kSettingsRecords = 2;

} // namespace plc::model

#endif
