#ifndef PLC_TESTS_MODEL_STEP_GENERATOR_H
#define PLC_TESTS_MODEL_STEP_GENERATOR_H

#include "model/steps.h"
#include "model/symbol_generator.h"
#include "support/random.h"

namespace plc::model {

/// Makes sequences of steps as hosts take them, with everything that hosts, PLCs and networks do
/// wrong.
class StepGenerator {
public:
    explicit StepGenerator(std::uint32_t seed) : m_random(seed), m_symbols(m_random) {}

    /// A sequence of about this many steps; the same for the same seed.
    Sequence sequence(std::size_t steps);

private:
    typedef void (StepGenerator::*Group)();

    template <typename Call>
    void add(const Call& call)
    {
        m_sequence.push_back(call);
    }

    int pick(std::initializer_list<int> choices);
    int numberOfMembers();
    int place();
    int count();
    Bytes bytes(int size);
    Variable record();
    Variable writeRecord();

    // Groups of steps that belong together.
    void setUp();
    void settle();
    void transaction();
    void faultyTransaction();
    void brokenReplies();
    void addReads();
    void addWrites();
    void fillWriteList();
    void addSplitWrites();
    void addOnceReads();
    void rebuild();
    void readValues();
    void writeValues();
    void resolveLabels();
    void enableStations();
    void changeSettings();
    void changeRegistration();
    void passSymbols();
    void cut();
    void fold();
    void storeRemoteReplies();
    void failRemoteReplies();
    void changeRequest();

    void reply(ReplyPlan::Kind kind, int number = 0);
    void damagedReply();
    void changeWord(int word);

    test::Random m_random;
    SymbolGenerator m_symbols;
    Sequence m_sequence;
    /// What kind of host this sequence comes from.
    bool m_isWild = false;
    bool m_hasHugeReads = false;
    bool m_isAbsurd = false;
};

} // namespace plc::model

#endif
