#ifndef PLC_HOST_PROJECT_SYMBOL_LIST_H
#define PLC_HOST_PROJECT_SYMBOL_LIST_H

#include <QtCore/QList>

#include "driver/plc_driver.h"
#include "host/project/project.h"

namespace plc {

/// The symbols of the project as PassVarName_2() takes them, one record for each scope.
QList<Label_Type_Info> symbolList(const Project& project);

} // namespace plc

#endif
