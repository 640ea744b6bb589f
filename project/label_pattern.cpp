#include "project/label_pattern.h"

namespace plc::project {
namespace {

const QLatin1Char kAnyCharacters('*');
const QLatin1Char kOneCharacter('?');

/// Places that the character at `index` takes: two beyond the first plane.
int widthAt(const QString& text, int index)
{
    const bool isPair = text[index].isHighSurrogate() && index + 1 < int(text.size()) &&
                        text[index + 1].isLowSurrogate();
    return isPair ? 2 : 1;
}

} // namespace

bool hasWildcard(const QString& text)
{
    return text.contains(kAnyCharacters) || text.contains(kOneCharacter);
}

LabelPattern::LabelPattern(const QString& pattern, Place place)
    : m_pattern(place == Place::Inside ? kAnyCharacters + pattern + kAnyCharacters : pattern)
{
    for (QChar& character : m_pattern)
        character = character.toCaseFolded();
}

/// Goes on from the last star with one character more for it wherever the rest does not fit; the
/// stars before it need not be tried again.
bool LabelPattern::matches(const QString& label) const
{
    const int length = int(label.size());
    const int end = int(m_pattern.size());
    int position = 0;
    int at = 0;
    int behindStar = -1;
    int retryFrom = 0;
    while (position < length) {
        if (at < end && m_pattern[at] == kAnyCharacters) {
            behindStar = ++at;
            retryFrom = position;
        } else if (at < end && m_pattern[at] == kOneCharacter) {
            position += widthAt(label, position);
            ++at;
        } else if (at < end && m_pattern[at] == label[position].toCaseFolded()) {
            ++position;
            ++at;
        } else if (behindStar >= 0) {
            retryFrom += widthAt(label, retryFrom);
            position = retryFrom;
            at = behindStar;
        } else {
            return false;
        }
    }
    while (at < end && m_pattern[at] == kAnyCharacters)
        ++at;
    return at == end;
}

} // namespace plc::project
