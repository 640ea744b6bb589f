#include "cli/key_reader.h"

namespace plc::cli {
namespace {

constexpr char kEscapeByte = 0x1B;

struct KeySequence {
    const char* bytes; ///< Behind the escape byte.
    Key::Name name;
};

constexpr KeySequence kSequences[] = {
    {"[A", Key::Up},      {"[B", Key::Down},      {"OA", Key::Up},    {"OB", Key::Down},
    {"[5~", Key::PageUp}, {"[6~", Key::PageDown}, {"[H", Key::Home},  {"[F", Key::End},
    {"OH", Key::Home},    {"OF", Key::End},       {"[1~", Key::Home}, {"[4~", Key::End}};

/// Size of the escape sequence at `start`, without its escape byte: up to the byte that ends it.
int sequenceSize(const QByteArray& bytes, int start)
{
    int end = start;
    if (end < int(bytes.size()) && (bytes[end] == '[' || bytes[end] == 'O'))
        ++end;
    while (end < int(bytes.size()) && bytes[end] >= 0x20 && bytes[end] < 0x40)
        ++end;
    return qMin(int(bytes.size()), end + 1) - start;
}

Key sequenceKey(const QByteArray& sequence)
{
    for (const KeySequence& known : kSequences) {
        if (sequence == known.bytes)
            return {known.name, QString()};
    }
    return {Key::Other, QString()};
}

Key characterKey(QChar character)
{
    switch (character.unicode()) {
        case '\r':
        case '\n':
            return {Key::Enter, QString()};
        case 0x08:
        case 0x7F:
            return {Key::Backspace, QString()};
        default:
            break;
    }
    return character.unicode() < 0x20 ? Key{Key::Other, QString()}
                                      : Key{Key::Character, QString(character)};
}

} // namespace

QVector<Key> readKeys(const QByteArray& bytes)
{
    QVector<Key> keys;
    int position = 0;
    while (position < int(bytes.size())) {
        if (bytes[position] == kEscapeByte) {
            const int size = sequenceSize(bytes, position + 1);
            keys.append(size == 0 ? Key{Key::Escape, QString()}
                                  : sequenceKey(bytes.mid(position + 1, size)));
            position += 1 + size;
            continue;
        }
        int end = position;
        while (end < int(bytes.size()) && bytes[end] != kEscapeByte)
            ++end;
        for (const QChar character : QString::fromUtf8(bytes.mid(position, end - position)))
            keys.append(characterKey(character));
        position = end;
    }
    return keys;
}

bool typeKey(const Key& key, QString* typed)
{
    if (key.name == Key::Character)
        *typed += key.text;
    else if (key.name == Key::Backspace)
        typed->chop(1);
    return key.name == Key::Enter || key.name == Key::Escape;
}

} // namespace plc::cli
