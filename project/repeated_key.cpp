#include "project/repeated_key.h"

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSet>

#include <algorithm>
#include <string_view>
#include <vector>

namespace plc::project {
namespace {

/// Up to so many keys are compared with each other.
constexpr std::size_t kFewKeys = 12;

bool isRepeated(const std::vector<std::string_view>& keys, std::string_view key)
{
    return std::any_of(keys.begin(), keys.end(),
                       [key](std::string_view each) { return isSameKey(each, key); });
}

bool hasEqualNeighbours(std::vector<std::string_view>* keys)
{
    std::sort(keys->begin(), keys->end());
    return std::adjacent_find(keys->begin(), keys->end()) != keys->end();
}

/// Position behind the text that begins with the quote at `start`.
int behindText(const QByteArray& json, int start)
{
    int position = start + 1;
    while (position < int(json.size()) && json[position] != '"')
        position += json[position] == '\\' ? 2 : 1;
    return position + 1;
}

/// Whether the next token is the colon that makes a key of the text before it.
bool isFollowedByColon(const QByteArray& json, int position)
{
    while (position < int(json.size()) && QByteArray(" \t\r\n").contains(json[position]))
        ++position;
    return position < int(json.size()) && json[position] == ':';
}

/// The key that stands between these quotes. Escapes are read by whoever reads the document too, so
/// that keys are alike here when they are alike there.
QString decoded(const QByteArray& text)
{
    if (!text.contains('\\'))
        return QString::fromUtf8(text);
    return QJsonDocument::fromJson("[\"" + text + "\"]").array().at(0).toString();
}

} // namespace

bool hasRepeatedKey(const JsonValue& container)
{
    std::vector<JsonValue> waiting{container};
    std::vector<std::string_view> keys;
    while (!waiting.empty()) {
        const JsonValue current = waiting.back();
        waiting.pop_back();
        const bool isObject = current.isObject();
        const JsonValue end = current.end();
        keys.clear();
        for (JsonValue each = current.first(); each != end; each = each.next()) {
            if (isObject) {
                if (keys.size() < kFewKeys && isRepeated(keys, each.utf8()))
                    return true;
                keys.push_back(each.utf8());
                each = each.behindKey();
            }
            if (each.isObject() || each.isList())
                waiting.push_back(each);
        }
        if (keys.size() > kFewKeys && hasEqualNeighbours(&keys))
            return true;
    }
    return false;
}

std::optional<RepeatedKey> findRepeatedKey(const QByteArray& json)
{
    std::vector<QSet<QString>> openObjects;
    int position = 0;
    while (position < int(json.size())) {
        const char character = json[position];
        if (character == '{') {
            openObjects.emplace_back();
        } else if (character == '}' && !openObjects.empty()) {
            openObjects.pop_back();
        } else if (character == '"') {
            const int end = behindText(json, position);
            if (isFollowedByColon(json, end) && !openObjects.empty()) {
                const QString key = decoded(json.mid(position + 1, end - position - 2));
                if (openObjects.back().contains(key))
                    return RepeatedKey{key, position};
                openObjects.back().insert(key);
            }
            position = end;
            continue;
        }
        ++position;
    }
    return {};
}

} // namespace plc::project
