#include "gateway/store/topic_file.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include "tests/support/file_test.h"

namespace plc::gateway {
namespace {

const QString kBroker = QStringLiteral("a:1883");

class TopicFileTest : public plc::test::FileTest {
protected:
    std::unique_ptr<TopicFile> open()
    {
        return std::make_unique<TopicFile>(path("topics"),
                                           [this](const QString& line) { logged.append(line); });
    }
    QStringList sorted(const TopicFile& record, const QString& broker = kBroker) const
    {
        QStringList topics = record.topics(broker);
        topics.sort();
        return topics;
    }
    QByteArray content() const
    {
        QFile whole(path("topics"));
        return whole.open(QIODevice::ReadOnly) ? whole.readAll() : QByteArray();
    }
    void setContent(const QByteArray& text) const
    {
        QFile whole(path("topics"));
        ASSERT_TRUE(whole.open(QIODevice::WriteOnly));
        whole.write(text);
    }

    QStringList logged;
};

TEST_F(TopicFileTest, KnowsWhatWasAddedAndNotRemovedAfterwards)
{
    {
        const auto record = open();
        record->add(kBroker, {"w/h/pump/state", QString::fromUtf8("w/h/pump/Öl \"1\"\n")});
        record->add(QStringLiteral("b:1"), {"w/h/state"});
        record->remove(kBroker, {"w/h/pump/state"});
    }
    const auto record = open();
    EXPECT_EQ(QStringList{QString::fromUtf8("w/h/pump/Öl \"1\"\n")}, sorted(*record));
    EXPECT_EQ(QStringList{"w/h/state"}, sorted(*record, QStringLiteral("b:1")));
    EXPECT_EQ(QStringList(), logged);
}

TEST_F(TopicFileTest, DoesNotExistBeforeThereIsSomethingToKnow)
{
    EXPECT_EQ(QStringList(), sorted(*open()));
    EXPECT_FALSE(QFile::exists(path("topics")));
}

TEST_F(TopicFileTest, HasOneLineForEachTopicAfterTheNextRunHasWritten)
{
    {
        const auto record = open();
        record->add(kBroker, {"x", "y"});
        record->remove(kBroker, {"x"});
    }
    EXPECT_EQ(3, content().count('\n'));
    open()->add(kBroker, {"z"});
    EXPECT_EQ(2, content().count('\n'));
    EXPECT_EQ((QStringList{"y", "z"}), sorted(*open()));
}

TEST_F(TopicFileTest, LineThatWasCutOffHarmsNoOther)
{
    setContent("[\"+\",\"a:1883\",\"x\"]\n[\"+\",\"a:1883\",\"y\"]");
    const auto record = open();
    EXPECT_EQ(QStringList{"x"}, sorted(*record));
    record->add(kBroker, {"z"});
    EXPECT_EQ((QStringList{"x", "z"}), sorted(*open()));
}

TEST_F(TopicFileTest, ThatCannotBeWrittenIsToldOnceAndWrittenWhenItCan)
{
    // A folder of that name takes no lines.
    ASSERT_TRUE(QDir().mkpath(path("topics")));
    const auto record = open();
    logged.clear();
    record->add(kBroker, {"x"});
    record->add(kBroker, {"y"});
    EXPECT_EQ(1, logged.size());
    EXPECT_EQ((QStringList{"x", "y"}), sorted(*record));
    ASSERT_TRUE(QDir().rmdir(path("topics")));
    record->add(kBroker, {"z"});
    EXPECT_EQ((QStringList{"x", "y", "z"}), sorted(*open()));
}

} // namespace
} // namespace plc::gateway
