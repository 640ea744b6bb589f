#ifndef PLC_TESTS_MODEL_DRIVER_MODEL_H
#define PLC_TESTS_MODEL_DRIVER_MODEL_H

#include <set>

#include "model/image_model.h"
#include "model/label_model.h"
#include "model/records.h"

namespace plc::model {

/// Numbers that the host knows from the replies it is given.
enum LastKind { kCyclic = 0, kWrite = 1, kOnce = 2, kNone = 100 };

/// The whole driver. Members are public: the comparison looks at all of them.
class DriverModel {
public:
    // Set-up.
    void setComInfo(Settings* record);
    void enableStation(int station, int enable);
    void passSymbols(const std::vector<Symbol>& records) { labels.pass(records); }

    // Lists. Records are changed as the host's are.
    int addRead(const Variable& var);
    int addWrite(const Variable& var, int append);
    int addOnce(Variable& var, int append);
    int rebuildReadList(const std::vector<HostItem>& items);
    static void sort(std::vector<Variable>& list);
    void foldInto(const std::vector<Variable>& group, int maxLen);
    static void cut(int total, int maxLen, Variable& var, std::vector<Variable>& list);

    // Values.
    int addressOf(const std::u16string& label) const;
    int readValue(const std::u16string& label, int count, Bytes& value);
    int writeValue(const std::u16string& label, const std::u16string& subLabel, int station,
                   const Bytes& value, int count, int category, int aux1);

    // Traffic.
    /// True when there is a request to send: the head of `queue`.
    bool nextRequest();
    void takeReply(const Bytes& bytes, int received);

    Settings* settings = nullptr;
    bool hasResultCallback = false;
    bool hasFailureCallback = false;
    std::vector<Variable> readList;
    std::vector<Variable> writeList;
    std::vector<Variable> onceList;
    std::vector<Request> queue;
    std::set<int> stationsOff;
    Variable reply;
    int lastKind = kNone;
    int writeTries = 0;
    int onceTries = 0;
    int cycleCount = 0;
    int failed = 0;
    int loggedIn = 0;
    std::vector<Variable> batch;
    int plcInfo1 = 0;
    int plcInfo2 = 0;
    LabelModel labels;
    ImageModel image;
    /// Calls of the callbacks, in their order; the comparison empties it.
    std::vector<CallbackCall> calls;

private:
    // Request cycle.
    bool isOff(const Variable& var) const { return stationsOff.count(var.station) != 0; }
    bool serveWrites(Variable& head);
    bool serveOnceReads(Variable& head);
    bool serveCyclicReads(Variable& head);
    void fillWriteBatch();
    void fillReadBatch(const std::vector<Variable>& list);
    void queueRequest(const Bytes& frame, const Variable& var, int dataOffset, int minReplyLength);
    void queueWrite(const Variable& head);
    void queueRead(const Variable& head);
    void queueLogin(const Variable& head);
    bool finishRequest(const Variable& head);

    // Replies.
    void takeLoginReply(const Bytes& bytes);
    int loginCheck(const Bytes& bytes);
    int dataCheck(const Bytes& bytes) const;
    int takeLocalReply(const Bytes& bytes, int received);
    int takeRemoteReply(const Bytes& bytes, int received);
    int shifted(int base) const;
    void storeReply(const Bytes& bytes);
    void accept(int code, bool isRemote);
    void fail(int code, bool isRemote);
    void settle(bool isRemote);
    void settleWrites();
    void settleOnceReads(bool isRemote);
    void settleCyclicReads();
    void removeFollowers(std::vector<Variable>& list) const;
    void tellOutcome(const Variable& head, bool hasFurtherPiece);
    void purge(std::vector<Variable>& list) const;

    // Lists.
    bool readRange(const Place& place, int count, bool countsRegisters, Variable& var) const;
    void foldExact(const std::vector<Variable>& group);
    void fold(const std::vector<Variable>& group, int maxLen);
};

} // namespace plc::model

#endif
