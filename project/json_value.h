#ifndef PLC_PROJECT_JSON_VALUE_H
#define PLC_PROJECT_JSON_VALUE_H

#include <QtCore/QString>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace plc::project {

/// A parsed document as simdjson keeps it: a tape of 64-bit words, and the texts that they point
/// to. The upper eight bits of a word tell what it is, the others hold:
///
///     r        root: the place behind the last word
///     { [      object, list: in the lower 32 bits the place behind the closing word
///     } ]      the place of the opening word
///     "        text or key: where in `texts` its length (32 bits) and its bytes (UTF-8) stand
///     l u d    a signed, an unsigned, a floating-point number, which is the word behind
///     t f n    true, false, null
///
/// The keys of an object stand before their values.
struct JsonTape {
    const std::uint64_t* words = nullptr;
    const std::uint8_t* texts = nullptr;
};

/// A value of a document, or none. It is no more than a place: texts and numbers are made each time
/// they are asked for. The document must outlive it.
class JsonValue {
public:
    enum class Type { Missing, Null, Boolean, Number, Text, List, Object };

    /// Missing.
    JsonValue() = default;
    static JsonValue root(const JsonTape& tape) { return {&tape, 1}; }

    Type type() const;
    bool isMissing() const { return !m_tape; }
    bool isObject() const { return tag() == '{'; }
    bool isList() const { return tag() == '['; }
    bool isText() const { return tag() == '"'; }

    /// False for what is no truth value.
    bool boolean() const;
    /// 0 for what is no number.
    double number() const;
    /// Empty for what is no text.
    std::string_view utf8() const;
    QString text() const;

    /// The value of this key; missing where there is none or this is no object.
    JsonValue member(std::string_view key) const;

    /// Where the value stands in its document, as a JSON pointer.
    QString path() const;

    /// Walks over what a list holds, or over the keys of an object: begins at first(), ends before
    /// end(), which is first() for everything else.
    JsonValue first() const;
    JsonValue end() const;
    /// What stands behind this value, or behind the value of this key.
    JsonValue next() const;
    /// The value of this key, and the key behind it.
    JsonValue behindKey() const;
    JsonValue nextKey() const { return behindKey().next(); }
    bool operator==(const JsonValue& other) const { return m_place == other.m_place; }
    bool operator!=(const JsonValue& other) const { return m_place != other.m_place; }

private:
    JsonValue(const JsonTape* tape, std::uint32_t place) : m_tape(tape), m_place(place) {}

    std::uint64_t word() const { return m_tape->words[m_place]; }
    char tag() const { return m_tape ? char(word() >> 56) : '\0'; }
    static std::string_view textOf(const JsonTape& tape, std::uint32_t place);
    static std::uint32_t placeBehind(const JsonTape& tape, std::uint32_t place);

    const JsonTape* m_tape = nullptr;
    std::uint32_t m_place = 0;
};

// These are called for each word of the document.

/// Whether two keys are the same. Most differ in their length or in their first letter.
inline bool isSameKey(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           (a.empty() || (a[0] == b[0] && std::memcmp(a.data(), b.data(), a.size()) == 0));
}

inline std::uint32_t JsonValue::placeBehind(const JsonTape& tape, std::uint32_t place)
{
    const std::uint64_t word = tape.words[place];
    switch (char(word >> 56)) {
        case '{':
        case '[':
            return std::uint32_t(word);
        case 'l':
        case 'u':
        case 'd':
            return place + 2;
        default:
            return place + 1;
    }
}

inline JsonValue JsonValue::next() const
{
    return m_tape ? JsonValue(m_tape, placeBehind(*m_tape, m_place)) : JsonValue();
}

inline JsonValue JsonValue::behindKey() const
{
    return {m_tape, m_place + 1};
}

inline std::string_view JsonValue::textOf(const JsonTape& tape, std::uint32_t place)
{
    constexpr std::uint64_t kPlace = 0x00ffffffffffffff;
    const std::uint8_t* text = tape.texts + (tape.words[place] & kPlace);
    std::uint32_t length = 0;
    std::memcpy(&length, text, sizeof length);
    return {reinterpret_cast<const char*>(text) + sizeof length, length};
}

inline std::string_view JsonValue::utf8() const
{
    return isText() ? textOf(*m_tape, m_place) : std::string_view();
}

inline JsonValue::Type JsonValue::type() const
{
    switch (tag()) {
        case '{':
            return Type::Object;
        case '[':
            return Type::List;
        case '"':
            return Type::Text;
        case 'l':
        case 'u':
        case 'd':
            return Type::Number;
        case 't':
        case 'f':
            return Type::Boolean;
        case 'n':
            return Type::Null;
        default:
            return Type::Missing;
    }
}

/// A key as it stands in a JSON pointer.
QString pointerToken(QString key);

} // namespace plc::project

#endif
