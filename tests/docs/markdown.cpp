#include "markdown.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <stdexcept>

namespace plc::test {

namespace {

const QLatin1String kFence("```");

QString root()
{
    return QStringLiteral(PLC_SOURCE_DIR);
}

} // namespace

QStringList markdownFiles()
{
    QStringList files{QStringLiteral("README.md")};
    const QDir docs(root() + QStringLiteral("/docs"));
    for (const QString& name : docs.entryList({QStringLiteral("*.md")}, QDir::Files, QDir::Name))
        files << QStringLiteral("docs/") + name;
    return files;
}

QStringList linesOf(const QString& path)
{
    QFile file(root() + QLatin1Char('/') + path);
    if (!file.open(QIODevice::ReadOnly))
        throw std::runtime_error("cannot read " + path.toStdString());
    QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    if (lines.last().isEmpty())
        lines.removeLast();
    return lines;
}

std::vector<FencedBlock> fencedBlocks(const QString& file)
{
    std::vector<FencedBlock> blocks;
    bool inside = false;
    const QStringList lines = linesOf(file);
    for (int i = 0; i < int(lines.size()); ++i) {
        const QString& line = lines.at(i);
        if (!line.startsWith(kFence)) {
            if (inside)
                blocks.back().lines << line;
            continue;
        }
        inside = !inside;
        if (!inside)
            continue;
        FencedBlock block;
        block.file = file;
        block.line = i + 1;
        block.language = line.mid(kFence.size()).section(QLatin1Char(' '), 0, 0);
        block.name = line.section(QLatin1Char(' '), 1, 1);
        blocks.push_back(block);
    }
    return blocks;
}

std::vector<FencedBlock> allBlocks(const QString& language)
{
    std::vector<FencedBlock> found;
    for (const QString& file : markdownFiles()) {
        for (const FencedBlock& block : fencedBlocks(file)) {
            if (block.language == language)
                found.push_back(block);
        }
    }
    return found;
}

QStringList proseOf(const QString& file)
{
    QStringList prose;
    bool inside = false;
    for (const QString& line : linesOf(file)) {
        if (line.startsWith(kFence))
            inside = !inside;
        else if (!inside)
            prose << line;
    }
    return prose;
}

QString anchorOf(const QString& heading)
{
    QString anchor;
    for (const QChar character : heading.toLower()) {
        if (character == QLatin1Char(' '))
            anchor += QLatin1Char('-');
        else if (character.isLetterOrNumber() || character == QLatin1Char('-') ||
                 character == QLatin1Char('_'))
            anchor += character;
    }
    return anchor;
}

} // namespace plc::test
