#include "panel/http/target.h"

#include <algorithm>

namespace plc::panel {
namespace {

int hexDigit(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    const char small = char(digit | 0x20);
    return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

bool isControl(QChar character)
{
    return character.unicode() < 0x20 || character.unicode() == 0x7F;
}

std::optional<Query> parseQuery(const QByteArray& text)
{
    Query query;
    for (QByteArray item : text.split('&')) {
        if (item.isEmpty())
            continue;
        item.replace('+', ' ');
        const int equals = int(item.indexOf('='));
        const auto name = decodePercent(equals < 0 ? item : item.left(equals));
        const auto value = decodePercent(equals < 0 ? QByteArray() : item.mid(equals + 1));
        if (!name || !value)
            return std::nullopt;
        query.append(qMakePair(*name, *value));
    }
    return query;
}

} // namespace

std::optional<QString> decodePercent(const QByteArray& text)
{
    QByteArray bytes;
    bytes.reserve(text.size());
    for (int i = 0; i < int(text.size()); ++i) {
        if (text[i] != '%') {
            bytes += text[i];
            continue;
        }
        const int high = i + 2 < int(text.size()) ? hexDigit(text[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(text[i + 2]) : -1;
        if (low < 0)
            return std::nullopt;
        bytes += char(high << 4 | low);
        i += 2;
    }
    const QString decoded = QString::fromUtf8(bytes);
    // What is not UTF-8 does not come back as it was.
    if (decoded.toUtf8() != bytes || std::any_of(decoded.begin(), decoded.end(), isControl))
        return std::nullopt;
    return decoded;
}

std::optional<Target> parseTarget(const QByteArray& target)
{
    if (!target.startsWith('/') || target.contains(' '))
        return std::nullopt;
    const int mark = int(target.indexOf('?'));
    const QByteArray path = mark < 0 ? target : target.left(mark);
    Target parsed;
    for (const QByteArray& part : path.mid(1).split('/')) {
        const std::optional<QString> decoded = decodePercent(part);
        if (!decoded)
            return std::nullopt;
        parsed.parts += *decoded;
    }
    const std::optional<Query> query = parseQuery(mark < 0 ? QByteArray() : target.mid(mark + 1));
    if (!query)
        return std::nullopt;
    parsed.query = *query;
    return parsed;
}

} // namespace plc::panel
