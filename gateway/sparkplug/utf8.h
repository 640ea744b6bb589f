#ifndef PLC_GATEWAY_SPARKPLUG_UTF8_H
#define PLC_GATEWAY_SPARKPLUG_UTF8_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <optional>

namespace plc::gateway {

/// `text` in UTF-8. In the place of half a character, for which UTF-8 has no form, U+FFFD stands.
QByteArray utf8(const QString& text);

/// The text of these bytes; nothing if they are no UTF-8, or if not all of them would be in the
/// text.
std::optional<QString> fromUtf8(const char* bytes, std::size_t size);

} // namespace plc::gateway

#endif
