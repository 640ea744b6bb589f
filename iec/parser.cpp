#include "iec/parser.h"

#include "iec/description.h"
#include "values/nearest_name.h"

namespace plc::iec {
namespace {

/// Arrays of arrays and structures in structures; far more than a project file takes.
constexpr int kDeepestType = 32;
constexpr int kLongestExpression = 200; // tokens

constexpr const char* kUnitKeywords[] = {
    "TYPE",     "VAR_GLOBAL", "PROGRAM",    "FUNCTION_BLOCK", "FUNCTION", "CONFIGURATION",
    "RESOURCE", "ACTION",     "VAR_CONFIG", "VAR_ACCESS",     "INTERFACE"};

/// Units without variables of their own in memory, and what ends them.
struct SkippedUnit {
    const char* keyword;
    const char* end;
};
constexpr SkippedUnit kSkippedUnits[] = {{"FUNCTION", "END_FUNCTION"},
                                         {"ACTION", "END_ACTION"},
                                         {"INTERFACE", "END_INTERFACE"},
                                         {"VAR_CONFIG", "END_VAR"},
                                         {"VAR_ACCESS", "END_VAR"}};

constexpr const char* kKeptSections[] = {"VAR", "VAR_INPUT", "VAR_OUTPUT", "VAR_STAT"};
constexpr const char* kSkippedSections[] = {"VAR_IN_OUT", "VAR_TEMP", "VAR_EXTERNAL", "VAR_INST"};

/// Between FUNCTION_BLOCK and its name.
constexpr const char* kModifiers[] = {"ABSTRACT", "FINAL",     "PUBLIC",
                                      "PRIVATE",  "PROTECTED", "INTERNAL"};

constexpr const char* kQualifiers[] = {"RETAIN",  "PERSISTENT", "NON_RETAIN", "PUBLIC",
                                       "PRIVATE", "PROTECTED",  "INTERNAL"};

} // namespace

Parser::Parser(const SourceFile& source, int file, Declarations* declarations,
               Diagnostics* diagnostics)
    : TokenReader(source, file, diagnostics),
      m_declarations(declarations),
      m_diagnostics(diagnostics)
{
}

void Parser::parse(const Progressed& progressed)
{
    m_progressed = progressed;
    take();
    while (!atEnd() && !m_diagnostics->isFull())
        parseUnit();
}

// The files as a whole

void Parser::parseUnit()
{
    for (const SkippedUnit& unit : kSkippedUnits) {
        if (at(unit.keyword))
            return skipPast(unit.end);
    }
    if (at("FUNCTION_BLOCK"))
        return skipFunctionBlock();
    if (at("TYPE"))
        return parseTypes();
    if (at("VAR_GLOBAL"))
        return parseVariables(&m_declarations->globals.variables);
    if (at("PROGRAM"))
        return parseProgram();
    if (at("CONFIGURATION") || at("RESOURCE") || at("TASK"))
        return parseConfigurationPart();
    if (skip(";") || skip("END_CONFIGURATION") || skip("END_RESOURCE"))
        return;
    fail(QStringLiteral("TYPE, VAR_GLOBAL or PROGRAM"));
    do {
        take();
    } while (!atEnd() && !atAny(kUnitKeywords));
}

/// Only its name counts: for those who look for its instances.
void Parser::skipFunctionBlock()
{
    setSkipping(true);
    const Token first = take();
    while (atAny(kModifiers))
        take();
    if (token().kind == Token::Name)
        m_declarations->functionBlocks.insert(token().text.toLower());
    skipFrom(first, "END_FUNCTION_BLOCK");
}

/// CONFIGURATION name; RESOURCE name ON name; TASK name (…);
void Parser::parseConfigurationPart()
{
    if (take().is("TASK"))
        return recover();
    take();
    if (skip("ON"))
        take();
}

void Parser::parseProgram()
{
    take();
    if (token().kind != Token::Name) {
        fail(QStringLiteral("the name of the program"));
        return;
    }
    const Token name = take();
    // In a resource: PROGRAM name WITH task : type;
    if (at("WITH") || at(":"))
        return recover();
    skip(";");
    Scope scope;
    scope.name = name.text;
    scope.position = name.position;
    parseProgramSections(&scope);
    m_declarations->programs.append(scope);
    setSkipping(true);
    while (!atEnd() && !at("END_PROGRAM") && !atAny(kUnitKeywords)) {
        if (token().kind == Token::Broken && token().text.endsWith(QLatin1String("comment")))
            fail(QStringLiteral("END_PROGRAM"));
        take();
    }
    const bool isEnded = skip("END_PROGRAM");
    setSkipping(false);
    if (!isEnded && !isAbandoned()) {
        m_diagnostics->warning(name.position, WarningKind::SkippedPart,
                               QStringLiteral("program %1 has no END_PROGRAM").arg(name.text));
    }
}

void Parser::parseProgramSections(Scope* scope)
{
    for (;;) {
        if (atAny(kKeptSections))
            parseVariables(&scope->variables);
        else if (atAny(kSkippedSections))
            skipPast("END_VAR");
        else
            return;
    }
}

void Parser::parseVariables(QVector<Declaration>* variables)
{
    const Token section = take();
    bool isConstant = false;
    while (at("CONSTANT") || atAny(kQualifiers))
        isConstant = take().is("CONSTANT") || isConstant;
    while (!at("END_VAR")) {
        if (atEnd() || atDeclarationLimit()) {
            fail(QStringLiteral("a declaration or END_VAR for the %1 of line %2")
                     .arg(section.text)
                     .arg(section.position.line));
            return;
        }
        if (!skip(";") && !parseDeclaration(isConstant, variables))
            recover();
        if (m_diagnostics->isFull())
            return;
    }
    take();
}

void Parser::parseTypes()
{
    claimPragmas();
    const std::optional<Pack> ofSection = pack();
    const Token section = take();
    const int typesBefore = int(m_declarations->types.size());
    while (!at("END_TYPE")) {
        if (atEnd() || m_diagnostics->isFull() || atAny(kUnitKeywords)) {
            fail(QStringLiteral("a type or END_TYPE for the TYPE of line %1")
                     .arg(section.position.line));
            return;
        }
        if (skip(";") || parseTypeDefinition())
            continue;
        recover();
        // The rest of a structure that could not be read.
        if (!at("END_TYPE") && !atAny(kUnitKeywords) && atDeclarationLimit())
            take();
    }
    take();
    if (ofSection && int(m_declarations->types.size()) > typesBefore + 1) {
        warnOfPragma(ofSection->pragma, QStringLiteral("this pack_mode stands before TYPE and "
                                                       "counts for its first type alone"));
    }
}

bool Parser::parseTypeDefinition()
{
    claimPragmas();
    const Token name = token();
    TypeDefinition definition;
    if (name.kind != Token::Name)
        return fail(QStringLiteral("the name of a type or END_TYPE"));
    take();
    definition.name = name.text;
    definition.position = name.position;
    QString extended;
    if (skip("EXTENDS"))
        extended = take().text;
    if (!expect(":"))
        return false;
    const QVector<Comment> inside = token().comments;
    const std::shared_ptr<TypeSpec> type = parseType();
    Expression initial;
    if (!type || (at(":=") && !parseInitial(false, &initial)))
        return false;
    dropPack();
    if (type->kind == TypeSpec::Structure)
        type->name = extended;
    // Programming systems leave the semicolon out behind END_STRUCT.
    if (!at("END_TYPE") || type->kind != TypeSpec::Structure)
        definition.description = takeEnd(name, inside);
    if (definition.description.isEmpty())
        definition.description = descriptionAbove(name);
    definition.type = type;
    m_declarations->types.append(definition);
    return true;
}

// Declarations

bool Parser::parseDeclaration(bool isConstant, QVector<Declaration>* list)
{
    if (m_progressed)
        m_progressed(offset());
    claimPragmas();
    const Token first = token();
    QVector<Declaration> declarations;
    if (!parseNames(&declarations) || !parseAddress(&declarations))
        return false;
    QVector<Comment> inside = token().comments;
    if (!expect(":"))
        return false;
    inside += token().comments;
    const std::shared_ptr<TypeSpec> type = parseType();
    Expression initial;
    if (!type)
        return false;
    dropPack();
    if (at(":=") && !parseInitial(isConstant, &initial))
        return false;
    if (!at(";"))
        return fail(QStringLiteral("\";\" or an initial value"));
    const QString description = takeEnd(first, inside);
    for (Declaration& declaration : declarations) {
        declaration.description = description;
        declaration.type = type;
        declaration.initial = initial;
        declaration.isConstant = isConstant;
        list->append(declaration);
    }
    return true;
}

bool Parser::parseNames(QVector<Declaration>* declarations)
{
    do {
        if (token().kind != Token::Name || atDeclarationLimit())
            return fail(QStringLiteral("a name"));
        const Token name = take();
        Declaration declaration;
        declaration.name = name.text;
        declaration.position = name.position;
        declarations->append(declaration);
    } while (skip(","));
    return true;
}

bool Parser::parseAddress(QVector<Declaration>* declarations)
{
    if (!skip("AT"))
        return true;
    if (token().kind != Token::Address)
        return fail(QStringLiteral("an address such as %MW1.100"));
    if (declarations->size() > 1)
        return fail(QStringLiteral("one name before AT: variables cannot share an address"));
    declarations->first().address = take();
    return true;
}

/// From := to the end of the declaration. Initial values of structures and arrays are not looked
/// into.
bool Parser::parseInitial(bool isKept, Expression* initial)
{
    take();
    if (at(";"))
        return fail(QStringLiteral("an initial value"));
    while (!atEnd() && !at(";") && !atDeclarationLimit()) {
        if (token().kind == Token::Broken)
            return fail(QStringLiteral("an initial value"));
        if (isKept && initial->size() <= kLongestExpression)
            initial->append(token());
        take();
    }
    return true;
}

/// Takes the semicolon. Returns the description of the declaration that began with `first`: what
/// stands behind it, or inside, or above.
QString Parser::takeEnd(const Token& first, const QVector<Comment>& inside)
{
    const int line = token().position.line;
    QString description;
    if (skip(";"))
        description = descriptionBehind(token().comments, line);
    if (description.isEmpty())
        description = plainText(inside);
    return description.isEmpty() ? descriptionAbove(first) : description;
}

// Types

std::shared_ptr<TypeSpec> Parser::parseType()
{
    if (m_depth >= kDeepestType) {
        abandon(QStringLiteral("found types nested more than %1 deep").arg(kDeepestType));
        return nullptr;
    }
    ++m_depth;
    const auto type = std::make_shared<TypeSpec>();
    type->position = token().position;
    const bool isGood = parseTypeBody(type.get());
    --m_depth;
    return isGood ? type : nullptr;
}

bool Parser::parseTypeBody(TypeSpec* type)
{
    if (at("ARRAY"))
        return parseArray(type);
    if (at("STRUCT") || at("UNION"))
        return parseMembers(type);
    if (at("STRING") || at("WSTRING"))
        return parseText(type);
    if (at("POINTER") || at("REFERENCE") || at("REF_TO"))
        return parsePointer(type);
    if (at("("))
        return parseEnumeration(type);
    return parseNamed(type);
}

/// A name, of a library with the name of that before it. What stands behind in parentheses, the
/// bounds of a subrange, leaves the memory as it is.
bool Parser::parseNamed(TypeSpec* type)
{
    do {
        if (token().kind != Token::Name || atDeclarationLimit())
            return fail(QStringLiteral("a type"));
        type->name = take().text;
    } while (skip("."));
    return !at("(") || skipParentheses();
}

bool Parser::parseText(TypeSpec* type)
{
    type->kind = TypeSpec::Text;
    type->name = take().text.toUpper();
    const bool isBracketed = at("[");
    if (!isBracketed && !at("("))
        return true;
    take();
    return parseExpression("the length of the text", &type->length) &&
           expect(isBracketed ? "]" : ")");
}

bool Parser::parseArray(TypeSpec* type)
{
    take();
    type->kind = TypeSpec::Array;
    if (!expect("["))
        return false;
    do {
        Range range;
        if (!parseExpression("the lower bound", &range.lower))
            return false;
        // Open arrays have no bounds: ARRAY[*].
        const bool isOpen = range.lower.first().is("*") && !at("..");
        if (!isOpen && (!expect("..") || !parseExpression("the upper bound", &range.upper)))
            return false;
        type->ranges.append(range);
    } while (skip(","));
    if (!expect("]") || !expect("OF"))
        return false;
    type->element = parseType();
    return bool(type->element);
}

bool Parser::parseMembers(TypeSpec* type)
{
    claimPragmas();
    if (const std::optional<Pack> pack = takePack())
        type->packAlignment = pack->alignment;
    const Token opening = take();
    const bool isUnion = opening.is("UNION");
    const char* const end = isUnion ? "END_UNION" : "END_STRUCT";
    type->kind = isUnion ? TypeSpec::Union : TypeSpec::Structure;
    while (!at(end)) {
        if (atEnd() || atDeclarationLimit()) {
            return fail(QStringLiteral("a member or %1 for the %2 of line %3")
                            .arg(QLatin1String(end), opening.text)
                            .arg(opening.position.line));
        }
        if (!skip(";") && !parseDeclaration(false, &type->members))
            recover();
        if (m_diagnostics->isFull())
            return false;
    }
    take();
    return true;
}

/// (red, green := 5, blue) and, behind it, the base type.
bool Parser::parseEnumeration(TypeSpec* type)
{
    type->kind = TypeSpec::Enumeration;
    type->name = QStringLiteral("INT");
    take();
    do {
        if (token().kind != Token::Name)
            return fail(QStringLiteral("the name of a value"));
        const Token name = take();
        Enumerator enumerator{name.text, name.position, {}};
        if (skip(":=") && !parseExpression("a value", &enumerator.value))
            return false;
        type->enumerators.append(enumerator);
    } while (skip(","));
    if (!expect(")"))
        return false;
    if (token().kind == Token::Name && !atDeclarationLimit())
        type->name = take().text;
    return true;
}

bool Parser::parsePointer(TypeSpec* type)
{
    type->kind = TypeSpec::Pointer;
    if (!take().is("REF_TO") && !expect("TO"))
        return false;
    return bool(parseType());
}

/// Up to what ends it at this place.
bool Parser::parseExpression(const char* expected, Expression* expression)
{
    int open = 0;
    for (;;) {
        const bool isClosing = open == 0 && (at("..") || at(",") || at(")") || at("]"));
        if (isClosing || atEnd() || at(";") || token().kind == Token::Broken ||
            atDeclarationLimit())
            break;
        open += at("(") ? 1 : at(")") ? -1 : 0;
        expression->append(take());
        if (expression->size() > kLongestExpression) {
            return fail(QStringLiteral("the end of an expression of at most %1 words and signs")
                            .arg(kLongestExpression));
        }
    }
    return !expression->isEmpty() || fail(QLatin1String(expected));
}

} // namespace plc::iec
