#include "iec/lexer.h"

namespace plc::iec {
namespace {

bool isDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

bool startsName(QChar character)
{
    return character.isLetter() || character == QLatin1Char('_');
}

bool isNamePart(QChar character)
{
    return startsName(character) || isDigit(character);
}

bool isSign(QChar character)
{
    return character == QLatin1Char('-') || character == QLatin1Char('+');
}

/// Whether literals with this prefix are durations or dates, in which - : and . may stand.
bool isTimePrefix(const QString& prefix)
{
    static constexpr const char* kPrefixes[] = {"T",
                                                "TIME",
                                                "LTIME",
                                                "D",
                                                "DATE",
                                                "LDATE",
                                                "TOD",
                                                "LT",
                                                "TIME_OF_DAY",
                                                "LTOD",
                                                "DT",
                                                "LDT",
                                                "DATE_AND_TIME",
                                                "LD",
                                                "LTIME_OF_DAY",
                                                "LDATE_AND_TIME"};
    for (const char* known : kPrefixes) {
        if (prefix.compare(QLatin1String(known), Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

} // namespace

/// A zero character stands behind the end.
QChar Lexer::peek(int ahead) const
{
    return m_at + ahead < int(m_text.size()) ? m_text[m_at + ahead] : QChar();
}

void Lexer::advance(int count)
{
    for (int i = 0; i < count && m_at < int(m_text.size()); ++i, ++m_at) {
        if (m_text[m_at] == QLatin1Char('\n')) {
            ++m_place.line;
            m_place.column = 1;
        } else {
            ++m_place.column;
        }
    }
}

template <typename Predicate>
void Lexer::skipWhile(Predicate belongs)
{
    while (m_at < int(m_text.size()) && belongs(peek()))
        advance(1);
}

bool Lexer::skipBlanks()
{
    const int start = m_at;
    skipWhile([](QChar character) { return character.isSpace(); });
    return m_at != start;
}

void Lexer::addComment(int firstLine, const QString& text, Token* token) const
{
    token->comments.append({firstLine, m_place.line, m_lastTokenLine != firstLine, text});
}

/// Skips a comment or a pragma, if one stands here. One without an end becomes the token.
bool Lexer::skipComment(Token* token)
{
    if (peek() == QLatin1Char('/') && peek(1) == QLatin1Char('/')) {
        const int start = m_at;
        skipWhile([](QChar character) { return character != QLatin1Char('\n'); });
        addComment(m_place.line, m_text.mid(start + 2, m_at - start - 2), token);
        return true;
    }
    return skipBlock("(*", "*)", true, token) || skipBlock("/*", "*/", true, token) ||
           skipBlock("{", "}", false, token);
}

bool Lexer::skipBlock(const char* opening, const char* closing, bool nests, Token* token)
{
    const auto stands = [this](const char* sign) {
        for (int i = 0; sign[i] != '\0'; ++i) {
            if (peek(i) != QLatin1Char(sign[i]))
                return false;
        }
        return true;
    };
    if (!stands(opening))
        return false;
    const Position start = m_place;
    const int size = int(qstrlen(opening));
    const int contents = m_at + size;
    advance(size);
    for (int depth = 1; depth > 0;) {
        if (m_at >= int(m_text.size())) {
            token->kind = Token::Broken;
            token->position = start;
            token->text = nests ? QStringLiteral("a comment") : QStringLiteral("a pragma");
            return true;
        }
        if (stands(closing)) {
            advance(size);
            --depth;
        } else if (nests && stands(opening)) {
            advance(size);
            ++depth;
        } else {
            advance(1);
        }
    }
    const QString inside = m_text.mid(contents, m_at - size - contents);
    addComment(start.line, nests ? inside : QString(), token);
    if (!nests)
        token->pragmas.append({start, inside});
    return true;
}

Token Lexer::next()
{
    Token token;
    while (skipBlanks() || skipComment(&token)) {
        if (token.kind == Token::Broken)
            return token;
    }
    token.position = m_place;
    const int start = m_at;
    if (m_at >= int(m_text.size()))
        token.kind = Token::End;
    else if (startsName(peek()))
        readName(&token);
    else if (isDigit(peek()))
        readNumber(&token);
    else if (peek() == QLatin1Char('\'') || peek() == QLatin1Char('"'))
        readText(&token);
    else if (peek() == QLatin1Char('%'))
        readAddress(&token);
    else
        readSymbol(&token);
    if (token.kind != Token::Broken)
        token.text = m_text.mid(start, m_at - start);
    m_lastTokenLine = m_place.line;
    return token;
}

void Lexer::readName(Token* token)
{
    const int start = m_at;
    skipWhile(isNamePart);
    token->kind = Token::Name;
    if (peek() == QLatin1Char('#'))
        readTyped(m_text.mid(start, m_at - start), token);
}

/// INT#5, INT#16#FF, T#1h30m, DT#2024-01-31-12:00:00, COLOUR#red
void Lexer::readTyped(const QString& prefix, Token* token)
{
    advance(1);
    token->kind = Token::Literal;
    if (isTimePrefix(prefix)) {
        skipWhile([](QChar character) {
            return isNamePart(character) || isSign(character) || character == QLatin1Char(':') ||
                   character == QLatin1Char('.');
        });
        return;
    }
    if (isSign(peek()))
        advance(1);
    if (isDigit(peek()))
        readNumber(token);
    else
        skipWhile(isNamePart);
}

/// 10, 1_000, 16#FF, 2#1010, 1.5, 1.5E-3; in 1..5 the number is 1.
void Lexer::readNumber(Token* token)
{
    const auto isNumberPart = [](QChar character) {
        return isDigit(character) || character == QLatin1Char('_');
    };
    token->kind = Token::Number;
    skipWhile(isNumberPart);
    if (peek() == QLatin1Char('#')) {
        advance(1);
        skipWhile(isNamePart);
        return;
    }
    if (peek() == QLatin1Char('.') && isDigit(peek(1))) {
        token->kind = Token::Literal;
        advance(1);
        skipWhile(isNumberPart);
    }
    const bool hasExponent =
        peek().toUpper() == QLatin1Char('E') && isDigit(isSign(peek(1)) ? peek(2) : peek(1));
    if (hasExponent) {
        token->kind = Token::Literal;
        advance(2);
        skipWhile(isNumberPart);
    }
}

/// Texts stand in one line; $ takes the next character, which may be a quote.
void Lexer::readText(Token* token)
{
    const QChar quote = peek();
    token->kind = Token::Literal;
    advance(1);
    while (m_at < int(m_text.size()) && peek() != QLatin1Char('\n')) {
        const QChar character = peek();
        advance(character == QLatin1Char('$') && peek(1) != QLatin1Char('\n') ? 2 : 1);
        if (character == quote)
            return;
    }
    token->kind = Token::Broken;
    token->text = QStringLiteral("a text");
}

void Lexer::readAddress(Token* token)
{
    token->kind = Token::Address;
    advance(1);
    skipWhile([](QChar character) {
        return isNamePart(character) || character == QLatin1Char('.') ||
               character == QLatin1Char('*');
    });
}

void Lexer::readSymbol(Token* token)
{
    token->kind = Token::Symbol;
    const bool isPair = (peek() == QLatin1Char(':') && peek(1) == QLatin1Char('=')) ||
                        (peek() == QLatin1Char('.') && peek(1) == QLatin1Char('.'));
    advance(isPair ? 2 : 1);
}

} // namespace plc::iec
