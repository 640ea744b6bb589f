#ifndef PLC_PROJECT_REPEATED_KEY_H
#define PLC_PROJECT_REPEATED_KEY_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

#include "project/json_value.h"

namespace plc::project {

/// A key that stands for the second time in its object.
struct RepeatedKey {
    QString name; ///< As it is read: "speed" for "spee\u0064" too.
    int offset;   ///< Of its opening quote.
};

/// Whether any object in the container has a key twice.
bool hasRepeatedKey(const JsonValue& container);

/// Finds the first repeated key of well-formed JSON by the text itself, to tell where it stands.
std::optional<RepeatedKey> findRepeatedKey(const QByteArray& json);

} // namespace plc::project

#endif
