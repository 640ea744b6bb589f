#include "panel/service/audit_command.h"

#include "panel/access/audit_log.h"
#include "panel/access/audit_reading.h"
#include "tests/support/file_test.h"

namespace plc::panel {
namespace {

class AuditCommand : public test::FileTest {
protected:
    AuditCommand()
    {
        const Expected<std::unique_ptr<AuditLog>> log = AuditLog::open(file, 0);
        AuditRecord record;
        record.user = QStringLiteral("anna");
        EXPECT_TRUE(log && (*log)->append(record) && (*log)->append(record));
    }
    AuditReport report()
    {
        const Expected<AuditReport> made = auditReport(file);
        EXPECT_TRUE(made);
        return made.valueOr({QString(), false});
    }

    const QString file = path("audit.jsonl");
};

TEST_F(AuditCommand, TellsHowManyLinesThereAreAndTheHashOfTheLast)
{
    EXPECT_TRUE(report().isIntact);
    EXPECT_EQ("3 lines, none of them altered; the last one has the hash " +
                  verifyAudit(file)->head.toStdString(),
              report().text.toStdString());
}

TEST_F(AuditCommand, NamesAnAlteredLineOnce)
{
    QByteArray content = QByteArray::fromStdString(files.content(file));
    content.replace(content.indexOf("anna"), 4, "emma");
    files.put(file, content.constData());
    EXPECT_FALSE(report().isIntact);
    EXPECT_EQ("line 2 was altered: the hashes do not fit it", report().text.toStdString());
}

} // namespace
} // namespace plc::panel
