#ifndef PLC_HOST_LABEL_EXPANSION_H
#define PLC_HOST_LABEL_EXPANSION_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

#include "host/project/project.h"

namespace plc {

/// The labels that an argument of the command line stands for: those of the project that match, in
/// which * stands for any characters and ? for one (`Plant.tank*.level`); those with the subscripts
/// of a range (`Plant.tank[1..3].level`); else the argument itself, which may be `LABEL*N`. On
/// failure returns nothing and sets `error`.
std::optional<QStringList> expandLabel(const Project& project, const QString& text, QString* error);

} // namespace plc

#endif
