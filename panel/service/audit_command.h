#ifndef PLC_PANEL_SERVICE_AUDIT_COMMAND_H
#define PLC_PANEL_SERVICE_AUDIT_COMMAND_H

#include <QtCore/QString>

#include "values/expected.h"

namespace plc::panel {

struct AuditReport {
    QString text;
    bool isIntact = false;
};

/// Whether the hashes of an audit file hold, in words, below so many of its last lines.
Expected<AuditReport> auditReport(const QString& file, int lines = 0);

} // namespace plc::panel

#endif
