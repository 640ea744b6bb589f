#include "panel/access/audit_text.h"

#include <gtest/gtest.h>

#include "panel/access/audit_chain.h"

namespace plc::panel {
namespace {

std::string shown(const AuditRecord& record)
{
    return auditLineText(recordLine(record, 7, QByteArray(64, 'a'))).toStdString();
}

AuditRecord record(const char* action, AuditRecord::Phase phase, const char* outcome)
{
    AuditRecord made;
    made.time = 1;
    made.action = QString::fromLatin1(action);
    made.phase = phase;
    made.user = QStringLiteral("anna");
    made.address = QStringLiteral("192.0.2.7");
    made.outcome = QString::fromLatin1(outcome);
    return made;
}

TEST(AuditText, TellsWhoDidWhat)
{
    EXPECT_EQ("1970-01-01T00:00:00.001Z anna at 192.0.2.7: login, done",
              shown(record("login", AuditRecord::Outcome, "done")));
    AuditRecord write = record("write", AuditRecord::Requested, "");
    write.plc = QStringLiteral("Tank 1");
    write.label = QStringLiteral("TANK.level");
    write.newValue = QStringLiteral("1200");
    EXPECT_EQ(
        "1970-01-01T00:00:00.001Z anna at 192.0.2.7: write Tank 1 TANK.level from what is not "
        "known to 1200, asked for",
        shown(write));
    write.oldValue = QStringLiteral("1500");
    write.phase = AuditRecord::Outcome;
    write.outcome = QStringLiteral("refused");
    write.reason = QStringLiteral("status 3");
    EXPECT_EQ(
        "1970-01-01T00:00:00.001Z anna at 192.0.2.7: write Tank 1 TANK.level from 1500 to 1200, "
        "refused (status 3)",
        shown(write));
}

TEST(AuditText, TellsWhereAnAuditBeginsOrWasCut)
{
    const QByteArray hash(64, 'a');
    EXPECT_EQ("1970-01-01T00:00:00.001Z the audit begins (new)",
              auditLineText(beginningLine(1, false, 0, hash)).toStdString());
    EXPECT_EQ("1970-01-01T00:00:00.001Z a process or a disk ended within the line before",
              auditLineText(cutLine(1, hash, 3, hash)).toStdString());
}

TEST(AuditText, IsNothingThatATerminalObeys)
{
    AuditRecord login = record("login", AuditRecord::Outcome, "refused");
    login.user = QStringLiteral("\x1b[2J");
    EXPECT_EQ("1970-01-01T00:00:00.001Z \\u001b[2J at 192.0.2.7: login, refused", shown(login));
    EXPECT_EQ("no line\\u001b", auditLineText("no line\x1b").toStdString());
}

} // namespace
} // namespace plc::panel
