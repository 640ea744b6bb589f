#ifndef PLC_IEC_LEXER_H
#define PLC_IEC_LEXER_H

#include "iec/token.h"

namespace plc::iec {

/// Takes a file apart into tokens, one by one, with the comments between them. Whatever the file
/// holds, every call goes forward, and at its end comes End again and again.
class Lexer {
public:
    /// `file` is the index that positions get. The source must outlive the lexer.
    Lexer(const SourceFile& source, int file) : m_text(source.text) { m_place.file = file; }

    Token next();
    /// Characters behind which the next token stands.
    int offset() const { return m_at; }

private:
    QChar peek(int ahead = 0) const;
    void advance(int count);
    bool skipBlanks();
    bool skipComment(Token* token);
    bool skipBlock(const char* opening, const char* closing, bool nests, Token* token);
    void addComment(int firstLine, const QString& text, Token* token) const;

    void readName(Token* token);
    void readTyped(const QString& prefix, Token* token);
    void readNumber(Token* token);
    void readText(Token* token);
    void readAddress(Token* token);
    void readSymbol(Token* token);
    template <typename Predicate>
    void skipWhile(Predicate belongs);

    const QString& m_text;
    int m_at = 0;
    Position m_place;
    int m_lastTokenLine = 0;
};

} // namespace plc::iec

#endif
