#include "gateway/service/audit_trail.h"

#include <gtest/gtest.h>

#include <QtCore/QStringList>

namespace plc::gateway {
namespace {

class AuditTrailTest : public testing::Test {
protected:
    static WriteOutcome outcome(const QString& id)
    {
        WriteOutcome result;
        result.id = id;
        return result;
    }
    QString lines() const { return m_lines.join(QLatin1Char(' ')); }
    void clear() { m_lines.clear(); }

    QString fileError;
    QString diskError;
    QString lastReason;
    AuditTrail trail{[this](const WriteOutcome& line) -> Expected<void> {
                         if (!fileError.isEmpty())
                             return Error{fileError};
                         m_lines.append(line.id);
                         lastReason = line.reason;
                         return {};
                     },
                     [this] { return diskError; }};

private:
    QStringList m_lines;
};

TEST_F(AuditTrailTest, WhatWaitsGoesBeforeWhatComes)
{
    ASSERT_TRUE(trail.permits(outcome(QStringLiteral("a"))));
    ASSERT_TRUE(trail.permits(outcome(QStringLiteral("b"))));
    fileError = QStringLiteral("disk full");
    trail.addOutcome(outcome(QStringLiteral("a-done")));
    trail.addOutcome(outcome(QStringLiteral("b-done")));
    EXPECT_EQ("a b", lines());
    EXPECT_EQ("disk full", trail.error());
    fileError.clear();
    EXPECT_TRUE(trail.permits(outcome(QStringLiteral("c"))));
    EXPECT_EQ("a b a-done b-done c", lines());
    EXPECT_EQ(QString(), trail.error());
}

TEST_F(AuditTrailTest, NothingIsPermittedThatHasNoLine)
{
    fileError = QStringLiteral("disk full");
    EXPECT_FALSE(trail.permits(outcome(QStringLiteral("a"))));
    EXPECT_EQ(0u, trail.waiting()) << "it was not carried out";
    fileError.clear();
    diskError = QStringLiteral("input/output error");
    EXPECT_FALSE(trail.permits(outcome(QStringLiteral("b"))));
    EXPECT_EQ(QString(), lines());
}

TEST_F(AuditTrailTest, OfRefusalsAThousandWaitAndTheOthersAreCounted)
{
    fileError = QStringLiteral("disk full");
    for (int i = 0; i < 1007; ++i)
        trail.addRefusal(outcome(QStringLiteral("r")));
    trail.addOutcome(outcome(QStringLiteral("done")));
    EXPECT_EQ(1001u, trail.waiting()) << "an outcome of a write is never left out";
    trail.secondPassed(5000);
    EXPECT_EQ(1001u, trail.waiting());
    fileError.clear();
    trail.secondPassed(6000);
    EXPECT_EQ(0u, trail.waiting());
    EXPECT_TRUE(lines().endsWith(QStringLiteral("r done "))) << "the number has no id";
    EXPECT_EQ("so many requests were refused without a line of their own: 7", lastReason);
    clear();
    trail.secondPassed(7000);
    EXPECT_EQ(QString(), lines());
}

} // namespace
} // namespace plc::gateway
