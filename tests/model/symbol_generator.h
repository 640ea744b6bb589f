#ifndef PLC_TESTS_MODEL_SYMBOL_GENERATOR_H
#define PLC_TESTS_MODEL_SYMBOL_GENERATOR_H

#include "model/records.h"
#include "support/random.h"

namespace plc::model {

/// Makes symbol lists, sound ones and broken ones, and labels that lead into them or astray.
class SymbolGenerator {
public:
    explicit SymbolGenerator(test::Random& random) : m_random(random) {}

    /// A symbol list; labels lead into it from now on.
    std::vector<Symbol> records();
    /// With `isWild`, places lie at the ends of the number range as well.
    void setWild(bool isWild) { m_isWild = isWild; }

    /// Mostly a label of a symbol of the last list.
    std::u16string label();
    /// A label whose variable has no structure around it and no missing subscript, when there is
    /// one.
    std::u16string soundLabel();
    /// The label of a bit variable.
    std::u16string bitLabel() const;
    int bitAddress() const { return m_bitAddress; }

private:
    std::u16string name();
    Symbol scope();
    Symbol variable(int depth);
    void makeArray(Symbol& symbol);
    Symbol structure(int depth);
    void breakSomething(Symbol& symbol);
    std::u16string subscript(const Symbol& symbol, bool isSound);
    void walk(std::u16string& label, const Symbol& symbol, bool isSound);
    std::u16string walkedLabel(bool isSound);
    std::u16string damaged(std::u16string label);

    test::Random& m_random;
    bool m_isWild = false;
    int m_bitAddress = 0;
    std::vector<Symbol> m_records;
};

} // namespace plc::model

#endif
