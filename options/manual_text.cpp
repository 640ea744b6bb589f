#include "options/manual_text.h"

#include "options/help_text.h"

namespace plc::options {
namespace {

/// Words that mdoc takes for itself at the beginning of a line or of an argument.
QString escaped(QString text)
{
    text.replace(QLatin1Char('\\'), QLatin1String("\\e"));
    return text.startsWith(QLatin1Char('.')) || text.startsWith(QLatin1Char('\''))
               ? QStringLiteral("\\&") + text
               : text;
}

bool isPlaceholder(const QString& text)
{
    for (const QChar character : text) {
        if (!character.isUpper() && character != QLatin1Char('.'))
            return false;
    }
    return !text.isEmpty();
}

QString marked(const QString& text, const QStringList& commands)
{
    if (text.startsWith(QLatin1String("--")))
        return QStringLiteral(".Fl ") + text.mid(1);
    if (commands.contains(text))
        return QStringLiteral(".Cm ") + text;
    if (isPlaceholder(text))
        return QStringLiteral(".Ar ") + text;
    return QStringLiteral(".Ql ") + escaped(text);
}

/// The punctuation that `text` begins with: mdoc sets it close to what stands before it.
QString takePunctuation(QString* text)
{
    int count = 0;
    while (count < int(text->size()) && QLatin1String(".,:;)").contains(text->at(count)))
        ++count;
    QString punctuation = text->left(count);
    text->remove(0, count);
    return punctuation;
}

/// mdoc ends a sentence at the end of a line: each begins on a line of its own.
QString sentences(const QString& text)
{
    return text.trimmed().replace(QLatin1String(". "), QLatin1String(".\n"));
}

QString header(const Option& option)
{
    QString line = QStringLiteral(".It Fl ");
    if (!option.letter().isEmpty())
        line += option.letter() + QStringLiteral(" , ");
    line += QLatin1Char('-') + option.name();
    if (option.hasValue())
        line += QStringLiteral(" Ar ") + option.placeholder();
    return line;
}

} // namespace

QString manualText(const QString& text, const QStringList& commands)
{
    QString result;
    const QStringList parts = text.split(QLatin1Char('`'));
    for (int i = 0; i < int(parts.size()); ++i) {
        if (i % 2 != 0) {
            result += marked(parts[i], commands);
            continue;
        }
        QString part = parts[i];
        if (i > 0) {
            for (const QChar mark : takePunctuation(&part))
                result += QLatin1Char(' ') + QString(mark);
            result += QLatin1Char('\n');
        }
        part = sentences(part);
        if (!part.isEmpty())
            result += escaped(part) + QLatin1Char('\n');
    }
    return result;
}

QString manualList(const Table& table, const QStringList& commands)
{
    QString text = QStringLiteral(".Bl -tag -width Ds\n");
    for (const Option& option : table) {
        const QString content =
            option.manual ? QString::fromUtf8(option.manual) : sentence(option.help);
        text += header(option) + QLatin1Char('\n') + manualText(content, commands);
    }
    return text + QStringLiteral(".El\n");
}

} // namespace plc::options
