#include "iec/source_file.h"

#include <QtCore/QtEndian>

namespace plc::iec {
namespace {

const QChar kReplacementCharacter(0xFFFD);

QString decodeUtf16(const QByteArray& bytes, bool bigEndian)
{
    QString text;
    text.reserve(int(bytes.size()) / 2);
    for (int at = 2; at + 1 < int(bytes.size()); at += 2) {
        const char* unit = bytes.constData() + at;
        text.append(
            QChar(bigEndian ? qFromBigEndian<quint16>(unit) : qFromLittleEndian<quint16>(unit)));
    }
    return text;
}

} // namespace

QString decodeSource(const QByteArray& bytes)
{
    if (bytes.startsWith("\xFF\xFE"))
        return decodeUtf16(bytes, false);
    if (bytes.startsWith("\xFE\xFF"))
        return decodeUtf16(bytes, true);
    const QByteArray marked("\xEF\xBB\xBF");
    const QByteArray content = bytes.startsWith(marked) ? bytes.mid(marked.size()) : bytes;
    const QString text = QString::fromUtf8(content);
    const bool isBroken = text.contains(kReplacementCharacter) &&
                          !content.contains(QString(kReplacementCharacter).toUtf8());
    return isBroken ? QString::fromLatin1(content) : text;
}

} // namespace plc::iec
