#include "project/json_document.h"

#include <simdjson.h>

#include <QtCore/QJsonDocument>

#include <optional>

#include "project/json_tape_writer.h"
#include "project/repeated_key.h"
#include "values/nearest_name.h"

namespace plc::project {
namespace {

/// Containers within containers, as QJsonDocument bounds them.
constexpr std::size_t kDeepestNesting = 1024;

/// Line and column, both from 1, of the byte at `offset`.
QString position(const QByteArray& json, int offset)
{
    const QByteArray before = json.left(offset);
    const int line = int(before.count('\n')) + 1;
    const QByteArray lineStart = before.mid(before.lastIndexOf('\n') + 1);
    return QStringLiteral("line %1, column %2")
        .arg(line)
        .arg(QString::fromUtf8(lineStart).size() + 1);
}

Error repetition(const QByteArray& json, const RepeatedKey& repeated)
{
    return {QStringLiteral("%1: key %2 stands twice in one object")
                .arg(position(json, repeated.offset), values::quoted(repeated.name))};
}

/// Nothing where simdjson refuses the bytes. It reads beyond their end, where they must have room.
std::optional<simdjson::dom::document> readFast(const QByteArray& json)
{
    simdjson::dom::parser parser;
    simdjson::dom::document document;
    const std::size_t size = std::size_t(json.size());
    simdjson::dom::element root;
    if (parser.allocate(size, kDeepestNesting) != simdjson::SUCCESS ||
        parser.parse_into_document(document, json.constData(), size, false).get(root) !=
            simdjson::SUCCESS ||
        !(root.is_object() || root.is_array()))
        return {};
    return document;
}

} // namespace

struct JsonDocument::Content {
    explicit Content(simdjson::dom::document document) : parsed(std::move(document))
    {
        tape = {parsed.tape.get(), parsed.string_buf.get()};
    }
    explicit Content(const QJsonDocument& document) : written(JsonTapeWriter(document))
    {
        tape = written->tape();
    }

    simdjson::dom::document parsed;
    std::optional<JsonTapeWriter> written;
    JsonTape tape;
};

JsonDocument::JsonDocument(std::unique_ptr<Content> content) : m_content(std::move(content)) {}
JsonDocument::JsonDocument(JsonDocument&& other) noexcept = default;
JsonDocument& JsonDocument::operator=(JsonDocument&& other) noexcept = default;
JsonDocument::~JsonDocument() = default;

JsonValue JsonDocument::root() const
{
    return JsonValue::root(m_content->tape);
}

Expected<JsonDocument> JsonDocument::parse(QByteArray json)
{
    json.reserve(int(json.size() + qint64(simdjson::SIMDJSON_PADDING)));
    if (std::optional<simdjson::dom::document> parsed = readFast(json)) {
        JsonDocument document(std::make_unique<Content>(std::move(*parsed)));
        if (!hasRepeatedKey(document.root()))
            return document;
    }
    QJsonParseError syntax;
    const QJsonDocument document = QJsonDocument::fromJson(json, &syntax);
    if (syntax.error != QJsonParseError::NoError) {
        return Error{QStringLiteral("%1: not JSON: %2")
                         .arg(position(json, syntax.offset), syntax.errorString())};
    }
    if (const std::optional<RepeatedKey> repeated = findRepeatedKey(json))
        return repetition(json, *repeated);
    return JsonDocument(std::make_unique<Content>(document));
}

Expected<JsonDocument> JsonDocument::parseStrictly(QByteArray json)
{
    json.reserve(int(json.size() + qint64(simdjson::SIMDJSON_PADDING)));
    std::optional<simdjson::dom::document> parsed = readFast(json);
    if (!parsed)
        return Error{QStringLiteral("not JSON")};
    JsonDocument document(std::make_unique<Content>(std::move(*parsed)));
    if (hasRepeatedKey(document.root()))
        return Error{QStringLiteral("a key stands twice in one object")};
    return document;
}

} // namespace plc::project
