#ifndef PLC_PROJECT_PROJECT_DOCUMENT_H
#define PLC_PROJECT_PROJECT_DOCUMENT_H

#include <QtCore/QByteArray>
#include <QtCore/QJsonObject>

#include "project/project.h"

namespace plc::project {

/// A project file with this name and the areas, structures and scopes of `symbols`.
QJsonObject projectDocument(const QString& name, const Project& symbols);

/// Puts the areas, structures and scopes of `symbols` into a project file. Members and variables of
/// the same name are replaced, but keep their unit, description and signal unless `symbols` has
/// its own; areas grow where they must. Everything else stays.
void mergeSymbols(const Project& symbols, QJsonObject* document);

/// The file's text: keys in the order in which the documents describe them, one line for each
/// variable, member and area.
QByteArray documentText(const QJsonObject& document);

} // namespace plc::project

#endif
