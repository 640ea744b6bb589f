#ifndef PLC_PROJECT_JSON_DOCUMENT_H
#define PLC_PROJECT_JSON_DOCUMENT_H

#include <QtCore/QByteArray>

#include <memory>

#include "project/json_value.h"
#include "values/expected.h"

namespace plc::project {

/// A JSON document: an object or a list. Documents are parsed by simdjson, which takes less
/// time and memory than QJsonDocument. What simdjson refuses, QJsonDocument judges: it says
/// what is wrong and where, and it is the more generous one (control characters and halves of
/// surrogate pairs in texts, integers of more than 64 bits, "1." for 1).
class JsonDocument {
public:
    /// The error names line and column. A key that stands twice in one object is one: of the two
    /// values one would be lost. Bytes that are moved here are given back as soon as they are
    /// parsed.
    static Expected<JsonDocument> parse(QByteArray json);

    /// For what others send: nothing but JSON, and without the place of an error. Qt's parser,
    /// which would tell it, leaks memory with some malformed documents in Qt 5.
    static Expected<JsonDocument> parseStrictly(QByteArray json);

    JsonDocument(JsonDocument&& other) noexcept;
    JsonDocument& operator=(JsonDocument&& other) noexcept;
    ~JsonDocument();

    JsonValue root() const;

private:
    struct Content;
    explicit JsonDocument(std::unique_ptr<Content> content);

    std::unique_ptr<Content> m_content;
};

} // namespace plc::project

#endif
