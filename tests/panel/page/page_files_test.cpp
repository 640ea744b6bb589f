#include "panel/page/page_files.h"

#include <gmock/gmock.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QSet>

namespace plc::panel {
namespace {

const PageFile* findFile(const QString& path)
{
    for (const PageFile& file : pageFiles()) {
        if (file.path == path)
            return &file;
    }
    return nullptr;
}

bool isScript(const PageFile& file)
{
    return file.contentType.startsWith("text/javascript");
}

/// All that `expression` finds in the file, as what its first group holds.
QStringList found(const PageFile& file, const char* expression)
{
    QStringList texts;
    const QString text = QString::fromUtf8(file.bytes);
    QRegularExpressionMatchIterator matches =
        QRegularExpression(QString::fromLatin1(expression)).globalMatch(text);
    while (matches.hasNext())
        texts << matches.next().captured(1);
    return texts;
}

/// "/assets/state/rows.js" for "../state/rows.js" in "/assets/views/table.js".
QString resolved(const QString& importing, const QString& relative)
{
    QStringList parts = importing.split(QLatin1Char('/'));
    parts.removeLast();
    for (const QString& part : relative.split(QLatin1Char('/'))) {
        if (part == QLatin1String(".."))
            parts.removeLast();
        else if (part != QLatin1String("."))
            parts << part;
    }
    return parts.join(QLatin1Char('/'));
}

TEST(PageFiles, HaveAnAddressATypeAndATagOfTheirOwn)
{
    QSet<QString> paths;
    QSet<QByteArray> tags;
    for (const PageFile& file : pageFiles()) {
        EXPECT_TRUE(file.path == QLatin1String("/") ||
                    file.path.startsWith(QLatin1String("/assets/")))
            << qPrintable(file.path);
        EXPECT_FALSE(file.contentType.isEmpty()) << qPrintable(file.path);
        EXPECT_TRUE(file.etag.startsWith('"') && file.etag.endsWith('"')) << file.etag.constData();
        EXPECT_FALSE(file.bytes.isEmpty()) << qPrintable(file.path);
        EXPECT_TRUE(file.gzip.startsWith("\x1f\x8b")) << qPrintable(file.path);
        paths << file.path;
        tags << file.etag;
    }
    EXPECT_EQ(pageFiles().size(), int(paths.size()));
    EXPECT_EQ(pageFiles().size(), int(tags.size()));
}

TEST(PageFiles, HoldAtMost100KilobytesOfScriptWhenPacked)
{
    int size = 0;
    for (const PageFile& file : pageFiles())
        size += isScript(file) ? int(file.gzip.size()) : 0;
    RecordProperty("bytes", size);
    EXPECT_GT(size, 20000);
    EXPECT_LE(size, 100000);
}

TEST(PageFiles, HoldAllThatTheyAskFor)
{
    for (const PageFile& file : pageFiles()) {
        if (isScript(file)) {
            const QStringList imports = found(file, R"re((?:from|import)\s*\(?"(\.[^"]+)")re");
            for (const QString& import : imports)
                EXPECT_TRUE(findFile(resolved(file.path, import)))
                    << qPrintable(file.path) << " imports " << qPrintable(import);
        }
    }
    const PageFile* index = findFile(QStringLiteral("/"));
    ASSERT_TRUE(index);
    const QStringList asked = found(*index, R"re((?:href|src)="([^"]+)")re");
    EXPECT_GT(asked.size(), 3);
    for (const QString& path : asked)
        EXPECT_TRUE(findFile(path)) << qPrintable(path);
}

TEST(PageFiles, ImportNothingByTheNameOfAPackage)
{
    for (const PageFile& file : pageFiles()) {
        if (!isScript(file))
            continue;
        EXPECT_THAT(found(file, R"re(\bfrom\s*"([@a-z][\w@/-]*)")re"), testing::IsEmpty())
            << qPrintable(file.path);
    }
}

TEST(PageFiles, HoldNoScriptAndNoStyleThatThePolicyForbids)
{
    const PageFile* index = findFile(QStringLiteral("/"));
    ASSERT_TRUE(index);
    EXPECT_THAT(found(*index, R"re((<script(?![^>]*\bsrc=)))re"), testing::IsEmpty());
    EXPECT_THAT(found(*index, R"re((<style|\bstyle=|\bon[a-z]+=))re"), testing::IsEmpty());
    for (const PageFile& file : pageFiles()) {
        if (!isScript(file))
            continue;
        EXPECT_THAT(found(file, R"re((\beval\(|\bnew Function\())re"), testing::IsEmpty())
            << qPrintable(file.path);
    }
}

TEST(PageFiles, TellTheLicencesOfWhatThePageIsMadeWith)
{
    const PageFile* licences = findFile(QStringLiteral("/assets/licences.txt"));
    ASSERT_TRUE(licences);
    EXPECT_THAT(found(*licences, R"re((?:^|\n)((?:htm|preact|uplot) [0-9.]+ \([^)]+\))\n)re"),
                testing::ElementsAre(QStringLiteral("htm 3.1.1 (Apache-2.0)"),
                                     QStringLiteral("preact 11.2.0 (MIT)"),
                                     QStringLiteral("uplot 1.6.32 (MIT)")));
}

} // namespace
} // namespace plc::panel
