#include "project/json_tape_writer.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <cstring>

namespace plc::project {
namespace {

/// UTF-8, in which halves of surrogate pairs take three bytes as any character of their size does.
QByteArray encoded(const QString& text)
{
    QByteArray bytes;
    for (int i = 0; i < int(text.size()); ++i) {
        const QChar character = text[i];
        const bool isPair =
            character.isHighSurrogate() && i + 1 < int(text.size()) && text[i + 1].isLowSurrogate();
        if (isPair || !character.isSurrogate()) {
            bytes += text.mid(i, isPair ? 2 : 1).toUtf8();
            i += isPair ? 1 : 0;
            continue;
        }
        bytes += '\xed';
        bytes += char(0x80 | (character.unicode() >> 6 & 0x3f));
        bytes += char(0x80 | (character.unicode() & 0x3f));
    }
    return bytes;
}

} // namespace

JsonTapeWriter::JsonTapeWriter(const QJsonDocument& document)
{
    append('r', 0);
    write(document.isObject() ? QJsonValue(document.object()) : QJsonValue(document.array()));
    m_words[0] = word('r', m_words.size() + 1);
    append('r', 0);
}

void JsonTapeWriter::write(const QJsonValue& value)
{
    switch (value.type()) {
        case QJsonValue::Object:
        case QJsonValue::Array:
            return writeContainer(value);
        case QJsonValue::String:
            return writeText(value.toString());
        case QJsonValue::Double:
            return writeNumber(value.toDouble());
        case QJsonValue::Bool:
            return append(value.toBool() ? 't' : 'f', 0);
        case QJsonValue::Null:
        case QJsonValue::Undefined:
            break;
    }
    append('n', 0);
}

void JsonTapeWriter::writeContainer(const QJsonValue& value)
{
    const std::size_t start = m_words.size();
    append(value.isObject() ? '{' : '[', 0);
    const QJsonObject object = value.toObject();
    for (auto member = object.begin(); member != object.end(); ++member) {
        writeText(member.key());
        write(member.value());
    }
    const QJsonArray list = value.toArray();
    for (const QJsonValue& element : list)
        write(element);
    append(value.isObject() ? '}' : ']', start);
    m_words[start] = word(value.isObject() ? '{' : '[', m_words.size());
}

void JsonTapeWriter::writeNumber(double number)
{
    std::uint64_t bits = 0;
    std::memcpy(&bits, &number, sizeof number);
    append('d', 0);
    m_words.push_back(bits);
}

void JsonTapeWriter::writeText(const QString& text)
{
    append('"', m_texts.size());
    const QByteArray bytes = encoded(text);
    const std::uint32_t length = std::uint32_t(bytes.size());
    const auto* lengthBytes = reinterpret_cast<const std::uint8_t*>(&length);
    m_texts.insert(m_texts.end(), lengthBytes, lengthBytes + sizeof length);
    m_texts.insert(m_texts.end(), bytes.begin(), bytes.end());
}

} // namespace plc::project
