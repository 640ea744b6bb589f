#ifndef PLC_TESTS_DOCS_MARKDOWN_H
#define PLC_TESTS_DOCS_MARKDOWN_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <vector>

namespace plc::test {

/// One fenced block of a Markdown file: "```hex read-request" has the language "hex" and the name
/// "read-request".
struct FencedBlock {
    QString file;
    int line = 0; ///< of the opening fence
    QString language;
    QString name;
    QStringList lines;
};

/// The Markdown files of the repository, by their paths from its root.
QStringList markdownFiles();

/// Lines of a file of the repository, without their ends.
QStringList linesOf(const QString& path);

std::vector<FencedBlock> fencedBlocks(const QString& file);

/// The fenced blocks of all Markdown files that are in this language.
std::vector<FencedBlock> allBlocks(const QString& language);

/// The lines of a file outside its fenced blocks.
QStringList proseOf(const QString& file);

/// Name under which a heading is linked to.
QString anchorOf(const QString& heading);

} // namespace plc::test

#endif
