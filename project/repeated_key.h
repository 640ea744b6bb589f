#ifndef PLC_PROJECT_REPEATED_KEY_H
#define PLC_PROJECT_REPEATED_KEY_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace plc::project {

/// A key that stands for the second time in its object.
struct RepeatedKey {
    QString name; ///< As it is read: "speed" for "spee\u0064" too.
    int offset;   ///< Of its opening quote.
};

/// Finds the first repeated key of well-formed JSON. QJsonDocument keeps the last one of several
/// and says nothing, so that a value would be lost.
std::optional<RepeatedKey> findRepeatedKey(const QByteArray& json);

} // namespace plc::project

#endif
