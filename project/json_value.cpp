#include "project/json_value.h"

#include <cstring>

#include "values/nearest_name.h"

namespace plc::project {
namespace {

template <typename Number>
double numberIn(std::uint64_t word)
{
    Number number = 0;
    std::memcpy(&number, &word, sizeof number);
    return double(number);
}

/// Nearly all texts are.
bool isAscii(std::string_view text)
{
    std::uint64_t seen = 0;
    std::size_t i = 0;
    for (std::uint64_t eight = 0; i + sizeof eight <= text.size(); i += sizeof eight) {
        std::memcpy(&eight, text.data() + i, sizeof eight);
        seen |= eight;
    }
    for (; i < text.size(); ++i)
        seen |= std::uint8_t(text[i]);
    return (seen & 0x8080808080808080) == 0;
}

/// JSON may name half of a surrogate pair, "\ud800". As UTF-8 these are three bytes that begin with
/// 0xED and go on with 0xA0 or more, which decoders rightly take for no character.
bool hasLoneSurrogate(std::string_view utf8)
{
    for (std::size_t i = 0; i + 2 < utf8.size(); ++i) {
        if (std::uint8_t(utf8[i]) == 0xed && std::uint8_t(utf8[i + 1]) >= 0xa0)
            return true;
    }
    return false;
}

QString decoded(std::string_view utf8)
{
    QString text;
    std::size_t start = 0;
    const auto appendUntil = [&](std::size_t end) {
        text += QString::fromUtf8(utf8.data() + start, int(end - start));
    };
    for (std::size_t i = 0; i + 2 < utf8.size(); ++i) {
        if (std::uint8_t(utf8[i]) != 0xed || std::uint8_t(utf8[i + 1]) < 0xa0)
            continue;
        appendUntil(i);
        text += QChar(ushort(0xd000 | (utf8[i + 1] & 0x3f) << 6 | (utf8[i + 2] & 0x3f)));
        start = i + 3;
    }
    appendUntil(utf8.size());
    return text;
}

} // namespace

bool JsonValue::boolean() const
{
    return tag() == 't';
}

double JsonValue::number() const
{
    switch (tag()) {
        case 'l':
            return numberIn<std::int64_t>(m_tape->words[m_place + 1]);
        case 'u':
            return numberIn<std::uint64_t>(m_tape->words[m_place + 1]);
        case 'd':
            return numberIn<double>(m_tape->words[m_place + 1]);
        default:
            return 0;
    }
}

QString JsonValue::text() const
{
    const std::string_view bytes = utf8();
    if (isAscii(bytes))
        return QString::fromLatin1(bytes.data(), int(bytes.size()));
    return hasLoneSurrogate(bytes) ? decoded(bytes)
                                   : QString::fromUtf8(bytes.data(), int(bytes.size()));
}

JsonValue JsonValue::member(std::string_view key) const
{
    if (!isObject())
        return {};
    const JsonTape& tape = *m_tape;
    const std::uint32_t end = std::uint32_t(word()) - 1;
    for (std::uint32_t place = m_place + 1; place != end; place = placeBehind(tape, place + 1)) {
        if (isSameKey(textOf(tape, place), key))
            return {m_tape, place + 1};
    }
    return {};
}

JsonValue JsonValue::first() const
{
    return isList() || isObject() ? JsonValue(m_tape, m_place + 1) : *this;
}

JsonValue JsonValue::end() const
{
    return isList() || isObject() ? JsonValue(m_tape, std::uint32_t(word()) - 1) : *this;
}

/// Goes down from the root: places grow in the order of the document.
QString JsonValue::path() const
{
    QString path;
    JsonValue container = m_tape ? root(*m_tape) : JsonValue();
    while (container.m_place < m_place) {
        const bool isObject = container.isObject();
        JsonValue each = container.first();
        int index = 0;
        JsonValue value = isObject ? each.next() : each;
        while (value.next().m_place <= m_place) {
            each = value.next();
            value = isObject ? each.next() : each;
            ++index;
        }
        path += QLatin1Char('/') + (isObject ? pointerToken(each.text()) : QString::number(index));
        container = value;
    }
    return path;
}

QString pointerToken(QString key)
{
    key.replace(QLatin1String("~"), QLatin1String("~0"));
    key.replace(QLatin1String("/"), QLatin1String("~1"));
    const QString printable = values::quoted(key);
    return printable.mid(1, printable.size() - 2);
}

} // namespace plc::project
