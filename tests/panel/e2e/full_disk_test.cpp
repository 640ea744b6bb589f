#include <gmock/gmock.h>

#include "panel_site.h"
#include "tests/support/small_disk.h"

namespace plc::test {
namespace {

/// A panel whose recording lies on a disk of two megabytes, which other files fill.
class PanelOnAFullDisk : public PanelSite {
protected:
    void SetUp() override
    {
        if (!m_disk.mount(path("disk")))
            GTEST_SKIP() << "no file system can be mounted here";
        settings[QStringLiteral("record")] =
            QJsonObject{{QStringLiteral("file"), QStringLiteral("disk/record")}};
        settings[QStringLiteral("audit")] = QStringLiteral("disk/audit");
        device[QStringLiteral("alarms")] = QJsonArray{QJsonObject{
            {QStringLiteral("label"), QStringLiteral("T.level")}, {QStringLiteral("above"), 90}}};
        QFile other(path("disk/other"));
        ASSERT_TRUE(other.open(QIODevice::WriteOnly | QIODevice::Unbuffered));
        while (other.write(QByteArray(512, 'x')) == 512) {
        }
    }
    void TearDown() override
    {
        stop();
        m_disk.unmount();
    }
    std::string write(const char* id)
    {
        return post("writes",
                    QByteArray(R"({"plc":"tank","label":"T.set","value":7,"id":")") + id + R"("})")
            .body.toStdString();
    }
    int historyStatus()
    {
        const qint64 now = QDateTime::currentMSecsSinceEpoch();
        return HttpConnection(port)
            .get("/api/v1/history?plc=tank&label=T.level&from=" + QByteArray::number(now - 60000) +
                 "&to=" + QByteArray::number(now))
            .status;
    }

private:
    SmallDisk m_disk;
};

TEST_F(PanelOnAFullDisk, ShowsValuesAndRecordsAndWritesOnceThereIsRoom)
{
    start();
    plc->set("T.level", QStringLiteral("95"));
    EXPECT_TRUE(comesToShow("T.level", "95"));
    EXPECT_THAT(write("w1"), testing::HasSubstr(R"("outcome":"notSent")"));
    EXPECT_THAT(write("w1"), testing::HasSubstr("the audit cannot be written"));
    EXPECT_EQ("0", plc->command(QStringLiteral("get T.set")).toStdString());
    EXPECT_EQ(503, historyStatus());

    ASSERT_TRUE(QFile::remove(path("disk/other")));
    EXPECT_TRUE(comesTrue([this] { return historyStatus() == 200; }));
    EXPECT_THAT(write("w2"), testing::HasSubstr(R"("outcome":"done")"));
    EXPECT_EQ("7", plc->command(QStringLiteral("get T.set")).toStdString());
    EXPECT_THAT(readFile(path("disk/audit")).toStdString(), testing::HasSubstr(R"("id":"w2")"));
}

} // namespace
} // namespace plc::test
