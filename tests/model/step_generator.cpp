#include "model/step_generator.h"

namespace plc::model {

namespace {

constexpr int kAreas = 3;
constexpr int kStations = 4;
/// Of a value's buffer, however large the count that goes with it.
constexpr int kMostRegisters = 1300;

} // namespace

Sequence StepGenerator::sequence(std::size_t steps)
{
    struct Weighted {
        int weight;
        Group group;
    };
    static const Weighted kGroups[] = {{30, &StepGenerator::transaction},
                                       {14, &StepGenerator::faultyTransaction},
                                       {4, &StepGenerator::brokenReplies},
                                       {4, &StepGenerator::addReads},
                                       {8, &StepGenerator::addWrites},
                                       {1, &StepGenerator::fillWriteList},
                                       {3, &StepGenerator::addSplitWrites},
                                       {8, &StepGenerator::addOnceReads},
                                       {3, &StepGenerator::rebuild},
                                       {8, &StepGenerator::readValues},
                                       {8, &StepGenerator::writeValues},
                                       {6, &StepGenerator::resolveLabels},
                                       {3, &StepGenerator::enableStations},
                                       {4, &StepGenerator::changeSettings},
                                       {1, &StepGenerator::changeRegistration},
                                       {1, &StepGenerator::passSymbols},
                                       {1, &StepGenerator::cut},
                                       {1, &StepGenerator::fold},
                                       {1, &StepGenerator::changeRequest},
                                       {1, &StepGenerator::storeRemoteReplies},
                                       {2, &StepGenerator::failRemoteReplies}};
    int total = 0;
    for (const Weighted& weighted : kGroups)
        total += weighted.weight;

    m_sequence.clear();
    m_isWild = m_random.oneIn(3);
    m_hasHugeReads = m_isWild && m_random.oneIn(3);
    m_isAbsurd = m_random.oneIn(5);
    m_symbols.setWild(m_isWild);
    setUp();
    while (m_sequence.size() < steps) {
        int turn = m_random.below(total);
        const Weighted* weighted = kGroups;
        while (turn >= weighted->weight) {
            turn -= weighted->weight;
            ++weighted;
        }
        (this->*weighted->group)();
    }
    return m_sequence;
}

int StepGenerator::pick(std::initializer_list<int> choices)
{
    return *(choices.begin() + m_random.below(int(choices.size())));
}

int StepGenerator::place()
{
    if (m_isWild && m_random.oneIn(6))
        return pick({INT32_MAX, INT32_MIN, -1, INT32_MAX - 60, -30});
    return m_random.below(m_random.oneIn(2) ? 40 : 400);
}

int StepGenerator::count()
{
    if (m_isAbsurd && m_random.oneIn(4))
        return pick({INT32_MAX, INT32_MIN, INT32_MAX - 5, 1 << 30, 20 * 1024 * 1024, 1 << 25});
    if (m_random.oneIn(15))
        return pick({0, -1, -2, -5});
    if (m_random.oneIn(20))
        return m_random.between(100, 1300);
    return m_random.between(1, m_random.oneIn(4) ? 40 : 6);
}

Bytes StepGenerator::bytes(int size)
{
    Bytes out;
    for (int i = 0; i < size; ++i)
        out.push_back(m_random.oneIn(4) ? std::uint8_t(0) : std::uint8_t(m_random.bits()));
    return out;
}

/// A record as a host makes it by hand.
Variable StepGenerator::record()
{
    Variable var;
    var.category = m_random.oneIn(6) ? m_random.between(-1, 13) : m_random.between(1, 2);
    var.aux1 = m_random.below(3);
    var.aux2 = m_random.oneIn(3) ? m_random.between(-1, 2) : 0;
    var.aux3 = m_random.below(2);
    var.deviceNo = m_random.oneIn(6) ? m_random.below(3) : 0;
    var.result = m_random.oneIn(6) ? m_random.between(-2, 3) : 0;
    var.label = m_symbols.label();
    var.subLabel = m_random.oneIn(3) ? u"second" : u"";
    var.dataType = m_random.oneIn(4) ? 13 : m_random.between(0, 18);
    var.address = place();
    var.station = m_random.below(kStations);
    var.length = count();
    var.aux12 = m_random.oneIn(2) ? -1 : 0;
    var.areaIndex =
        m_random.oneIn(12) ? pick({-1, 65535, 65537, INT32_MIN}) : m_random.below(kAreas);
    return var;
}

Variable StepGenerator::writeRecord()
{
    Variable var = record();
    if (!m_random.oneIn(4))
        var.aux2 = 1;
    if (m_random.oneIn(60))
        var.length = pick({-INT32_MAX, 1000, 5000, 70000});
    var.data = bytes(std::min(std::max(var.length, 0), 1500));
    if (m_random.oneIn(8))
        var.data = bytes(m_random.below(12));
    return var;
}

void StepGenerator::setUp()
{
    for (int record = 0; record < kSettingsRecords; ++record) {
        for (int word = 0; word < kSettingsWords; ++word) {
            const bool isOften = word == kMaxReadBytes || word == kRetryLimit || word == kWriteMode;
            if (isOften || m_random.oneIn(3)) {
                add(ChangeWord{record, word, 0});
                changeWord(word);
                std::get<ChangeWord>(m_sequence.back()).record = record;
                m_sequence.erase(m_sequence.end() - 2);
            }
        }
    }
    if (!m_random.oneIn(20))
        add(SetCallbacks{true, true});
    add(PassSymbols{m_symbols.records()});
    if (!m_random.oneIn(20))
        add(SetSettings{0});
    rebuild();
    if (!m_random.oneIn(4)) {
        transaction();
        transaction();
    }
}

void StepGenerator::changeWord(int word)
{
    int value = 0;
    switch (word) {
        case kMaxReadBytes:
            value = pick({1, 2, 5, 16, 64, 100, 200, 256, 998, 2000});
            if (m_random.oneIn(15))
                value = pick({0, -1, INT32_MIN});
            if (m_hasHugeReads)
                value = pick({INT32_MAX, INT32_MAX - 7, 1 << 30, 1 << 26});
            break;
        case kDefaultStation:
            value = m_random.below(kStations);
            break;
        case kRetryLimit:
            value = m_random.oneIn(10) ? pick({-1, INT32_MAX, INT32_MIN}) : m_random.below(3);
            break;
        case kRetryCount:
            value = m_random.oneIn(10) ? pick({-3, INT32_MAX, INT32_MIN}) : m_random.below(3);
            break;
        case kMultiStation:
            value = pick({0, 0, 1, 5});
            break;
        case kFrameCount:
        case kFrameIndex:
            value = m_random.oneIn(10) ? pick({-3, INT32_MAX, INT32_MIN}) : m_random.below(4);
            break;
        case kRemoteMode:
            value = m_random.oneIn(6) ? 1 : 0;
            break;
        case kLocalDeviceNo:
            value = m_random.oneIn(4) ? 1 : 0;
            break;
        case kWriteMode:
            value = m_random.oneIn(4) ? m_random.below(4) : 2;
            break;
        case kScanDone:
            value = m_random.below(2);
            break;
        default:
            value = m_random.between(-5, 100);
            break;
    }
    add(ChangeWord{m_random.oneIn(10) ? 1 : 0, word, value});
}

void StepGenerator::reply(ReplyPlan::Kind kind, int number)
{
    TakeReply step = {};
    step.plan = ReplyPlan{kind, number, m_random.bits()};
    if (m_random.oneIn(40))
        step.receivedOffset = pick({-1, 1, -100000, 7});
    add(step);
}

/// The host sends and takes the good reply twice: its size is recorded first.
void StepGenerator::transaction()
{
    add(Ask{});
    reply(ReplyPlan::Good);
    reply(ReplyPlan::Again);
}

void StepGenerator::damagedReply()
{
    static const ReplyPlan::Kind kKinds[] = {
        ReplyPlan::Head,       ReplyPlan::Tail,          ReplyPlan::Longer,
        ReplyPlan::Joined,     ReplyPlan::Status,        ReplyPlan::ToldLength,
        ReplyPlan::EmptyFrame, ReplyPlan::DifferentByte, ReplyPlan::LoginPayload,
        ReplyPlan::Empty,      ReplyPlan::Empty};
    const ReplyPlan::Kind kind = kKinds[m_random.below(int(sizeof kKinds / sizeof kKinds[0]))];
    int number = m_random.below(m_random.oneIn(2) ? 12 : 300);
    if (kind == ReplyPlan::LoginPayload)
        number = pick({0, 2, 19, 20, 29, 30, 31, 199, 200, 201});
    if (kind == ReplyPlan::Status)
        number = pick({0, 1, 0x100, 0xFFFF});
    reply(kind, number);
}

void StepGenerator::faultyTransaction()
{
    add(Ask{});
    const int replies = m_random.between(1, 5);
    for (int i = 0; i < replies; ++i) {
        if (m_random.oneIn(3))
            reply(m_random.oneIn(2) ? ReplyPlan::Again : ReplyPlan::Good);
        else
            damagedReply();
        if (m_random.oneIn(3))
            add(Ask{});
    }
}

void StepGenerator::brokenReplies()
{
    switch (m_random.below(4)) {
        case 0:
            add(TakeReply{std::nullopt, m_random.below(2), std::nullopt});
            break;
        case 1:
            add(TakeReply{bytes(m_random.below(30)), 0, std::nullopt});
            break;
        default: {
            // Outage: nothing arrives until the transaction is abandoned.
            const int attempts = m_random.between(1, 6);
            for (int i = 0; i < attempts; ++i) {
                add(Ask{});
                reply(ReplyPlan::Empty);
            }
            break;
        }
    }
}

void StepGenerator::addReads()
{
    const int reads = m_random.oneIn(10) ? m_random.between(90, 210) : m_random.between(1, 3);
    for (int i = 0; i < reads; ++i) {
        AddRead step;
        if (!m_random.oneIn(40)) {
            step.var = record();
            if (m_random.oneIn(30))
                step.var->length = pick({0x10002, 65535, 3000});
        }
        add(step);
    }
}

void StepGenerator::addWrites()
{
    const int writes = m_random.between(1, 3);
    for (int i = 0; i < writes; ++i) {
        AddWrite step = {};
        step.append = m_random.oneIn(4) ? m_random.between(-1, 2) : 0;
        if (!m_random.oneIn(40))
            step.var = writeRecord();
        add(step);
    }
    // The same place once more, with another value.
    if (m_random.oneIn(3)) {
        AddWrite step = std::get<AddWrite>(m_sequence.back());
        if (step.var)
            step.var->data = bytes(4);
        add(step);
    }
}

/// Fills the list to its limit and beyond, then writes to places that are queued and to others.
void StepGenerator::fillWriteList()
{
    const auto writeBits = [this](int count) {
        WriteValue step = {};
        step.label = m_symbols.bitLabel();
        step.station = m_random.below(2);
        step.value = bytes(count);
        step.count = count;
        step.category = 1;
        step.aux1 = m_random.below(2);
        add(step);
    };
    add(ChangeWord{0, kWriteMode, 2});
    writeBits(m_random.between(900, 1100));
    const int steps = m_random.between(1, 6);
    for (int i = 0; i < steps; ++i) {
        if (m_random.oneIn(3)) {
            Variable twice = writeRecord();
            twice.station = m_random.below(2);
            twice.address = m_symbols.bitAddress() + m_random.below(1000);
            twice.length = 1;
            add(AddWrite{twice, 1});
        }
        if (m_random.oneIn(3))
            addWrites();
        else
            writeBits(m_random.oneIn(3) ? m_random.between(1000, 1200) : m_random.between(1, 40));
    }
}

/// Pieces of one host request, among others.
void StepGenerator::addSplitWrites()
{
    Variable var = writeRecord();
    const int pieces = m_random.between(2, 5);
    for (int i = 0; i < pieces; ++i) {
        var.address = stored(std::int64_t(var.address) + std::max(var.length, 1));
        add(AddWrite{var, 0});
        if (m_random.oneIn(4))
            add(AddWrite{writeRecord(), 1});
    }
}

void StepGenerator::addOnceReads()
{
    const int reads = m_random.oneIn(15) ? m_random.between(100, 200) : m_random.between(1, 3);
    for (int i = 0; i < reads; ++i) {
        AddOnce step = {};
        step.append = m_random.oneIn(5) ? m_random.between(-1, 2) : 0;
        if (!m_random.oneIn(40)) {
            step.var = record();
            step.var->label = m_random.oneIn(4) ? m_symbols.label() : m_symbols.soundLabel();
            if (m_hasHugeReads && m_random.oneIn(4))
                step.var->length = pick({INT32_MAX, INT32_MIN, 1 << 30, 1 << 29, 100000});
        }
        add(step);
    }
    if (m_random.oneIn(3))
        add(Step(m_sequence.back()));
}

void StepGenerator::rebuild()
{
    RebuildReadList step;
    if (!m_random.oneIn(30)) {
        step.items.emplace();
        const int items = m_random.oneIn(15) ? m_random.below(200) : m_random.below(12);
        for (int i = 0; i < items; ++i) {
            HostItem item;
            item.station = std::uint8_t(m_random.oneIn(10) ? 255 : m_random.below(kStations));
            item.subLabel = m_random.oneIn(3) ? u"second" : u"";
            item.label = m_random.oneIn(5) ? m_symbols.label() : m_symbols.soundLabel();
            item.count = count();
            if (m_hasHugeReads && m_random.oneIn(8))
                item.count = pick({INT32_MAX, INT32_MIN, 1 << 30, 100000});
            step.items->push_back(item);
        }
    }
    add(step);
}

void StepGenerator::readValues()
{
    const int reads = m_random.between(1, 3);
    for (int i = 0; i < reads; ++i)
        add(ReadValue{m_random.oneIn(4) ? m_symbols.label() : m_symbols.soundLabel(), count(),
                      !m_random.oneIn(50)});
}

void StepGenerator::writeValues()
{
    const int writes = m_random.between(1, 3);
    for (int i = 0; i < writes; ++i) {
        WriteValue step = {};
        step.label = m_random.oneIn(4) ? m_symbols.label() : m_symbols.soundLabel();
        step.subLabel = m_random.oneIn(3) ? u"second" : u"";
        step.station = m_random.below(kStations);
        step.count = count();
        if (!m_random.oneIn(50)) {
            const int registers = std::min(std::max(step.count, 0), kMostRegisters);
            const int size = 2 * registers + (m_random.oneIn(4) ? pick({-3, -1, 1, 5}) : 0);
            step.value = bytes(std::max(size, 0));
        }
        step.category = m_random.between(1, 2);
        step.aux1 = m_random.below(4);
        add(step);
    }
}

void StepGenerator::resolveLabels()
{
    const int labels = m_random.between(1, 6);
    for (int i = 0; i < labels; ++i) {
        if (m_random.oneIn(5))
            add(AskAddress{m_symbols.label()});
        else
            add(ResolveLabel{m_symbols.label()});
    }
}

void StepGenerator::enableStations()
{
    const int station =
        m_random.oneIn(6) ? pick({-1, INT32_MIN, INT32_MAX}) : m_random.below(kStations);
    const int enable = m_random.oneIn(8) ? pick({-1, 2}) : m_random.oneIn(3) ? 0 : 1;
    add(EnableStation{station, enable, m_random.oneIn(2)});
}

void StepGenerator::changeSettings()
{
    changeWord(m_random.oneIn(3) ? m_random.below(kSettingsWords)
                                 : pick({kMaxReadBytes, kRetryLimit, kMultiStation, kWriteMode,
                                         kRemoteMode, kLocalDeviceNo, kScanDone}));
}

void StepGenerator::changeRegistration()
{
    if (m_random.oneIn(3))
        add(SetCallbacks{m_random.oneIn(2), m_random.oneIn(2)});
    else
        add(SetSettings{m_random.below(kSettingsRecords)});
    if (m_random.oneIn(6)) {
        // Some calls without settings.
        add(SetSettings{-1});
        writeValues();
        addOnceReads();
        rebuild();
        transaction();
        add(SetSettings{0});
    }
}

void StepGenerator::passSymbols()
{
    PassSymbols step;
    if (!m_random.oneIn(10))
        step.records = m_symbols.records();
    if (m_random.oneIn(10))
        step.records = std::vector<Symbol>();
    add(step);
}

void StepGenerator::cut()
{
    const int maxLen = pick({1, 7, 100, 256, 0, -1, INT32_MAX});
    int total = m_isAbsurd ? count() : m_random.between(-5, 700);
    if (m_random.oneIn(3) && maxLen < INT32_MAX)
        total = m_random.below(4) * maxLen;
    add(Cut{total, maxLen, record()});
}

void StepGenerator::fold()
{
    Fold step = {};
    const int entries = m_random.below(12);
    for (int i = 0; i < entries; ++i) {
        step.group.push_back(record());
        step.group.back().areaIndex = 1;
    }
    step.maxLen = pick({1, 2, 7, 16, 100, 256, 0, -1, INT32_MAX});
    step.isSorted = !m_random.oneIn(4);
    add(step);
}

/// Replies of the remote area that are stored; the host's frame counter decides about the result.
void StepGenerator::storeRemoteReplies()
{
    Variable var = record();
    var.aux12 = -1;
    var.deviceNo = 5;
    add(AddOnce{var, 1});
    add(Ask{});
    if (m_random.oneIn(2))
        add(ChangeWord{0, kFrameIndex, m_random.below(3)});
    reply(ReplyPlan::Good);
    reply(ReplyPlan::Again);
    transaction();
}

/// The PLC refuses a request of the remote area until it is abandoned.
void StepGenerator::failRemoteReplies()
{
    Variable var = record();
    var.deviceNo = 5;
    add(AddOnce{var, 1});
    const int attempts = m_random.between(2, 4);
    for (int i = 0; i < attempts; ++i) {
        add(Ask{});
        reply(ReplyPlan::Status, 1);
        reply(ReplyPlan::Again);
    }
}

/// What the driver returns belongs to it, yet a host can write to it.
void StepGenerator::changeRequest()
{
    add(Ask{});
    switch (m_random.below(3)) {
        case 0:
            add(ChangeRequest{ChangeRequest::ReplyLength, pick({0, -2, -1, 8, 300})});
            break;
        case 1:
            add(ChangeRequest{ChangeRequest::DataOffset,
                              pick({0, -1, 4, 100, INT32_MAX, INT32_MIN})});
            break;
        default:
            add(ChangeRequest{ChangeRequest::MinReplyLength, pick({0, 8, 207, -1, INT32_MAX})});
            break;
    }
    faultyTransaction();
}

} // namespace plc::model
