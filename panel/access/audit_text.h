#ifndef PLC_PANEL_ACCESS_AUDIT_TEXT_H
#define PLC_PANEL_ACCESS_AUDIT_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace plc::panel {

/// A line of an audit for people: "2026-11-22T16:00:00.000Z anna at 192.0.2.7: login, done".
/// Nothing of it is obeyed by a terminal. What is no such line is shown as it stands.
QString auditLineText(const QByteArray& line);

} // namespace plc::panel

#endif
