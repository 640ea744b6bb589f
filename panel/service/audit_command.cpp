#include "panel/service/audit_command.h"

#include "panel/access/audit_reading.h"

namespace plc::panel {

Expected<AuditReport> auditReport(const QString& file)
{
    const Expected<AuditVerification> found = verifyAudit(file);
    if (!found)
        return found.error();
    if (found->flaw != AuditVerification::None)
        return AuditReport{
            QStringLiteral("line %1: %2").arg(found->flawedLine).arg(found->sentence), false};
    QString text = QStringLiteral("%1 lines, none of them altered; the last one has the hash %2")
                       .arg(found->lines)
                       .arg(QString::fromLatin1(found->head));
    if (found->isContinued)
        text += QStringLiteral(
                    "\nthe file goes on with the chain of another, whose last line has "
                    "the hash %1")
                    .arg(QString::fromLatin1(found->previous));
    if (found->cuts > 0)
        text +=
            QStringLiteral("\n%1 times a process or a disk ended within a line").arg(found->cuts);
    return AuditReport{text, true};
}

} // namespace plc::panel
