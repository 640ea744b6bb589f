#include "options/document.h"

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <cstdio>

#include "options/completion_text.h"
#include "options/manual_text.h"

namespace plc::options {
namespace {

Expected<QString> readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("%1: %2").arg(path, file.errorString())};
    return QString::fromUtf8(file.readAll());
}

Expected<void> writeFile(const QString& path, const QString& text)
{
    QFile file(path);
    const QByteArray bytes = text.toUtf8();
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.flush())
        return Error{QStringLiteral("%1: %2").arg(path, file.errorString())};
    return {};
}

Expected<void> fill(const QString& from, const QString& to, const Sections& sections)
{
    const Expected<QString> text = readFile(from);
    if (!text)
        return text.error();
    const Expected<QString> filled = filledTemplate(*text, sections);
    if (!filled)
        return Error{QStringLiteral("%1: %2").arg(from, filled.error().text)};
    return writeFile(to, *filled);
}

} // namespace

Expected<QString> filledTemplate(const QString& text, const Sections& sections)
{
    static const QRegularExpression placeholder(QStringLiteral("^@([A-Z_]+)@$"));
    QStringList unused = sections.keys();
    QString filled;
    const QStringList lines = text.split(QLatin1Char('\n'));
    for (int i = 0; i < int(lines.size()); ++i) {
        const QString name = placeholder.match(lines[i]).captured(1);
        if (name.isEmpty()) {
            filled += lines[i];
            if (i + 1 < int(lines.size()))
                filled += QLatin1Char('\n');
            continue;
        }
        if (!sections.contains(name))
            return Error{QStringLiteral("there is no section %1").arg(name)};
        unused.removeAll(name);
        filled += sections.value(name);
    }
    if (!unused.isEmpty())
        return Error{QStringLiteral("the section %1 has no place").arg(unused.first())};
    return filled;
}

int writeDocument(int argc, char** argv, const QMap<QString, Sections>& kinds)
{
    const QString kind = argc == 4 ? QString::fromLocal8Bit(argv[1]) : QString();
    const Expected<void> isWritten =
        kinds.contains(kind)
            ? fill(QFile::decodeName(argv[2]), QFile::decodeName(argv[3]), kinds.value(kind))
            : Error{QStringLiteral("expected %1, a template, and the file to be made of it")
                        .arg(QStringList(kinds.keys()).join(QStringLiteral(" or ")))};
    if (isWritten)
        return 0;
    std::fprintf(stderr, "%s\n", qPrintable(isWritten.error().text));
    return 1;
}

int writeDocumentsOf(int argc, char** argv, const Table& table, const QStringList& commands)
{
    constexpr int kIndent = 8; // of the cases in the completion's template
    const QString names = QStringLiteral("    local options='%1'\n").arg(completionNames(table));
    return writeDocument(
        argc, argv,
        {{QStringLiteral("manual"), {{QStringLiteral("OPTIONS"), manualList(table, commands)}}},
         {QStringLiteral("completion"),
          {{QStringLiteral("VALUES"), completionCases(table, kIndent)},
           {QStringLiteral("OPTIONS"), names}}}});
}

} // namespace plc::options
