#ifndef PLC_HOST_SYMBOL_TREE_H
#define PLC_HOST_SYMBOL_TREE_H

#include <QtCore/QString>

#include <vector>

#include "host/project/project.h"

namespace plc {

/// A scope, a variable or a member, with what it is made of. An array stands for its elements: the
/// address is that of the first one.
struct SymbolNode {
    QString name;                       ///< With declared bounds: tank[1..6]
    QString label;                      ///< All from the scope on: Plant.tank[1..6].level
    const Variable* variable = nullptr; ///< Null for a scope.
    int area = 0;
    qint64 address = 0; ///< In bytes; in bits for BIT.
    std::vector<SymbolNode> children;
};

/// The scopes of the project that match `pattern` (see matchesPattern()) or have something in them
/// that does, with these; `depth` levels of them, or all if it is 0.
std::vector<SymbolNode> symbolTree(const Project& project, const QString& pattern, int depth);

/// "REAL", "STRING(19)" or the name of the structure.
QString typeName(const Variable& variable);

} // namespace plc

#endif
