#ifndef PLC_EXCHANGE_FLAT_JSON_H
#define PLC_EXCHANGE_FLAT_JSON_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <optional>

#include "values/expected.h"
#include "values/value_text.h"

namespace plc::exchange {

/// A value or a list of values. Numbers are exact: an integer that does not fit into 64 bits, or a
/// fraction that no double holds, is an error of the text. Without values: null, or an empty list.
struct JsonItem {
    bool isList = false;
    QVector<values::Value> values;
};

struct JsonMember {
    QString key;
    JsonItem item;
};

/// JSON that comes from others: an item, or an object of items.
struct FlatJson {
    std::optional<JsonItem> item;
    QVector<JsonMember> members;

    /// Null if there is no such member.
    const JsonItem* member(const char* key) const;
    /// The text of a member; null if there is none, or if it is something else.
    const QString* text(const char* key) const;
};

/// Larger texts are refused unread.
constexpr int kMostBytesOfJson = 1024 * 1024;

/// Time and memory are bounded whatever `json` holds. A key that stands twice, or anything deeper
/// than described, is an error.
Expected<FlatJson> parseFlatJson(const QByteArray& json);

} // namespace plc::exchange

#endif
