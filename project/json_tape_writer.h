#ifndef PLC_PROJECT_JSON_TAPE_WRITER_H
#define PLC_PROJECT_JSON_TAPE_WRITER_H

#include <QtCore/QJsonDocument>

#include <vector>

#include "project/json_value.h"

namespace plc::project {

/// Keeps a document that QJsonDocument has read as simdjson would keep it.
class JsonTapeWriter {
public:
    explicit JsonTapeWriter(const QJsonDocument& document);

    /// Valid as long as the writer.
    JsonTape tape() const { return {m_words.data(), m_texts.data()}; }

private:
    void write(const QJsonValue& value);
    void writeContainer(const QJsonValue& value);
    void writeNumber(double number);
    void writeText(const QString& text);
    void append(char tag, std::uint64_t payload) { m_words.push_back(word(tag, payload)); }
    static std::uint64_t word(char tag, std::uint64_t payload)
    {
        return std::uint64_t(std::uint8_t(tag)) << 56 | payload;
    }

    std::vector<std::uint64_t> m_words;
    std::vector<std::uint8_t> m_texts;
};

} // namespace plc::project

#endif
