#ifndef PLC_IEC_PARSER_H
#define PLC_IEC_PARSER_H

#include <functional>

#include "iec/declarations.h"
#include "iec/token_reader.h"

namespace plc::iec {

/// Reads the declarations of one file: types, global variables, and the variables of programs. What
/// else a file holds (statements, functions, function blocks) is skipped. After an error it goes on
/// at the next declaration.
class Parser : private TokenReader {
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
    void skipFunctionBlock();
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

    Declarations* m_declarations;
    Diagnostics* m_diagnostics;
    Progressed m_progressed;
    int m_depth = 0;
};

} // namespace plc::iec

#endif
