#ifndef PLC_PANEL_PLANTS_LABEL_SPELLING_H
#define PLC_PANEL_PLANTS_LABEL_SPELLING_H

#include <QtCore/QString>

#include "project/label_lookup.h"
#include "values/expected.h"

namespace plc::panel {

/// A label as it is spelt everywhere: subscripts as plain numbers. Of "LABEL*N" the number stays as
/// it is, and what is no label stays as a whole.
QString spelt(const QString& text);

/// The text by which a value of a program is known, "LABEL" or "LABEL*N"; an error where the label,
/// however it is spelt, does not lead to one.
Expected<QString> textInProgram(const project::LabelFinder& program, const QString& text);

} // namespace plc::panel

#endif
