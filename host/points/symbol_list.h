#ifndef PLC_HOST_POINTS_SYMBOL_LIST_H
#define PLC_HOST_POINTS_SYMBOL_LIST_H

#include <QtCore/QList>

#include "driver/plc_driver.h"
#include "project/symbols.h"
#include "values/export.h"

namespace plc::host {

/// The symbols of the project as PassVarName_2() takes them, one record for each scope.
PLC_HOST_EXPORT QList<Label_Type_Info> symbolList(const project::Symbols& source);

} // namespace plc::host

#endif
