#include "host/project/repeated_key.h"

#include <QtCore/QSet>

#include <vector>

namespace plc {
namespace {

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

} // namespace

std::optional<RepeatedKey> findRepeatedKey(const QByteArray& json)
{
    std::vector<QSet<QByteArray>> openObjects;
    int position = 0;
    while (position < int(json.size())) {
        const char character = json[position];
        if (character == '{') {
            openObjects.emplace_back();
        } else if (character == '}' && !openObjects.empty()) {
            openObjects.pop_back();
        } else if (character == '"') {
            const int end = behindText(json, position);
            const QByteArray text = json.mid(position + 1, end - position - 2);
            if (isFollowedByColon(json, end) && !openObjects.empty()) {
                if (openObjects.back().contains(text))
                    return RepeatedKey{text, position};
                openObjects.back().insert(text);
            }
            position = end;
            continue;
        }
        ++position;
    }
    return {};
}

} // namespace plc
