#include "streams/input_file.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

namespace plc::streams {
namespace {

constexpr qint64 kMebibyte = qint64(1024) * 1024;

Error tooLarge(const QString& name, const InputFileKind& kind)
{
    QString text = QStringLiteral("%1: the file has more than %2 MiB")
                       .arg(name)
                       .arg(kind.mostBytes / kMebibyte);
    if (*kind.advice != '\0')
        text += QLatin1String("; ") + QLatin1String(kind.advice);
    return {text};
}

} // namespace

Expected<QByteArray> readInputFile(const QString& path, const InputFileKind& kind)
{
    const auto unreadable = [&path](const QFile& file) {
        return Error{QStringLiteral("%1: cannot be read: %2").arg(path, file.errorString())};
    };
    QFile file(path);
    if (QFileInfo(path).isDir())
        return Error{
            QStringLiteral("%1: is a folder, expected %2").arg(path, QLatin1String(kind.expected))};
    if (!file.open(QIODevice::ReadOnly))
        return unreadable(file);
    if (file.size() > kind.mostBytes)
        return tooLarge(path, kind);
    // Pipes and devices tell no size beforehand.
    QByteArray bytes = file.read(kind.mostBytes + 1);
    if (file.error() != QFileDevice::NoError)
        return unreadable(file);
    if (const Expected<void> isGood = checkInputSize(bytes, path, kind); !isGood)
        return isGood.error();
    return bytes;
}

Expected<void> checkInputSize(const QByteArray& bytes, const QString& name,
                              const InputFileKind& kind)
{
    if (bytes.size() > kind.mostBytes)
        return tooLarge(name, kind);
    return {};
}

} // namespace plc::streams
