#include "iec/diagnostics.h"

#include <gtest/gtest.h>

namespace plc::iec {
namespace {

std::string shown(const QString& text, int line, int column,
                  Diagnostic::Severity severity = Diagnostic::Error)
{
    const QVector<SourceFile> files{{QStringLiteral("plant.st"), text}};
    return diagnosticText(
               files, {severity, {0, line, column}, QStringLiteral("what"), WarningKind::Layout})
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

/// Texts of these warnings, with the head alone of each.
std::vector<std::string> report(const std::vector<std::pair<WarningKind, int>>& warnings, bool all)
{
    const QVector<SourceFile> files{{QStringLiteral("a.st"), QStringLiteral("\nx\n")}};
    Diagnostics diagnostics;
    diagnostics.error({0, 2, 1}, QStringLiteral("wrong"));
    for (const auto& [kind, count] : warnings) {
        for (int i = 0; i < count; ++i)
            diagnostics.warning({0, 2, 1}, kind, QStringLiteral("w"));
    }
    std::vector<std::string> texts;
    for (const QString& text : diagnosticTexts(files, diagnostics, all))
        texts.push_back(text.toStdString());
    return texts;
}

constexpr char kInFull[] = "a.st:2:1: warning: w\nx\n^";
constexpr char kInOneLine[] = "a.st:2:1: warning: w";

TEST(DiagnosticTexts, CountWhatIsLeftOutByKindBehindTheFirst20)
{
    const std::vector<std::string> texts = report({{WarningKind::NoAddress, 18},
                                                   {WarningKind::ProcessAddress, 5},
                                                   {WarningKind::NoAddress, 2}},
                                                  false);
    ASSERT_EQ(1u + 20 + 2, texts.size());
    EXPECT_EQ("a.st:2:1: error: wrong\nx\n^", texts[0]);
    EXPECT_EQ(kInFull, texts[20]);
    EXPECT_EQ("2 more left out without an address; --all-warnings shows each", texts[21]);
    EXPECT_EQ("3 more left out at inputs and outputs; --all-warnings shows each", texts[22]);
}

TEST(DiagnosticTexts, NeverHideWhatChangesTheMeaning)
{
    for (const WarningKind kind : {WarningKind::Overlay, WarningKind::Layout,
                                   WarningKind::UnknownSize, WarningKind::SkippedPart}) {
        EXPECT_TRUE(changesMeaning(kind));
        const std::vector<std::string> texts =
            report({{WarningKind::NoAddress, 30}, {kind, 22}}, false);
        ASSERT_EQ(1u + 20 + 22 + 1, texts.size());
        EXPECT_EQ(kInFull, texts[1 + 20 + 19]);
        EXPECT_EQ(kInOneLine, texts[1 + 20 + 20]);
        EXPECT_EQ(kInOneLine, texts[1 + 20 + 21]);
        EXPECT_EQ("10 more left out without an address; --all-warnings shows each", texts.back());
    }
    for (const WarningKind kind : {WarningKind::NoAddress, WarningKind::ProcessAddress,
                                   WarningKind::OpenAddress, WarningKind::FunctionBlock})
        EXPECT_FALSE(changesMeaning(kind));
}

TEST(DiagnosticTexts, AreAllThereWhenAskedFor)
{
    const std::vector<std::string> texts =
        report({{WarningKind::FunctionBlock, 40}, {WarningKind::Overlay, 40}}, true);
    ASSERT_EQ(81u, texts.size());
    EXPECT_EQ(kInFull, texts.back());
    EXPECT_EQ(kInFull, texts[40]);
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
} // namespace plc::iec
