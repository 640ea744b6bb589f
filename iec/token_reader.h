#ifndef PLC_IEC_TOKEN_READER_H
#define PLC_IEC_TOKEN_READER_H

#include <optional>

#include "iec/diagnostics.h"
#include "iec/lexer.h"

namespace plc::iec {

/// Gives a parser the tokens of one file with one token of sight, skips what the parser has no use
/// for, and keeps what pragmas say of the layout until the structure comes that they belong to.
class TokenReader {
protected:
    /// A pack_mode that has not come to its structure yet.
    struct Pack {
        int alignment;
        Pragma pragma;
    };

    /// `file` is the index of the source in positions; source and diagnostics must outlive the
    /// reader.
    TokenReader(const SourceFile& source, int file, Diagnostics* diagnostics);

    /// The next one.
    const Token& token() const { return m_token; }
    /// Characters read.
    int offset() const { return m_lexer.offset(); }
    bool at(const char* keywordOrSymbol) const { return m_token.is(keywordOrSymbol); }
    template <size_t count>
    bool atAny(const char* const (&keywords)[count]) const
    {
        for (const char* keyword : keywords) {
            if (at(keyword))
                return true;
        }
        return false;
    }
    bool atEnd() const { return m_token.kind == Token::End; }
    /// At a keyword that no declaration goes beyond.
    bool atDeclarationLimit() const;

    Token take();
    bool skip(const char* keywordOrSymbol);
    bool expect(const char* keywordOrSymbol);
    /// From an opening parenthesis to the one that closes it.
    bool skipParentheses();
    void skipPast(const char* keyword);
    /// `first` is where it began, and taken already.
    void skipFrom(const Token& first, const char* keyword);
    /// Whether no variable comes from what is read now, so that its pragmas do not count.
    void setSkipping(bool isSkipping) { m_isSkipping = isSkipping; }
    /// Skips the rest of a declaration.
    void recover();
    /// Tells what was found instead. Always false.
    bool fail(const QString& expected);
    /// Ends the file here.
    void abandon(const QString& text);
    bool isAbandoned() const { return m_isAbandoned; }

    /// Keeps the pack_mode before the next token for the structure that comes.
    void claimPragmas() { readPragmas(true); }
    const std::optional<Pack>& pack() const { return m_pack; }
    std::optional<Pack> takePack();
    /// No structure came for it.
    void dropPack();
    void warnOfPragma(const Pragma& pragma, const QString& text);

private:
    /// Those before the next token. A pack_mode that is not claimed is told to be of no use.
    void readPragmas(bool isClaimed);
    void warnOfUselessPack(const Pragma& pragma);

    Lexer m_lexer;
    Diagnostics* m_diagnostics;
    Token m_token;
    std::optional<Pack> m_pack;
    bool m_isSkipping = false;
    bool m_isAbandoned = false;
};

/// The token in error texts: quoted, or what its end stands for.
QString shownToken(const Token& token);

} // namespace plc::iec

#endif
