#ifndef PLC_IEC_PARSER_H
#define PLC_IEC_PARSER_H

#include <functional>

#include "iec/declarations.h"
#include "iec/diagnostics.h"
#include "iec/lexer.h"

namespace plc::iec {

/// Reads the declarations of one file: types, global variables, and the variables of programs. What
/// else a file holds (statements, functions, function blocks) is skipped. After an error it goes on
/// at the next declaration.
class Parser {
public:
    using Progressed = std::function<void(int characters)>;

    /// `file` is the index of the source in positions; all of these must outlive the parser.
    Parser(const SourceFile& source, int file, Declarations* declarations,
           Diagnostics* diagnostics);

    /// Reads the whole file. `progressed` is told how many of its characters are read.
    void parse(const Progressed& progressed = {});

private:
    // The files as a whole.
    void parseUnit();
    void parseConfigurationPart();
    void parseProgram();
    void parseProgramSections(Scope* scope);
    void parseVariables(QVector<Declaration>* variables);
    void parseTypes();
    bool parseTypeDefinition();

    // Declarations.
    bool parseDeclaration(bool isConstant, QVector<Declaration>* list);
    bool parseNames(QVector<Declaration>* declarations);
    bool parseAddress(QVector<Declaration>* declarations);
    bool parseInitial(bool isKept, Expression* initial);
    QString takeEnd(const Token& first, const QVector<Comment>& inside);

    // Types.
    std::shared_ptr<TypeSpec> parseType();
    bool parseTypeBody(TypeSpec* type);
    bool parseNamed(TypeSpec* type);
    bool parseText(TypeSpec* type);
    bool parseArray(TypeSpec* type);
    bool parseMembers(TypeSpec* type);
    bool parseEnumeration(TypeSpec* type);
    bool parsePointer(TypeSpec* type);
    bool parseExpression(const char* expected, Expression* expression);

    // Pragmas.
    void readPragmas(bool isClaimed);
    void claimPragmas() { readPragmas(true); }
    void dropPack();
    void warnOfUselessPack(const Pragma& pragma);
    void warnOfPragma(const Pragma& pragma, const QString& text);

    // Tokens.
    bool at(const char* keywordOrSymbol) const { return m_token.is(keywordOrSymbol); }
    bool atEnd() const { return m_token.kind == Token::End; }
    template <size_t count>
    bool atAny(const char* const (&keywords)[count]) const;
    Token take();
    bool skip(const char* keywordOrSymbol);
    bool expect(const char* keywordOrSymbol);
    bool skipParentheses();
    void skipPast(const char* keyword);
    void skipFrom(const Token& first, const char* keyword);
    void skipFunctionBlock();
    void recover();
    bool fail(const QString& expected);
    void abandon(const QString& text);

    Lexer m_lexer;
    Declarations* m_declarations;
    Diagnostics* m_diagnostics;
    Progressed m_progressed;
    Token m_token; ///< The next one.
    /// Of a pack_mode that has not come to its structure yet.
    struct Pack {
        int alignment;
        Pragma pragma;
    };
    std::optional<Pack> m_pack;
    bool m_isSkipping = false; ///< What no variable comes from.
    int m_depth = 0;
    bool m_isAbandoned = false;
};

/// The token in error texts: quoted, or what its end stands for.
QString shownToken(const Token& token);

} // namespace plc::iec

#endif
