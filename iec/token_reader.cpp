#include "iec/token_reader.h"

#include "iec/pragma.h"
#include "values/nearest_name.h"

namespace plc::iec {
namespace {

/// No declaration goes beyond these.
constexpr const char* kDeclarationLimits[] = {
    "END_VAR",   "END_STRUCT", "END_UNION", "END_TYPE", "END_PROGRAM",    "VAR",     "VAR_GLOBAL",
    "VAR_INPUT", "VAR_OUTPUT", "TYPE",      "PROGRAM",  "FUNCTION_BLOCK", "FUNCTION"};

} // namespace

QString shownToken(const Token& token)
{
    switch (token.kind) {
        case Token::End:
            return QStringLiteral("the end of the file");
        case Token::Broken:
            return token.text + QStringLiteral(" without an end");
        default:
            return values::quoted(token.text);
    }
}

TokenReader::TokenReader(const SourceFile& source, int file, Diagnostics* diagnostics)
    : m_lexer(source, file), m_diagnostics(diagnostics)
{
}

bool TokenReader::atDeclarationLimit() const
{
    return atAny(kDeclarationLimits);
}

Token TokenReader::take()
{
    readPragmas(false);
    Token taken = m_token;
    m_token = m_isAbandoned ? Token() : m_lexer.next();
    return taken;
}

bool TokenReader::skip(const char* keywordOrSymbol)
{
    if (!at(keywordOrSymbol))
        return false;
    take();
    return true;
}

bool TokenReader::expect(const char* keywordOrSymbol)
{
    return skip(keywordOrSymbol) || fail(values::quoted(QLatin1String(keywordOrSymbol)));
}

bool TokenReader::skipParentheses()
{
    int open = 0;
    do {
        open += at("(") ? 1 : at(")") ? -1 : 0;
        take();
        if (open > 0 && (atEnd() || at(";") || atDeclarationLimit()))
            return fail(QStringLiteral("\")\""));
    } while (open > 0);
    return true;
}

void TokenReader::skipPast(const char* keyword)
{
    m_isSkipping = true;
    skipFrom(take(), keyword);
}

void TokenReader::skipFrom(const Token& first, const char* keyword)
{
    m_isSkipping = true;
    while (!atEnd() && !at(keyword))
        take();
    if (atEnd() && !m_isAbandoned) {
        m_diagnostics->warning(first.position, WarningKind::SkippedPart,
                               QStringLiteral("%1 has no %2; the rest of the file was skipped")
                                   .arg(first.text, QLatin1String(keyword)));
    }
    take();
    m_isSkipping = false;
}

void TokenReader::recover()
{
    m_pack.reset();
    while (!atEnd() && !at(";") && !atDeclarationLimit())
        take();
    skip(";");
}

bool TokenReader::fail(const QString& expected)
{
    if (!m_isAbandoned) {
        m_diagnostics->error(
            m_token.position,
            QStringLiteral("found %1, expected %2").arg(shownToken(m_token), expected));
    }
    return false;
}

void TokenReader::abandon(const QString& text)
{
    m_diagnostics->error(m_token.position, text);
    m_isAbandoned = true;
    take();
}

std::optional<TokenReader::Pack> TokenReader::takePack()
{
    std::optional<Pack> taken;
    taken.swap(m_pack);
    return taken;
}

void TokenReader::readPragmas(bool isClaimed)
{
    const QVector<Pragma> pragmas = m_isSkipping ? QVector<Pragma>() : m_token.pragmas;
    m_token.pragmas.clear();
    for (const Pragma& pragma : pragmas) {
        const PragmaMeaning meaning = meaningOf(pragma);
        const std::optional<int> alignment = packAlignment(meaning.value);
        if (meaning.kind == PragmaMeaning::Conditional) {
            warnOfPragma(pragma, QStringLiteral("conditions are not looked at: what stands behind "
                                                "{IF} and {ELSE} is all read"));
        } else if (meaning.kind == PragmaMeaning::Unknown) {
            warnOfPragma(pragma, QStringLiteral("this pragma is not known and skipped; by its name "
                                                "it may change addresses"));
        } else if (meaning.kind == PragmaMeaning::PackMode && !alignment) {
            warnOfPragma(pragma, QStringLiteral("found the pack_mode %1, expected 0, 1, 2, 4 or 8; "
                                                "it is skipped, and addresses may differ")
                                     .arg(values::quoted(meaning.value)));
        } else if (meaning.kind == PragmaMeaning::PackMode) {
            std::optional<Pack> before = m_pack;
            m_pack = Pack{*alignment, pragma};
            if (!isClaimed)
                m_pack.swap(before);
            if (before)
                warnOfUselessPack(before->pragma);
        }
    }
}

void TokenReader::dropPack()
{
    if (m_pack)
        warnOfUselessPack(m_pack->pragma);
    m_pack.reset();
}

void TokenReader::warnOfUselessPack(const Pragma& pragma)
{
    warnOfPragma(pragma,
                 QStringLiteral("this pack_mode stands before no structure and is skipped"));
}

void TokenReader::warnOfPragma(const Pragma& pragma, const QString& text)
{
    m_diagnostics->warning(pragma.position, WarningKind::Layout, text);
}

} // namespace plc::iec
