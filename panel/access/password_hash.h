#ifndef PLC_PANEL_ACCESS_PASSWORD_HASH_H
#define PLC_PANEL_ACCESS_PASSWORD_HASH_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include "values/expected.h"

namespace plc::panel {

constexpr int kShortestPassword = 8;   // characters
constexpr int kLongestPassword = 1024; // bytes of UTF-8

/// What takes the time and memory that make guessing slow. The defaults are those that a small
/// processor bears for each login, and no less than what is held to be safe (19 MiB, two passes).
struct HashCost {
    unsigned long long passes = 2;
    std::size_t memory = std::size_t(19) * 1024 * 1024; ///< Bytes.
};

/// An error says what a password lacks.
Expected<void> checkPassword(const QString& password, const QString& user);
/// Argon2id with a salt of its own, as a text that tells its parameters ("$argon2id$v=19$m=…").
Expected<QByteArray> hashPassword(const QString& password, const HashCost& cost = {});
/// Takes as long whether it fits or not.
bool verifyPassword(const QByteArray& hash, const QString& password);

} // namespace plc::panel

#endif
