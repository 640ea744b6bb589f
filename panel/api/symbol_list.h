#ifndef PLC_PANEL_API_SYMBOL_LIST_H
#define PLC_PANEL_API_SYMBOL_LIST_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "project/symbols.h"
#include "values/expected.h"

namespace plc::panel {

/// A scope, a structure, an array or a value of a PLC's program.
struct ListedSymbol {
    enum Kind { Scope, Structure, Array, Value };

    Kind kind = Scope;
    QString name;  ///< Behind what it is part of: "tank", "[3]".
    QString label; ///< All of it: "Plant.tank[3]".
    QString type;  ///< "REAL", "STRING(20)", the name of the structure; empty for a scope.
    QString unit;
    QString description;
    int children = 0;
};

/// "scope", "structure", "array", "value"
inline const char* kindWord(ListedSymbol::Kind kind)
{
    constexpr const char* kWords[] = {"scope", "structure", "array", "value"};
    return kWords[kind];
}

struct SymbolList {
    QVector<ListedSymbol> symbols;
    bool isComplete = true; ///< False: there are more, or may be.
};

constexpr int kMostListed = 10000;
constexpr int kMostSearched = 200000;

/// What is directly below a label, kMostListed at most; the scopes below an empty one. An error
/// where there is no such label.
Expected<SymbolList> symbolsUnder(const QString& label, const project::Symbols& symbols);

/// Values, arrays and structures whose labels or descriptions have all words of `text`, in any
/// case: `limit` at most, of the first kMostSearched, for arrays of structures of arrays have any
/// number.
SymbolList searchSymbols(const QString& text, int limit, const project::Symbols& symbols);

} // namespace plc::panel

#endif
