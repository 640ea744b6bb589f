#ifndef PLC_CLI_KEY_READER_H
#define PLC_CLI_KEY_READER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

namespace plc::cli {

/// A key press: a character, or one of the named keys.
struct Key {
    enum Name { Character, Enter, Backspace, Escape, Up, Down, PageUp, PageDown, Home, End, Other };
    Name name = Other;
    QString text; ///< Of a character.
};

/// Keys from the bytes that one read() of a terminal gave. A terminal sends the bytes of one key
/// together, so that an escape byte alone is the key Esc.
QVector<Key> readKeys(const QByteArray& bytes);

/// Adds the key to what is being typed, or takes a character away. Returns whether it was a key
/// that ends the typing: Enter or Escape.
bool typeKey(const Key& key, QString* typed);

} // namespace plc::cli

#endif
