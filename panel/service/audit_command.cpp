#include "panel/service/audit_command.h"

#include <QtCore/QStringList>

#include "panel/access/audit_reading.h"
#include "panel/access/audit_text.h"

namespace plc::panel {

namespace {

AuditReport reportOf(const AuditVerification& found)
{
    if (found.flaw != AuditVerification::None)
        return {found.sentence, false};
    QString text = QStringLiteral("%1 lines, none of them altered; the last one has the hash %2")
                       .arg(found.lines)
                       .arg(QString::fromLatin1(found.head));
    if (found.isContinued)
        text += QStringLiteral(
                    "\nthe file goes on with the chain of another, whose last line has "
                    "the hash %1")
                    .arg(QString::fromLatin1(found.previous));
    if (found.cuts > 0)
        text +=
            QStringLiteral("\n%1 times a process or a disk ended within a line").arg(found.cuts);
    return {text, true};
}

} // namespace

Expected<AuditReport> auditReport(const QString& file, int lines)
{
    const Expected<AuditPage> page = readAudit(file, lines > 0 ? -qint64(lines) : 0, lines);
    if (!page)
        return page.error();
    const AuditReport verification = reportOf(page->verification);
    QStringList texts;
    for (const QByteArray& line : page->lines)
        texts.append(auditLineText(line));
    texts.append(verification.text);
    return AuditReport{texts.join(QLatin1Char('\n')), verification.isIntact};
}

} // namespace plc::panel
