#ifndef PLC_HOST_SYMBOL_WALK_H
#define PLC_HOST_SYMBOL_WALK_H

#include <QtCore/QString>
#include <QtCore/QVector>

#include "host/project/project.h"

namespace plc {

/// A variable of an elementary type, or an array of them, as the project declares it.
struct SymbolEntry {
    QString pattern;    ///< The label with declared bounds: Plant.tank[1..6].level
    QString firstLabel; ///< The label of the first element: Plant.tank[1].level
    const Variable* variable = nullptr;
};

/// All of them, in the order of their declaration, structures taken apart.
QVector<SymbolEntry> symbolEntries(const Project& project);

/// The declared bounds as a label has them, "[1..6]"; nothing for what is no array.
QString boundsText(const Variable& variable);

/// Whether `text` matches `pattern`, in which * stands for any characters and ? for one; a pattern
/// without either is to be found anywhere. Letter case does not count.
bool matchesPattern(const QString& text, const QString& pattern);

} // namespace plc

#endif
