#ifndef PLC_PROJECT_SYMBOL_TREE_H
#define PLC_PROJECT_SYMBOL_TREE_H

#include <QtCore/QString>

#include <functional>

#include "project/symbols.h"
#include "values/export.h"

namespace plc::project {

/// A scope, a variable or a member. An array stands for its elements: the
/// address is that of the first one.
struct SymbolNode {
    QString name;                       ///< With declared bounds: tank[1..6]
    QString label;                      ///< All from the scope on: Plant.tank[1..6].level
    const Variable* variable = nullptr; ///< Null for a scope.
    int area = 0;
    qint64 address = 0;  ///< In bytes; in bits for BIT.
    int level = 1;       ///< 1 for a scope, 2 for a variable, 3 for its members, and so on.
    bool isLast = false; ///< No more of this level come in what it is part of.
};

/// Visits the scopes of the project that match `pattern` anywhere in their labels or have something
/// in them that does, each before these; `depth` levels of them, or all if it is 0. Nodes are made
/// one at a time: structures of structures have far more of them than declarations.
PLC_HOST_EXPORT void walkSymbolTree(const Symbols& symbols, const QString& pattern, int depth,
                                    const std::function<void(const SymbolNode&)>& visit);

/// "REAL", "STRING(19)" or the name of the structure.
PLC_HOST_EXPORT QString typeName(const Variable& variable);

} // namespace plc::project

#endif
