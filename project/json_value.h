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
    JsonValue nextKey() const { return next().next(); }
    bool operator==(const JsonValue& other) const { return m_place == other.m_place; }
    bool operator!=(const JsonValue& other) const { return m_place != other.m_place; }

private:
    JsonValue(const JsonTape* tape, std::uint32_t place) : m_tape(tape), m_place(place) {}

    std::uint64_t word() const { return m_tape->words[m_place]; }
    char tag() const { return m_tape ? char(word() >> 56) : '\0'; }

    const JsonTape* m_tape = nullptr;
    std::uint32_t m_place = 0;
};

// These are called for each word of the document.

inline JsonValue JsonValue::next() const
{
    switch (tag()) {
        case '{':
        case '[':
            return {m_tape, std::uint32_t(word())};
        case 'l':
        case 'u':
        case 'd':
            return {m_tape, m_place + 2};
        default:
            return {m_tape, m_place + 1};
    }
}

inline std::string_view JsonValue::utf8() const
{
    constexpr std::uint64_t kPlace = 0x00ffffffffffffff;
    if (!isText())
        return {};
    const std::uint8_t* text = m_tape->texts + (word() & kPlace);
    std::uint32_t length = 0;
    std::memcpy(&length, text, sizeof length);
    return {reinterpret_cast<const char*>(text) + sizeof length, length};
}

/// A key as it stands in a JSON pointer.
QString pointerToken(QString key);

} // namespace plc::project

#endif
