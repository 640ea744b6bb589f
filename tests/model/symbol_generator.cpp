#include "model/symbol_generator.h"

#include <QtCore/QString>

namespace plc::model {

namespace {

constexpr int kMostLevels = 3;
constexpr std::uint16_t kArrayFlag = 0x100;
constexpr std::uint16_t kStructureFlag = 0x200;
constexpr std::uint16_t kStructured = 12;
constexpr std::uint16_t kBit = 13;

template <typename List>
const typename List::value_type& anyOf(test::Random& random, const List& list)
{
    return list[std::size_t(random.below(int(list.size())))];
}

int anyNumber(test::Random& random, std::initializer_list<int> numbers)
{
    return *(numbers.begin() + random.below(int(numbers.size())));
}

} // namespace

std::u16string SymbolGenerator::name()
{
    static const std::vector<std::u16string> kNames = {
        u"MAIN", u"a",   u"b", u"speed", u"rec",    u"tab",          u"PRG", u"c",
        u"Main", u"d_1", u"",  u"x[1]",  u"\u00E9", u"\u6E29\u5EA6", u"a]",  u"b["};
    constexpr int kOrdinaryNames = 8;
    if (m_random.oneIn(8))
        return anyOf(m_random, kNames);
    return kNames[std::size_t(m_random.below(kOrdinaryNames))];
}

std::vector<Symbol> SymbolGenerator::records()
{
    std::vector<Symbol> out;
    const int scopes = m_random.between(1, 3);
    for (int i = 0; i < scopes; ++i)
        out.push_back(scope());
    Symbol bits;
    bits.name = u"bits";
    bits.typeFlags = kBit;
    m_bitAddress = m_random.below(200);
    bits.offset = m_bitAddress;
    bits.areaInfo.assign(1, m_random.below(3));
    Symbol type;
    type.memberCount = 1;
    type.members.push_back(bits);
    out.push_back(Symbol());
    out.back().name = u"BITS";
    out.back().typeDef.push_back(type);
    m_records = out;
    return out;
}

Symbol SymbolGenerator::scope()
{
    Symbol type;
    const int variables = m_random.between(1, 8);
    for (int i = 0; i < variables; ++i) {
        type.members.push_back(variable(0));
        type.members.back().areaInfo.assign(1, m_random.below(3));
        if (m_random.oneIn(20))
            type.members.back().areaInfo[0] = anyNumber(m_random, {-1, 65535, 65536, 70000});
        if (m_random.oneIn(30))
            type.members.back().areaInfo.clear();
    }
    type.memberCount = std::uint32_t(type.members.size());
    Symbol out;
    if (!m_random.oneIn(8))
        out.name = name();
    out.typeDef.push_back(type);
    if (m_random.oneIn(10))
        breakSomething(out.typeDef[0]);
    if (m_random.oneIn(40))
        out.typeDef.clear();
    return out;
}

Symbol SymbolGenerator::variable(int depth)
{
    Symbol out;
    out.name = name();
    out.offset = m_random.below(300);
    if (m_random.oneIn(12))
        out.offset = anyNumber(m_random, {-1, -33, 0xFFF0, 0x1FFFF});
    if (m_isWild && m_random.oneIn(4))
        out.offset =
            anyNumber(m_random, {INT32_MAX, INT32_MIN, INT32_MAX - 40, -20, INT32_MIN + 9});
    const bool isStructured = depth < kMostLevels && m_random.oneIn(4);
    if (isStructured) {
        out.typeFlags = kStructured;
        out.typeDef.push_back(structure(depth + 1));
    } else {
        out.typeFlags = std::uint16_t(m_random.between(1, 17));
        if (m_random.oneIn(20))
            out.typeFlags = std::uint16_t(anyNumber(m_random, {0, 18, 255, 0x8004}));
    }
    if (m_random.oneIn(3))
        makeArray(out);
    if (m_random.oneIn(15))
        breakSomething(out);
    return out;
}

void SymbolGenerator::makeArray(Symbol& symbol)
{
    symbol.typeFlags = std::uint16_t(symbol.typeFlags | kArrayFlag);
    symbol.dimCount = m_random.between(1, 3);
    const int base = m_random.oneIn(4) ? anyNumber(m_random, {0, 2, 8, 16, 36}) : 10;
    symbol.arrayBounds.assign(1, base);
    for (int i = 0; i < symbol.dimCount; ++i) {
        const int lower = m_random.between(-2, 3);
        symbol.arrayBounds.push_back(lower);
        symbol.arrayBounds.push_back(lower + m_random.below(7));
    }
    if (m_isWild && m_random.oneIn(4)) {
        symbol.arrayBounds[1] = anyNumber(m_random, {INT32_MIN, INT32_MAX, -1000000});
        symbol.arrayBounds[2] = anyNumber(m_random, {INT32_MIN, INT32_MAX, 1000000});
    }
}

Symbol SymbolGenerator::structure(int depth)
{
    Symbol out;
    out.typeFlags = kStructureFlag;
    out.offset = m_random.between(1, 40);
    if (m_isWild && m_random.oneIn(5))
        out.offset = anyNumber(m_random, {0, -7, INT32_MAX, INT32_MIN});
    const int members = m_random.between(1, 4);
    for (int i = 0; i < members; ++i)
        out.members.push_back(variable(depth));
    out.memberCount = std::uint32_t(members);
    if (m_random.oneIn(15))
        breakSomething(out);
    return out;
}

void SymbolGenerator::breakSomething(Symbol& symbol)
{
    switch (m_random.below(7)) {
        case 0:
            symbol.memberCount = std::uint32_t(anyNumber(m_random, {0, 1, 9, -1}));
            break;
        case 1:
            symbol.dimCount = anyNumber(m_random, {0, -1, 2, 5, INT32_MAX});
            break;
        case 2:
            if (!symbol.arrayBounds.empty())
                symbol.arrayBounds.pop_back();
            break;
        case 3:
            symbol.typeDef.clear();
            break;
        case 4:
            symbol.typeFlags = std::uint16_t(symbol.typeFlags ^ kStructureFlag);
            break;
        case 5:
            symbol.typeFlags = std::uint16_t(symbol.typeFlags ^ kArrayFlag);
            break;
        default:
            if (!symbol.arrayBounds.empty())
                symbol.arrayBounds[0] = anyNumber(m_random, {1, 37, -2, 3});
            break;
    }
}

std::u16string SymbolGenerator::label()
{
    if (m_random.oneIn(40))
        return anyOf(m_random, std::vector<std::u16string>{u"", u".", u"MAIN", u"a.b.c", u".[]"});
    std::u16string out = walkedLabel(!m_random.oneIn(4));
    return m_random.oneIn(6) ? damaged(out) : out;
}

std::u16string SymbolGenerator::soundLabel()
{
    return walkedLabel(true);
}

std::u16string SymbolGenerator::bitLabel() const
{
    return u"BITS.bits";
}

std::u16string SymbolGenerator::walkedLabel(bool isSound)
{
    if (m_records.empty())
        return u"MAIN.speed";
    const Symbol& record = anyOf(m_random, m_records);
    std::u16string out = record.name + u".";
    if (record.typeDef.empty() || record.typeDef[0].members.empty())
        return out + name();
    walk(out, anyOf(m_random, record.typeDef[0].members), isSound);
    return out;
}

void SymbolGenerator::walk(std::u16string& label, const Symbol& symbol, bool isSound)
{
    label += symbol.name;
    const bool isArray = symbol.typeFlags & kArrayFlag;
    if (isSound ? isArray : m_random.oneIn(2))
        label += subscript(symbol, isSound);
    const bool isStructured = symbol.typeFlags % 256 == kStructured;
    if (isStructured && !symbol.typeDef.empty() && !symbol.typeDef[0].members.empty() &&
        (isSound || !m_random.oneIn(4))) {
        label += u'.';
        walk(label, anyOf(m_random, symbol.typeDef[0].members), isSound);
    } else if (m_random.oneIn(20)) {
        label += u"." + name();
    }
}

std::u16string SymbolGenerator::subscript(const Symbol& symbol, bool isSound)
{
    const std::size_t dimensions = (symbol.arrayBounds.size() + 1) / 2;
    const int base = symbol.arrayBounds.empty() ? 10 : symbol.arrayBounds[0];
    std::u16string out = u"[";
    for (std::size_t k = 0; k + 1 < dimensions || k == 0; ++k) {
        const bool hasBounds = 2 * k + 2 < symbol.arrayBounds.size();
        const int lower = hasBounds ? symbol.arrayBounds[2 * k + 1] : 0;
        const int upper = hasBounds ? symbol.arrayBounds[2 * k + 2] : 3;
        const std::int64_t extent = std::int64_t(upper) - lower;
        int value = extent > 0 && extent < 100 ? m_random.between(lower, upper) : lower;
        if (!isSound)
            value = m_random.between(-3, 12);
        const bool isBase = base >= 2 && base <= 36;
        const QString number = QString::number(value, isBase ? base : 10);
        out += k == 0 ? u"" : u",";
        for (int i = 0; i < int(number.size()); ++i)
            out += char16_t(number.at(i).unicode());
    }
    out += u']';
    return out;
}

std::u16string SymbolGenerator::damaged(std::u16string label)
{
    static const std::u16string kCharacters = u"[].,-+ 019x\u00E9\u3000a\u00A0";
    const int damages = m_random.between(1, 2);
    for (int i = 0; i < damages; ++i) {
        const std::size_t at = std::size_t(m_random.below(int(label.size()) + 1));
        const char16_t character = anyOf(m_random, kCharacters);
        if (at == label.size() || m_random.oneIn(2))
            label.insert(at, 1, character);
        else if (m_random.oneIn(2))
            label.erase(at, 1);
        else
            label[at] = character;
    }
    return label;
}

} // namespace plc::model
