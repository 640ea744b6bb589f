#include "values/visible_text.h"

namespace plc::values {
namespace {

struct Range {
    ushort first;
    ushort last;
};

constexpr Range kObeyed[] = {
    {0x0000, 0x001F}, // C0 controls, line ends among them
    {0x007F, 0x009F}, // DEL and C1 controls, which begin sequences as ESC does
    {0x061C, 0x061C}, // marks, embeddings, overrides and isolates of direction
    {0x200E, 0x200F}, {0x202A, 0x202E},
    {0x2066, 0x2069}, {0x2028, 0x2029}, // separators of lines and paragraphs
};

bool needsEscape(const QString& text, int position)
{
    return isObeyed(text[position].unicode()) || isLoneSurrogate(text, position);
}

} // namespace

bool isObeyed(ushort unit)
{
    for (const Range& range : kObeyed) {
        if (unit >= range.first && unit <= range.last)
            return true;
    }
    return false;
}

bool isLoneSurrogate(const QString& text, int position)
{
    const QChar unit = text[position];
    if (unit.isHighSurrogate())
        return position + 1 >= int(text.size()) || !text[position + 1].isLowSurrogate();
    return unit.isLowSurrogate() && (position == 0 || !text[position - 1].isHighSurrogate());
}

QString visibleText(const QString& text)
{
    int position = 0;
    while (position < int(text.size()) && !needsEscape(text, position))
        ++position;
    if (position == int(text.size()))
        return text;
    QString visible = text.left(position);
    for (; position < int(text.size()); ++position) {
        if (needsEscape(text, position))
            visible += QStringLiteral("\\u%1").arg(uint(text[position].unicode()), 4, 16,
                                                   QLatin1Char('0'));
        else
            visible += text[position];
    }
    return visible;
}

} // namespace plc::values
