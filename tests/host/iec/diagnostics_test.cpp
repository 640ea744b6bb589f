#include "host/iec/diagnostics.h"

#include <gtest/gtest.h>

namespace plc {
namespace iec {
namespace {

std::string shown(const QString& text, int line, int column,
                  Diagnostic::Severity severity = Diagnostic::Error)
{
    const QVector<SourceFile> files{{QStringLiteral("plant.st"), text}};
    return diagnosticText(files, {severity, {0, line, column}, QStringLiteral("what")})
        .toStdString();
}

TEST(DiagnosticText, ShowsTheLineWithACaretBelowThePlace)
{
    EXPECT_EQ("plant.st:2:5: error: what\n  a x INT;\n    ^",
              shown(QStringLiteral("VAR\r\n  a x INT;\r\nEND_VAR"), 2, 5));
    EXPECT_EQ("plant.st:1:1: warning: what\nVAR\n^",
              shown(QStringLiteral("VAR"), 1, 1, Diagnostic::Warning));
}

TEST(DiagnosticText, ShowsTheEndOfAFile)
{
    EXPECT_EQ("plant.st:2:1: error: what\n\n^", shown(QStringLiteral("VAR\n"), 2, 1));
}

TEST(DiagnosticText, ShowsTabsAndControlCharactersAsBlanks)
{
    EXPECT_EQ("plant.st:1:3: error: what\n  a b\n  ^", shown(QStringLiteral("\t\ta\x1b"
                                                                            "b"),
                                                             1, 3));
}

TEST(DiagnosticText, ShowsAPartOfALongLine)
{
    const QString line = QString(1000, QLatin1Char('(')) + QString(1000, QLatin1Char(')'));
    EXPECT_EQ("plant.st:1:1001: error: what\n" + std::string(60, '(') + std::string(40, ')') +
                  "\n" + std::string(60, ' ') + "^",
              shown(line, 1, 1001));
}

TEST(SourceDecoding, KnowsUtf8Utf16AndLatin1)
{
    EXPECT_EQ("Füll", decodeSource("F\xC3\xBCll").toStdString());
    EXPECT_EQ("Füll", decodeSource("\xEF\xBB\xBF"
                                   "F\xC3\xBCll")
                          .toStdString());
    EXPECT_EQ("Füll", decodeSource("F\xFCll").toStdString());
    EXPECT_EQ("Fü", decodeSource(QByteArray("\xFF\xFE"
                                            "F\0\xFC\0",
                                            6))
                        .toStdString());
    EXPECT_EQ("Fü", decodeSource(QByteArray("\xFE\xFF"
                                            "\0F\0\xFC"
                                            "x",
                                            7))
                        .toStdString());
    EXPECT_EQ("", decodeSource(QByteArray()).toStdString());
}

} // namespace
} // namespace iec
} // namespace plc
