// Seeded runs of a gateway with a broker, a PLC and a disk that fail.

#include <gtest/gtest.h>

#include <QtCore/QDateTime>

#include "faults/run_options.h"
#include "gateway/faults/trouble.h"

namespace plc::faults {
namespace {

constexpr int kSteps = 100;
constexpr int kFewestFaults = 2;
constexpr int kMostFaults = 5;
constexpr int kMostAtOnce = 3;
constexpr int kLongestPause = 40; // ms between two steps

struct Label {
    const char* label;
    const char* name;
};
const Label kLabels[] = {{"F.a", "F/a"}, {"F.b", "F/b"}, {"F.c", "F/c"}};

qint64 now()
{
    return QDateTime::currentMSecsSinceEpoch();
}

class GatewayFaults : public ::testing::TestWithParam<std::uint32_t> {
protected:
    void SetUp() override
    {
        for (const Label& label : kLabels)
            m_truth.begin(label.name, 0, now());
        ASSERT_TRUE(m_trouble.begin());
    }

    explicit GatewayFaults(bool hasBulk = false) : m_trouble(&m_random, hasBulk) {}

    void run()
    {
        for (int step = 0; (step < kSteps || m_faultsLeft > 0) && !HasFatalFailure(); ++step) {
            endFaults();
            beginFault();
            setValues();
            QThread::msleep(unsigned(m_random.below(kLongestPause)));
        }
        for (int i = 0; i < kFaults; ++i)
            end(Fault(i));
    }
    void end(Fault fault)
    {
        if (m_trouble.isActive(fault)) {
            tell("ends", fault);
            m_trouble.end(fault, &m_truth);
        }
    }
    void endFaults()
    {
        for (int i = 0; i < kFaults; ++i) {
            const Fault fault = Fault(i);
            if (m_trouble.isActive(fault) && m_random.oneIn(m_duration[i]))
                end(fault);
        }
    }
    void beginFault()
    {
        if (m_faultsLeft == 0 || m_trouble.active() == kMostAtOnce || !m_random.oneIn(12))
            return;
        const Fault fault = Fault(m_random.below(kFaults));
        if (!m_trouble.isPossible(fault))
            return;
        --m_faultsLeft;
        const int durations[] = {4, 15, 60}; // steps
        m_duration[int(fault)] = durations[m_random.below(3)];
        tell("begins", fault);
        m_trouble.begin(fault, &m_truth);
    }
    /// Some labels get their next value, and it stays until the gateway has seen it, if it sees it.
    void setValues()
    {
        std::vector<const Label*> set;
        for (const Label& label : kLabels) {
            if (!m_random.oneIn(2))
                continue;
            const qint64 before = now();
            ++m_last;
            m_trouble.plc().set(label.label, QString::number(m_last));
            m_truth.set(label.name, m_last, before, now());
            set.push_back(&label);
        }
        if (!m_trouble.isReading())
            return;
        ASSERT_TRUE(m_trouble.isSeen());
        for (const Label* label : set)
            m_truth.isSeen(label->name);
    }
    QJsonObject store()
    {
        return m_trouble.site().gateway.status()[QStringLiteral("store")].toObject();
    }
    bool isStoreEmpty()
    {
        return test::comesTrue(
            [this] { return store()[QStringLiteral("waiting")].toInt(-1) == 0; });
    }
    void tell(const char* what, Fault fault)
    {
        m_history += QStringLiteral("%1 %2 %3\n")
                         .arg(now())
                         .arg(faultName(fault), QString::fromLatin1(what))
                         .toStdString();
    }

    test::Random m_random{GetParam()};
    Truth m_truth;
    Trouble m_trouble;
    HostConsumer m_consumer{m_trouble.brokerPort()};
    int m_faultsLeft = m_random.between(kFewestFaults, kMostFaults);
    int m_duration[kFaults] = {};
    qint64 m_last = 0;
    std::string m_history;
};

TEST_P(GatewayFaults, LoseAndInventNothing)
{
    run();
    setValues();
    const auto isComplete = [this] { return m_truth.missing(m_consumer.told()).empty(); };
    const bool hasAll = test::comesTrue(isComplete);
    EXPECT_TRUE(isStoreEmpty());
    const std::vector<ToldValue> told = m_consumer.told();
    const std::vector<std::string> missing = m_truth.missing(told);
    EXPECT_TRUE(hasAll || missing.empty()) << ::testing::PrintToString(missing);
    EXPECT_EQ(0, store()[QStringLiteral("dropped")].toInt());
    EXPECT_EQ(std::vector<std::string>(), m_truth.invented(told));
    EXPECT_EQ(std::vector<std::string>(), m_consumer.problems());
    const auto historical = std::count_if(told.begin(), told.end(),
                                          [](const ToldValue& each) { return each.isHistorical; });
    std::printf("values %lld, of which must have come %d; told %zu, of them historical %ld\n",
                static_cast<long long>(m_last), m_truth.required(), told.size(), long(historical));
    if (HasFailure()) {
        GTEST_FAIL() << "Repeat it with: " << runOptions().program << " --seed " << GetParam()
                     << "\n"
                     << m_history << m_trouble.site().gateway.log().toStdString();
    }
}

INSTANTIATE_TEST_SUITE_P(Seed, GatewayFaults, ::testing::ValuesIn(seedsOfRuns()),
                         ::testing::PrintToStringParamName());

class GatewayWithASmallStore : public GatewayFaults {
protected:
    GatewayWithASmallStore() : GatewayFaults(true) {}

    int dropped() { return store()[QStringLiteral("dropped")].toInt(); }
};

TEST_P(GatewayWithASmallStore, LosesTheOldestAndCountsThem)
{
    constexpr int kEnough = 200;
    constexpr int kMostSteps = 2000;
    ASSERT_TRUE(test::comesTrue([this] { return !m_consumer.told().empty(); }))
        << m_trouble.site().gateway.log().toStdString();
    m_trouble.begin(Fault::BrokerKilled, &m_truth);
    int step = 0;
    while (dropped() < kEnough && ++step < kMostSteps && !HasFatalFailure())
        setValues();
    m_trouble.end(Fault::BrokerKilled, &m_truth);
    EXPECT_TRUE(isStoreEmpty());
    setValues();
    EXPECT_TRUE(test::comesTrue([this] { return m_truth.isLastTold(m_consumer.told()); }));

    const std::vector<ToldValue> told = m_consumer.told();
    const std::vector<std::string> missing = m_truth.missing(told);
    EXPECT_FALSE(missing.empty());
    EXPECT_LE(int(missing.size()), dropped());
    EXPECT_EQ(std::vector<std::string>(), m_truth.missingAmongTheLast(told));
    EXPECT_EQ(std::vector<std::string>(), m_truth.invented(told));
    EXPECT_EQ(std::vector<std::string>(), m_consumer.problems());
    std::printf("values %lld, dropped changes %d, missing values %zu\n",
                static_cast<long long>(m_last), dropped(), missing.size());
}

INSTANTIATE_TEST_SUITE_P(Seed, GatewayWithASmallStore, ::testing::ValuesIn(seedsOfProcesses()),
                         ::testing::PrintToStringParamName());

} // namespace
} // namespace plc::faults
