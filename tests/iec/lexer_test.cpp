#include "iec/lexer.h"

#include <gmock/gmock.h>

namespace plc::iec {
namespace {

using testing::ElementsAre;

QVector<Token> tokensOf(const QString& text)
{
    const SourceFile source{QStringLiteral("test.st"), text};
    Lexer lexer(source, 0);
    QVector<Token> tokens;
    do {
        tokens.append(lexer.next());
    } while (tokens.last().kind != Token::End && tokens.last().kind != Token::Broken);
    return tokens;
}

/// The tokens as "kind text"; the end is left out.
std::vector<std::string> texts(const char* text)
{
    const char* const kinds[] = {"end", "name", "number", "literal", "address", "symbol", "broken"};
    std::vector<std::string> lines;
    for (const Token& token : tokensOf(QString::fromUtf8(text))) {
        if (token.kind != Token::End)
            lines.push_back(std::string(kinds[token.kind]) + " " + token.text.toStdString());
    }
    return lines;
}

TEST(Lexer, TakesADeclarationApart)
{
    EXPECT_THAT(texts("speed AT %MW1.100:INT:=-5;"),
                ElementsAre("name speed", "name AT", "address %MW1.100", "symbol :", "name INT",
                            "symbol :=", "symbol -", "number 5", "symbol ;"));
}

TEST(Lexer, TellsRangesFromFractions)
{
    EXPECT_THAT(texts("1..5"), ElementsAre("number 1", "symbol ..", "number 5"));
    EXPECT_THAT(texts("1.5..2"), ElementsAre("literal 1.5", "symbol ..", "number 2"));
    EXPECT_THAT(texts("a..b.c"),
                ElementsAre("name a", "symbol ..", "name b", "symbol .", "name c"));
    EXPECT_THAT(texts("1.0E-3 2e5 3E"),
                ElementsAre("literal 1.0E-3", "literal 2e5", "number 3", "name E"));
}

TEST(Lexer, KnowsLiteralsWithBaseAndType)
{
    EXPECT_THAT(texts("16#FF_00 2#1010 INT#5 UINT#16#0F INT#-7 REAL#1.5"),
                ElementsAre("number 16#FF_00", "number 2#1010", "number INT#5", "number UINT#16#0F",
                            "number INT#-7", "literal REAL#1.5"));
    EXPECT_THAT(texts("T#1h30m_5s BOOL#TRUE Colour#red"),
                ElementsAre("literal T#1h30m_5s", "literal BOOL#TRUE", "literal Colour#red"));
    EXPECT_THAT(texts("DT#2024-01-31-12:00:00.5;TIME#-1.5s)"),
                ElementsAre("literal DT#2024-01-31-12:00:00.5", "symbol ;", "literal TIME#-1.5s",
                            "symbol )"));
}

TEST(Lexer, TextsEndAtAQuoteThatIsNotEscaped)
{
    EXPECT_THAT(texts("'a''b'"), ElementsAre("literal 'a'", "literal 'b'"));
    EXPECT_THAT(texts("'it$'s; (* no *) // {no}';"),
                ElementsAre("literal 'it$'s; (* no *) // {no}'", "symbol ;"));
    EXPECT_THAT(texts("'$$';\"w'$\"x\""),
                ElementsAre("literal '$$'", "symbol ;", "literal \"w'$\"x\""));
}

TEST(Lexer, ATextWithoutAnEndEndsWithItsLine)
{
    const QVector<Token> tokens = tokensOf(QStringLiteral("a := 'b;\nc"));
    EXPECT_EQ(Token::Broken, tokens.last().kind);
    EXPECT_EQ(1, tokens.last().position.line);
    EXPECT_EQ(6, tokens.last().position.column);
    const SourceFile source{QString(), QStringLiteral("'$\nc")};
    Lexer lexer(source, 0);
    EXPECT_EQ(Token::Broken, lexer.next().kind);
    EXPECT_EQ("c", lexer.next().text.toStdString());
}

TEST(Lexer, CommentsNestAndPragmasDoNotCount)
{
    EXPECT_THAT(texts("a (* x (* y *) z *) b // c (* \n d /* e */ {attribute 'x'} f"),
                ElementsAre("name a", "name b", "name d", "name f"));
    EXPECT_THAT(texts("(**)(***)a"), ElementsAre("name a"));
}

TEST(Lexer, ACommentWithoutAnEndIsShownWhereItBegins)
{
    for (const char* text : {"a\n  (* b (* c *) d", "a\n  /* b", "a\n  { b"}) {
        const QVector<Token> tokens = tokensOf(QLatin1String(text));
        ASSERT_EQ(2, tokens.size()) << text;
        EXPECT_EQ(Token::Broken, tokens.last().kind);
        EXPECT_EQ(2, tokens.last().position.line);
        EXPECT_EQ(3, tokens.last().position.column);
    }
}

TEST(Lexer, TokensKnowTheirPlaceAndTheCommentsBeforeThem)
{
    const QVector<Token> tokens = tokensOf(QStringLiteral("a; // behind a\r\n(* over\n b *)\n\tb"));
    ASSERT_EQ(4, tokens.size());
    const Token& b = tokens[2];
    EXPECT_EQ(4, b.position.line);
    EXPECT_EQ(2, b.position.column);
    ASSERT_EQ(2, b.comments.size());
    EXPECT_FALSE(b.comments[0].standsFirst);
    EXPECT_EQ(1, b.comments[0].firstLine);
    EXPECT_EQ(" behind a", b.comments[0].text.trimmed().prepend(QLatin1Char(' ')).toStdString());
    EXPECT_TRUE(b.comments[1].standsFirst);
    EXPECT_EQ(2, b.comments[1].firstLine);
    EXPECT_EQ(3, b.comments[1].lastLine);
}

TEST(Lexer, LettersOfAllLanguagesMakeNames)
{
    EXPECT_THAT(texts("Füllstand_1 ось"), ElementsAre("name Füllstand_1", "name ось"));
}

TEST(Lexer, AnyCharactersComeToAnEnd)
{
    EXPECT_THAT(texts("@ ` \\ § %"),
                ElementsAre("symbol @", "symbol `", "symbol \\", "symbol §", "address %"));
    QString text;
    for (int code = 0; code < 0x300; ++code)
        text += QChar(code);
    EXPECT_NE(Token::Symbol, tokensOf(text).last().kind);
}

} // namespace
} // namespace plc::iec
