#include "iec/diagnostics.h"

#include <map>

#include "values/visible_text.h"

namespace plc::iec {
namespace {

/// Shown of a line at most, and of that before the place.
constexpr int kShownCharacters = 100;
constexpr int kShownBefore = 60;

/// The lines of a file, whose starts are looked for once.
class Lines {
public:
    explicit Lines(const QString& text) : m_text(text)
    {
        for (int end = -1;;) {
            m_starts.append(end + 1);
            end = int(text.indexOf(QLatin1Char('\n'), end + 1));
            if (end < 0)
                break;
        }
    }

    QString at(int line) const
    {
        if (line > int(m_starts.size()))
            return {};
        const int start = m_starts[line - 1];
        const int end = line < int(m_starts.size()) ? m_starts[line] - 1 : int(m_text.size());
        QString found = m_text.mid(start, end - start);
        if (found.endsWith(QLatin1Char('\r')))
            found.chop(1);
        return found;
    }

private:
    const QString& m_text;
    QVector<int> m_starts;
};

/// Control characters would move the caret or do worse to a terminal.
QString printable(QString text)
{
    for (QChar& character : text) {
        if (!character.isPrint() || values::isObeyed(character.unicode()))
            character = QLatin1Char(' ');
    }
    return text;
}

QString headText(const QVector<SourceFile>& files, const Diagnostic& diagnostic)
{
    return values::visibleText(QStringLiteral("%1:%2: %3: %4")
                                   .arg(placeText(files, diagnostic.position))
                                   .arg(diagnostic.position.column)
                                   .arg(diagnostic.severity == Diagnostic::Error
                                            ? QStringLiteral("error")
                                            : QStringLiteral("warning"),
                                        diagnostic.text));
}

QString textWithLine(const QVector<SourceFile>& files, const Diagnostic& diagnostic,
                     const Lines& lines)
{
    const Position& place = diagnostic.position;
    const int skipped = qMax(0, place.column - 1 - kShownBefore);
    const QString shown = printable(lines.at(place.line).mid(skipped, kShownCharacters));
    return headText(files, diagnostic) + QLatin1Char('\n') + shown + QLatin1Char('\n') +
           QString(place.column - 1 - skipped, QLatin1Char(' ')) + QLatin1Char('^');
}

/// What those of a kind that are left out have in common, behind their number.
const char* kindText(WarningKind kind)
{
    switch (kind) {
        case WarningKind::NoAddress:
            return "left out without an address";
        case WarningKind::ProcessAddress:
            return "left out at inputs and outputs";
        case WarningKind::OpenAddress:
            return "left out at addresses that are left to the controller";
        case WarningKind::FunctionBlock:
            return "left out as function blocks or of unknown types";
        case WarningKind::UnknownSize:
        case WarningKind::Overlay:
        case WarningKind::Layout:
        case WarningKind::SkippedPart:
            break;
    }
    return "";
}

} // namespace

void Diagnostics::error(const Position& position, const QString& text)
{
    if (isFull())
        return;
    m_list.append({Diagnostic::Error, position, text, {}});
    ++m_errors;
}

bool changesMeaning(WarningKind kind)
{
    return *kindText(kind) == '\0';
}

void Diagnostics::warning(const Position& position, WarningKind kind, const QString& text)
{
    if (!isFull())
        m_list.append({Diagnostic::Warning, position, text, kind});
}

QString placeText(const QVector<SourceFile>& files, const Position& position)
{
    return QStringLiteral("%1:%2").arg(files[position.file].name).arg(position.line);
}

QString diagnosticText(const QVector<SourceFile>& files, const Diagnostic& diagnostic)
{
    return textWithLine(files, diagnostic, Lines(files[diagnostic.position.file].text));
}

QStringList diagnosticTexts(const QVector<SourceFile>& files, const Diagnostics& diagnostics,
                            bool all)
{
    std::map<int, Lines> lines; // By file.
    std::map<WarningKind, int> counts;
    std::map<WarningKind, int> hidden;
    QStringList texts;
    int plain = 0;
    for (const Diagnostic& diagnostic : diagnostics.list()) {
        const bool isWarning = diagnostic.severity == Diagnostic::Warning;
        const bool isPlain = isWarning && !changesMeaning(diagnostic.kind);
        const int before = !isWarning ? 0 : isPlain ? plain++ : counts[diagnostic.kind]++;
        if (all || before < kShownWarnings) {
            const int file = diagnostic.position.file;
            texts.append(textWithLine(files, diagnostic,
                                      lines.try_emplace(file, files[file].text).first->second));
        } else if (isPlain) {
            ++hidden[diagnostic.kind];
        } else {
            texts.append(headText(files, diagnostic));
        }
    }
    for (const auto& [kind, count] : hidden) {
        texts.append(QStringLiteral("%1 more %2; --all-warnings shows each")
                         .arg(count)
                         .arg(QLatin1String(kindText(kind))));
    }
    return texts;
}

} // namespace plc::iec
