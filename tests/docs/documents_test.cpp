#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QTemporaryFile>

#include <cstdlib>

#include "markdown.h"

using plc::test::allBlocks;
using plc::test::anchorOf;
using plc::test::FencedBlock;
using plc::test::fencedBlocks;
using plc::test::linesOf;
using plc::test::markdownFiles;
using plc::test::proseOf;

namespace {

std::string placeOf(const FencedBlock& block)
{
    return block.file.toStdString() + ":" + std::to_string(block.line);
}

QStringList exampleSources()
{
    return {QStringLiteral("docs/examples/entry_points.cpp"),
            QStringLiteral("docs/examples/host_front.cpp"),
            QStringLiteral("docs/examples/host_many.cpp"),
            QStringLiteral("docs/examples/host_poll.cpp"),
            QStringLiteral("docs/examples/host_qt.cpp"),
            QStringLiteral("docs/examples/load_driver.cpp"),
            QStringLiteral("docs/examples/load_driver.h"),
            QStringLiteral("docs/examples/minimal_host.cpp"),
            QStringLiteral("docs/examples/tcp_link.cpp")};
}

/// Where the lines stand in the file, one behind the other, from `from` on; -1 if they do not.
int positionOf(const QStringList& lines, const QStringList& source, int from)
{
    for (int i = from; i + int(lines.size()) <= int(source.size()); ++i) {
        if (source.mid(i, lines.size()) == lines)
            return i;
    }
    return -1;
}

/// Whether the paragraphs of a block stand in the file in this order. Between them the file may
/// have more, so that a block can show several functions.
bool isPartOf(const QStringList& block, const QStringList& source)
{
    int at = 0;
    const QStringList paragraphs = block.join(QLatin1Char('\n')).split(QStringLiteral("\n\n"));
    for (const QString& paragraph : paragraphs) {
        const QStringList lines = paragraph.split(QLatin1Char('\n'));
        at = positionOf(lines, source, at);
        if (at < 0)
            return false;
        at += int(lines.size());
    }
    return true;
}

/// Targets of the links to files of the repository and to headings in them.
QStringList linksOf(const QString& file)
{
    static const QRegularExpression link(QStringLiteral("\\]\\(([^)]*)\\)"));
    QStringList targets;
    QRegularExpressionMatchIterator match = link.globalMatch(proseOf(file).join(QLatin1Char('\n')));
    while (match.hasNext()) {
        const QString target = match.next().captured(1);
        if (!target.startsWith(QLatin1String("http")))
            targets << target;
    }
    return targets;
}

/// What stands in backticks and begins with a folder of the repository: `driver/exports.txt`.
QStringList pathsOf(const QString& file)
{
    static const QRegularExpression quoted(QStringLiteral("`([^`\\s]+/[^`\\s]*)`"));
    const QDir root(QStringLiteral(PLC_SOURCE_DIR));
    // What a build makes is not there yet.
    const QString built = QStringLiteral("build");
    QStringList paths;
    QRegularExpressionMatchIterator match =
        quoted.globalMatch(proseOf(file).join(QLatin1Char('\n')));
    while (match.hasNext()) {
        const QString path = match.next().captured(1);
        const QString folder = path.section(QLatin1Char('/'), 0, 0);
        if (!folder.isEmpty() && folder != built && root.exists(folder))
            paths << path;
    }
    return paths;
}

/// A file, a folder, or the two files of one concept, which go by their name without a suffix.
bool standsThere(const QString& path)
{
    const QString place = QStringLiteral(PLC_SOURCE_DIR "/") + path;
    for (const char* suffix : {"", ".h", ".cpp"}) {
        if (QFileInfo::exists(place + QLatin1String(suffix)))
            return true;
    }
    return false;
}

QSet<QString> anchorsOf(const QString& file)
{
    QSet<QString> anchors;
    for (const QString& line : proseOf(file)) {
        if (line.startsWith(QLatin1Char('#')))
            anchors.insert(anchorOf(line.section(QLatin1Char(' '), 1)));
    }
    return anchors;
}

bool leadsSomewhere(const QString& file, const QString& target)
{
    const QString path = target.section(QLatin1Char('#'), 0, 0);
    const QString anchor = target.section(QLatin1Char('#'), 1);
    const QString linked =
        path.isEmpty() ? file : QDir::cleanPath(QFileInfo(file).path() + QLatin1Char('/') + path);
    if (!QFileInfo::exists(QStringLiteral(PLC_SOURCE_DIR "/") + linked))
        return false;
    return anchor.isEmpty() || anchorsOf(linked).contains(anchor);
}

} // namespace

TEST(Documents, EveryCodeBlockIsPartOfACompiledExample)
{
    const std::vector<FencedBlock> blocks = allBlocks(QStringLiteral("cpp"));
    ASSERT_FALSE(blocks.empty());
    for (const FencedBlock& block : blocks) {
        bool found = false;
        for (const QString& source : exampleSources())
            found = found || isPartOf(block.lines, linesOf(source));
        EXPECT_TRUE(found) << placeOf(block) << ": no file of docs/examples/ holds this code";
    }
}

TEST(Documents, ReadmeShowsTheWholeMinimalHost)
{
    const std::vector<FencedBlock> blocks = fencedBlocks(QStringLiteral("README.md"));
    bool shown = false;
    for (const FencedBlock& block : blocks)
        shown = shown || block.lines == linesOf(QStringLiteral("docs/examples/minimal_host.cpp"));
    EXPECT_TRUE(shown);
}

TEST(Documents, CodeBlocksGoByOneName)
{
    const QSet<QString> otherNames{QStringLiteral("c++"), QStringLiteral("C++"),
                                   QStringLiteral("cc"), QStringLiteral("cxx"),
                                   QStringLiteral("c")};
    for (const QString& file : markdownFiles()) {
        for (const FencedBlock& block : fencedBlocks(file))
            EXPECT_FALSE(otherNames.contains(block.language))
                << placeOf(block) << ": a block that is not \"cpp\" is not compiled";
    }
}

TEST(Documents, NoCodeIsIndentedInPlaceOfAFence)
{
    const QRegularExpression code(QStringLiteral("^(?: {4,}|\\t).*[;{]$"));
    for (const QString& file : markdownFiles()) {
        for (const QString& line : proseOf(file))
            EXPECT_FALSE(code.match(line).hasMatch())
                << file.toStdString() << ": " << line.toStdString();
    }
}

TEST(Documents, EveryLinkLeadsSomewhere)
{
    int links = 0;
    for (const QString& file : markdownFiles()) {
        for (const QString& target : linksOf(file)) {
            ++links;
            EXPECT_TRUE(leadsSomewhere(file, target))
                << file.toStdString() << ": " << target.toStdString();
        }
    }
    EXPECT_GT(links, 20);
}

TEST(Documents, EveryPathThatTheyNameIsThere)
{
    int paths = 0;
    for (const QString& file : markdownFiles()) {
        for (const QString& path : pathsOf(file)) {
            ++paths;
            EXPECT_TRUE(standsThere(path)) << file.toStdString() << ": " << path.toStdString();
        }
    }
    EXPECT_GT(paths, 20);
}

TEST(HostGuide, DescribesEveryEntryPointInTheSameForm)
{
    const QStringList exports = linesOf(QStringLiteral("driver/exports.txt"));
    const int first = int(exports.indexOf(QStringLiteral("# host entry points"))) + 1;
    ASSERT_GT(first, 0);
    const QStringList guide = linesOf(QStringLiteral("docs/host-guide.md"));
    int entryPoints = 0;
    for (int i = first; i < int(exports.size()) && !exports.at(i).isEmpty(); ++i, ++entryPoints) {
        const QString& name = exports.at(i);
        const int start = int(guide.indexOf(QStringLiteral("### ") + name));
        ASSERT_GE(start, 0) << name.toStdString();
        QString section;
        for (int k = start + 1;
             k < int(guide.size()) && !guide.at(k).startsWith(QLatin1String("##")); ++k)
            section += guide.at(k) + QLatin1Char('\n');
        for (const char* part : {"**Result", "rrors", "hreads", "**Example:**"})
            EXPECT_TRUE(section.contains(QLatin1String(part)))
                << name.toStdString() << " lacks " << part;
        EXPECT_TRUE(section.contains(name + QLatin1Char('('))) << name.toStdString();
    }
    EXPECT_EQ(16, entryPoints);
}

TEST(HostGuide, NamesEveryNumberOfTheHeaderWithItsValue)
{
    const QRegularExpression constant(QStringLiteral("^const int (PLC_\\w+) = ([^;]+);"));
    const QRegularExpression row(QStringLiteral("^\\| `(PLC_\\w+)` \\| ([^|]+) \\|"));
    QStringList inHeader;
    QStringList inGuide;
    for (const QString& line : linesOf(QStringLiteral("driver/plc_driver.h"))) {
        const QRegularExpressionMatch match = constant.match(line);
        if (match.hasMatch())
            inHeader << match.captured(1) + QStringLiteral(" = ") + match.captured(2);
    }
    for (const QString& line : linesOf(QStringLiteral("docs/host-guide.md"))) {
        const QRegularExpressionMatch match = row.match(line);
        if (match.hasMatch())
            inGuide << match.captured(1) + QStringLiteral(" = ") + match.captured(2);
    }
    inHeader.sort();
    inGuide.sort();
    EXPECT_GT(inHeader.size(), 50);
    EXPECT_EQ(inHeader, inGuide);
}

TEST(HostGuide, DescribesEveryMemberOfEveryRecord)
{
    const QString guide = linesOf(QStringLiteral("docs/host-guide.md")).join(QLatin1Char('\n'));
    const QRegularExpression record(QStringLiteral("^struct (\\w+) \\{$"));
    const QRegularExpression member(QStringLiteral("^    [\\w<>]+ (\\w+)( = 0)?;"));
    QString section;
    int members = 0;
    for (const QString& line : linesOf(QStringLiteral("driver/plc_driver.h"))) {
        const QRegularExpressionMatch recordMatch = record.match(line);
        if (recordMatch.hasMatch()) {
            const QString heading =
                QStringLiteral("\n### ") + recordMatch.captured(1) + QLatin1Char('\n');
            ASSERT_TRUE(guide.contains(heading)) << recordMatch.captured(1).toStdString();
            section = guide.section(heading, 1).section(QStringLiteral("\n##"), 0, 0);
        }
        const QRegularExpressionMatch memberMatch = member.match(line);
        if (!memberMatch.hasMatch())
            continue;
        const QString name = memberMatch.captured(1);
        ++members;
        if (name == QLatin1String("hostWord1") || name == QLatin1String("hostWord2"))
            continue; // "hostWord0 … hostWord3" stands for them
        EXPECT_TRUE(section.contains(QLatin1Char('`') + name + QLatin1Char('`')))
            << name.toStdString();
    }
    EXPECT_EQ(15 + 9 + 4 + 19 + 13 + 5, members);
}

/// Loaded where no user of a service exists, as on a machine that has just started. nft looks at
/// them for those alone who may load them.
TEST(Security, RulesOfTheFirewallLoad)
{
    if (std::system("nft list tables > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "nft is not here, or not for this user";
    const std::vector<FencedBlock> blocks = allBlocks(QStringLiteral("nft"));
    ASSERT_EQ(1U, blocks.size());
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(blocks[0].lines.join(QLatin1Char('\n')).toUtf8() + '\n');
    ASSERT_TRUE(file.flush());
    EXPECT_EQ(0, std::system(("nft --check --file " + file.fileName().toStdString()).c_str()));
}
