// What docs/host-library.md promises to keep, beside what is installed.

#include <gtest/gtest.h>

#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>

#include "markdown.h"

using plc::test::fencedBlocks;
using plc::test::linesOf;
using plc::test::proseOf;

namespace {

const char kGuide[] = "docs/host-library.md";

/// Each name of the table with its header; functions without their parentheses.
QMap<QString, QString> promisedNames()
{
    const QRegularExpression row(QStringLiteral("^\\| [^|]+ \\| `([^`]+\\.h)` \\| (.+) \\|$"));
    const QRegularExpression quoted(QStringLiteral("`(\\w+)(?:\\(\\))?`"));
    QMap<QString, QString> names;
    for (const QString& line : proseOf(QString::fromLatin1(kGuide))) {
        const QRegularExpressionMatch match = row.match(line);
        QRegularExpressionMatchIterator name = quoted.globalMatch(match.captured(2));
        while (name.hasNext())
            names.insert(name.next().captured(1), match.captured(1));
    }
    return names;
}

QStringList installedHeaders()
{
    return linesOf(QStringLiteral("host/installed_headers.txt")) +
           linesOf(QStringLiteral("host/tcp/installed_headers.txt"));
}

/// Whether a header declares a class, a type or a function of this name.
bool declares(const QString& header, const QString& name)
{
    const QRegularExpression declaration(
        QStringLiteral("(?:^(?:class|struct|enum class|using) (?:\\[\\[nodiscard\\]\\] )?"
                       "(?:PLC_HOST_EXPORT )?%1\\b)|(?:\\b%1\\()")
            .arg(name),
        QRegularExpression::MultilineOption);
    return declaration.match(linesOf(header).join(QLatin1Char('\n'))).hasMatch();
}

/// What the code says of the library's namespaces: host::Runtime, project::SymbolBuilder.
QSet<QString> namesIn(const QStringList& code)
{
    const QRegularExpression qualified(QStringLiteral("\\b(?:host|project|values|plc)::(\\w+)"));
    QSet<QString> names;
    QRegularExpressionMatchIterator match = qualified.globalMatch(code.join(QLatin1Char('\n')));
    while (match.hasNext())
        names.insert(match.next().captured(1));
    return names;
}

/// Classes of installed headers that the text names in backticks.
QSet<QString> classesInText()
{
    const QRegularExpression quoted(QStringLiteral("`([A-Z]\\w+)(?:::[^`]*)?`"));
    QSet<QString> names;
    QRegularExpressionMatchIterator match =
        quoted.globalMatch(proseOf(QString::fromLatin1(kGuide)).join(QLatin1Char('\n')));
    while (match.hasNext())
        names.insert(match.next().captured(1));
    return names;
}

} // namespace

TEST(HostLibraryGuide, PromisesWhatIsInstalled)
{
    const QMap<QString, QString> promised = promisedNames();
    EXPECT_GT(promised.size(), 20);
    const QStringList installed = installedHeaders();
    for (auto name = promised.begin(); name != promised.end(); ++name) {
        EXPECT_TRUE(installed.contains(name.value())) << name.value().toStdString();
        EXPECT_TRUE(declares(name.value(), name.key()))
            << name.value().toStdString() << " has no " << name.key().toStdString();
    }
}

TEST(HostLibraryGuide, PromisesAllThatItsExamplesUse)
{
    const QMap<QString, QString> promised = promisedNames();
    QStringList code;
    for (const char* example : {"front", "many", "poll", "qt"})
        code += linesOf(QStringLiteral("docs/examples/host_%1.cpp").arg(QLatin1String(example)));
    const QSet<QString> used = namesIn(code);
    EXPECT_TRUE(used.contains(QStringLiteral("Runtime")));
    for (const QString& name : used)
        EXPECT_TRUE(promised.contains(name)) << name.toStdString();
}

TEST(HostLibraryGuide, PromisesAllClassesThatItsTextNames)
{
    const QMap<QString, QString> promised = promisedNames();
    const QStringList installed = installedHeaders();
    for (const QString& name : classesInText()) {
        if (promised.contains(name))
            continue;
        for (const QString& header : installed) {
            EXPECT_TRUE(header == QLatin1String("driver/plc_driver.h") || !declares(header, name))
                << name.toStdString() << " of " << header.toStdString() << " is not in the table";
        }
    }
}
