#include <gtest/gtest.h>

#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QMap>
#include <QtCore/QRegularExpression>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc::gateway {
namespace {

const QString kRoot = QStringLiteral(PLC_SOURCE_DIR "/");

QString contents(const QString& path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return QString::fromUtf8(file.readAll());
}

/// What stands behind each assertion in the table; it must be there once.
QMap<QString, QString> rows()
{
    static const QRegularExpression row(QStringLiteral("^\\| `(ID_[A-Z0-9_]+)` \\| (.*) \\|$"));
    QMap<QString, QString> found;
    for (const QString& line :
         contents(kRoot + QStringLiteral("docs/sparkplug.md")).split(QLatin1Char('\n'))) {
        const QRegularExpressionMatch match = row.match(line);
        if (!match.hasMatch())
            continue;
        EXPECT_FALSE(found.contains(match.captured(1))) << line.toStdString();
        found.insert(match.captured(1), match.captured(2));
    }
    return found;
}

QStringList namedTests(const QString& cell)
{
    static const QRegularExpression name(QStringLiteral("`([A-Za-z0-9]+\\.[A-Za-z0-9]+)`"));
    QStringList names;
    QRegularExpressionMatchIterator matches = name.globalMatch(cell);
    while (matches.hasNext())
        names.append(matches.next().captured(1));
    return names;
}

/// "Suite.Name" of all tests of the gateway.
QSet<QString> tests()
{
    static const QRegularExpression test(
        QStringLiteral("^TEST(?:_F|_P)?\\(([A-Za-z0-9]+),\\s*([A-Za-z0-9]+)\\)"),
        QRegularExpression::MultilineOption);
    QSet<QString> names;
    QDirIterator files(kRoot + QStringLiteral("tests/gateway"), {QStringLiteral("*_test.cpp")},
                       QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        QRegularExpressionMatchIterator matches = test.globalMatch(contents(files.next()));
        while (matches.hasNext()) {
            const QRegularExpressionMatch match = matches.next();
            names.insert(match.captured(1) + QLatin1Char('.') + match.captured(2));
        }
    }
    return names;
}

TEST(Conformance, EachAssertionHasARow)
{
    const QMap<QString, QString> table = rows();
    QStringList assertions =
        contents(kRoot + QStringLiteral("tests/gateway/conformance/assertions.txt"))
            .split(QLatin1Char('\n'));
    assertions.removeAll(QString());
    EXPECT_EQ(224, assertions.size());
    for (const QString& assertion : assertions)
        EXPECT_TRUE(table.contains(assertion)) << assertion.toStdString();
    EXPECT_EQ(assertions.size(), table.size());
}

TEST(Conformance, EachRowNamesTestsThatAreThereOrAReason)
{
    const QSet<QString> known = tests();
    const QMap<QString, QString> table = rows();
    for (auto row = table.begin(); row != table.end(); ++row) {
        const QStringList names = namedTests(row.value());
        const bool hasReason = row.value().startsWith(QString::fromUtf8("– "));
        EXPECT_NE(hasReason, !names.isEmpty()) << row.key().toStdString();
        for (const QString& name : names)
            EXPECT_TRUE(known.contains(name))
                << row.key().toStdString() << " " << name.toStdString();
    }
}

} // namespace
} // namespace plc::gateway
