#include "host/iec/diagnostics.h"

namespace plc {
namespace iec {
namespace {

/// Shown of a line at most, and of that before the place.
constexpr int kShownCharacters = 100;
constexpr int kShownBefore = 60;

QString lineAt(const QString& text, int line)
{
    int start = 0;
    for (int number = 1; number < line; ++number) {
        const int end = int(text.indexOf(QLatin1Char('\n'), start));
        if (end < 0)
            return {};
        start = end + 1;
    }
    const int end = int(text.indexOf(QLatin1Char('\n'), start));
    QString found = text.mid(start, end < 0 ? -1 : end - start);
    if (found.endsWith(QLatin1Char('\r')))
        found.chop(1);
    return found;
}

/// Control characters would move the caret or do worse to a terminal.
QString printable(QString text)
{
    for (QChar& character : text) {
        if (!character.isPrint())
            character = QLatin1Char(' ');
    }
    return text;
}

} // namespace

void Diagnostics::error(const Position& position, const QString& text)
{
    if (isFull())
        return;
    m_list.append({Diagnostic::Error, position, text});
    ++m_errors;
}

void Diagnostics::warning(const Position& position, const QString& text)
{
    if (!isFull())
        m_list.append({Diagnostic::Warning, position, text});
}

QString placeText(const QVector<SourceFile>& files, const Position& position)
{
    return QStringLiteral("%1:%2").arg(files[position.file].name).arg(position.line);
}

QString diagnosticText(const QVector<SourceFile>& files, const Diagnostic& diagnostic)
{
    const Position& place = diagnostic.position;
    const QString line = lineAt(files[place.file].text, place.line);
    const int skipped = qMax(0, place.column - 1 - kShownBefore);
    const QString shown = printable(line.mid(skipped, kShownCharacters));
    const QString head =
        QStringLiteral("%1:%2: %3: %4")
            .arg(placeText(files, place))
            .arg(place.column)
            .arg(diagnostic.severity == Diagnostic::Error ? QStringLiteral("error")
                                                          : QStringLiteral("warning"),
                 diagnostic.text);
    return head + QLatin1Char('\n') + shown + QLatin1Char('\n') +
           QString(place.column - 1 - skipped, QLatin1Char(' ')) + QLatin1Char('^');
}

} // namespace iec
} // namespace plc
