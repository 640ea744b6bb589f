#ifndef PLC_PROJECT_SYMBOL_SELECTION_H
#define PLC_PROJECT_SYMBOL_SELECTION_H

#include <QtCore/QStringList>

#include "project/symbols.h"
#include "values/export.h"

namespace plc::project {

/// Of the symbols what these labels need: their variables, and the structures in these. Labels that
/// lead to nothing need nothing.
PLC_HOST_EXPORT Symbols symbolsFor(const QStringList& labels, const Symbols& symbols);

} // namespace plc::project

#endif
