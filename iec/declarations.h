#ifndef PLC_IEC_DECLARATIONS_H
#define PLC_IEC_DECLARATIONS_H

#include <QtCore/QSet>

#include <memory>
#include <optional>

#include "iec/token.h"

namespace plc::iec {

/// The tokens of a constant expression; empty where none stands.
using Expression = QVector<Token>;

struct TypeSpec;

/// A variable, or a member of a structure.
struct Declaration {
    QString name;
    Position position;
    QString description;
    std::shared_ptr<const TypeSpec> type;
    Token address;      ///< Behind AT; of kind End where none stands.
    Expression initial; ///< Of constants only.
    bool isConstant = false;
};

/// Bounds of one array dimension.
struct Range {
    Expression lower;
    Expression upper;
};

struct Enumerator {
    QString name;
    Position position;
    Expression value; ///< Empty: one more than the one before, the first being 0.
};

/// A type as it is written down, nothing looked up yet.
struct TypeSpec {
    enum Kind { Named, Text, Array, Structure, Union, Enumeration, Pointer };

    Kind kind = Named;
    Position position;
    QString name; ///< Named, Text; of a structure what it extends, of an enumeration its base type.
    Expression length;                       ///< Text; empty: the usual one.
    QVector<Range> ranges;                   ///< Array
    std::shared_ptr<const TypeSpec> element; ///< Array
    QVector<Declaration> members;            ///< Structure, Union
    QVector<Enumerator> enumerators;
    std::optional<int> packAlignment; ///< Structure, Union: the largest within, where it is set.
};

struct TypeDefinition {
    QString name;
    Position position;
    QString description;
    std::shared_ptr<const TypeSpec> type;
};

struct Scope {
    QString name; ///< Of the program; empty for the global variables.
    Position position;
    QVector<Declaration> variables;
};

/// What the files declare, in their order.
struct Declarations {
    QVector<TypeDefinition> types;
    Scope globals;
    QVector<Scope> programs;
    QSet<QString> functionBlocks; ///< Names, in lower case.
};

} // namespace plc::iec

#endif
