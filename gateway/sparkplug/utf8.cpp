#include "gateway/sparkplug/utf8.h"

#include <cstring>

#include "values/visible_text.h"

namespace plc::gateway {

QByteArray utf8(const QString& text)
{
    QString whole = text;
    for (int i = 0; i < int(whole.size()); ++i) {
        if (values::isLoneSurrogate(whole, i))
            whole[i] = QChar(QChar::ReplacementCharacter);
    }
    return whole.toUtf8();
}

std::optional<QString> fromUtf8(const char* bytes, std::size_t size)
{
    // Qt puts something else in the place of what is wrong, and leaves out a byte order mark.
    const QString text = QString::fromUtf8(bytes, int(size));
    const QByteArray again = text.toUtf8();
    if (std::size_t(again.size()) != size || std::memcmp(again.constData(), bytes, size) != 0)
        return std::nullopt;
    return text;
}

} // namespace plc::gateway
