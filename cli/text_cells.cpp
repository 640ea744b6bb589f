#include "cli/text_cells.h"

#include <QtCore/QVector>

#include "values/visible_text.h"

namespace plc::cli {
namespace {

constexpr QChar kEllipsis(0x2026);
/// The blocks from one eighth to eight eighths, and what stands for them in ASCII.
constexpr uint kLowestBlock = 0x2581;
constexpr char kAsciiBlocks[] = "_.:-=+*#";
constexpr uint kBlocks = sizeof(kAsciiBlocks) - 1;
constexpr uint kFirstBeyondAscii = 0x80;

struct Range {
    uint first;
    uint last;
};

constexpr Range kWideCharacters[] = {
    {0x1100, 0x115F}, {0x2E80, 0xA4CF}, {0xAC00, 0xD7A3},   {0xF900, 0xFAFF},   {0xFE30, 0xFE6F},
    {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}, {0x1F300, 0x1F64F}, {0x1F900, 0x1F9FF}, {0x20000, 0x3FFFD}};

int cellsOfCharacter(uint character)
{
    switch (QChar::category(character)) {
        case QChar::Mark_NonSpacing:
        case QChar::Mark_Enclosing:
        case QChar::Other_Format:
            return 0;
        default:
            break;
    }
    for (const Range& range : kWideCharacters) {
        if (character >= range.first && character <= range.last)
            return 2;
    }
    return 1;
}

int cellsOfCharacters(const QVector<uint>& characters)
{
    int cells = 0;
    for (uint character : characters)
        cells += cellsOfCharacter(character);
    return cells;
}

QVector<uint> shownCharacters(const QString& text)
{
    return values::visibleText(text).toUcs4();
}

QString textOf(const QVector<uint>& characters)
{
    QString text;
    for (uint character : characters) {
        if (QChar::requiresSurrogates(character)) {
            text += QChar(QChar::highSurrogate(character));
            text += QChar(QChar::lowSurrogate(character));
        } else {
            text += QChar(ushort(character));
        }
    }
    return text;
}

/// Number of the first characters that go into a line of this width: at least one.
int charactersInLine(const QVector<uint>& characters, int width)
{
    int count = 0;
    int cells = 0;
    for (; count < int(characters.size()); ++count) {
        cells += cellsOfCharacter(characters[count]);
        if (cells > width && count > 0)
            break;
    }
    return count;
}

QString blanks(int count)
{
    return QString(qMax(0, count), QLatin1Char(' '));
}

} // namespace

int cellsOf(const QString& text)
{
    return cellsOfCharacters(shownCharacters(text));
}

QString fitted(const QString& text, int width)
{
    QVector<uint> characters = shownCharacters(text);
    int cells = cellsOfCharacters(characters);
    if (cells <= width)
        return textOf(characters) + blanks(width - cells);
    if (width < 1)
        return QString();
    while (cells > width - 1)
        cells -= cellsOfCharacter(characters.takeLast());
    return textOf(characters) + kEllipsis + blanks(width - 1 - cells);
}

QString fittedTail(const QString& text, int width)
{
    QVector<uint> characters = shownCharacters(text);
    int cells = cellsOfCharacters(characters);
    if (cells <= width || width < 1)
        return fitted(text, width);
    while (cells > width - 1)
        cells -= cellsOfCharacter(characters.takeFirst());
    return kEllipsis + textOf(characters) + blanks(width - 1 - cells);
}

QString fittedRight(const QString& text, int width)
{
    return fitted(blanks(width - cellsOf(text)) + text, width);
}

QStringList wrapped(const QString& text, int width, Wrap wrap)
{
    QStringList lines;
    QVector<uint> rest = shownCharacters(text);
    do {
        int count = charactersInLine(rest, width);
        int skipped = 0;
        if (wrap == Wrap::AtBlanks && count < int(rest.size())) {
            const int blank = int(rest.lastIndexOf(uint(' '), count));
            count = blank > 0 ? blank : count;
            skipped = blank > 0 ? 1 : 0;
        }
        lines.append(textOf(rest.mid(0, count)));
        rest = rest.mid(count + skipped);
    } while (!rest.isEmpty());
    return lines;
}

QByteArray asciiCells(const QString& text)
{
    QByteArray bytes;
    for (uint character : text.toUcs4()) {
        if (character < kFirstBeyondAscii)
            bytes += char(character);
        else if (character == kEllipsis.unicode())
            bytes += '~';
        else if (character >= kLowestBlock && character < kLowestBlock + kBlocks)
            bytes += kAsciiBlocks[character - kLowestBlock];
        else
            bytes += QByteArray(cellsOfCharacter(character), '?');
    }
    return bytes;
}

bool localeIsUtf8()
{
    // The first one that is set counts.
    for (const char* name : {"LC_ALL", "LC_CTYPE", "LANG"}) {
        const QByteArray locale = qgetenv(name).toLower();
        if (!locale.isEmpty())
            return locale.contains("utf-8") || locale.contains("utf8");
    }
    return false;
}

} // namespace plc::cli
