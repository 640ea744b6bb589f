#ifndef PLC_TESTS_GATEWAY_E2E_GATEWAY_TRIAL_H
#define PLC_TESTS_GATEWAY_E2E_GATEWAY_TRIAL_H

#include <QtCore/QCoreApplication>

#include <algorithm>
#include <numeric>

#include "gateway/e2e/watcher.h"
#include "gateway/support/gateway_site.h"

namespace plc::test {

constexpr char kOvenProject[] = R"({
  'name': 'Oven', 'areas': [{'index': 3, 'size': 64}],
  'settings': {'staleAfter': 20000, 'replyTimeout': 20000, 'reconnectDelay': 100,
               'reconnectDelayLimit': 200},
  'scopes': [{'name': 'Oven', 'variables': [
    {'name': 'count', 'type': 'DINT', 'area': 3, 'offset': 0},
    {'name': 'target', 'type': 'INT', 'area': 3, 'offset': 4, 'unit': '°C',
     'description': 'what the oven is to reach'},
    {'name': 'fixed', 'type': 'INT', 'area': 3, 'offset': 6}]}],
  'cyclic': ['Oven.count', 'Oven.target', 'Oven.fixed']})";

/// For tests that wait for the loss of the PLC. A machine that stands still for so long is taken
/// for one, too.
inline QByteArray ovenWhoseLossIsNoticedSoon()
{
    return QByteArray(kOvenProject)
        .replace("'staleAfter': 20000", "'staleAfter': 1000")
        .replace("'replyTimeout': 20000", "'replyTimeout': 500");
}

/// A gateway of one version of MQTT at a broker; tests add PLCs and start it.
///
/// In place of a mosquitto of its own it takes the broker at PLC_BROKER_PORT, if that is set: one
/// that knows MQTT 3.1.1 alone.
class GatewayTrial : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override
    {
        if (!hasOwnBroker()) {
            if (std::string(GetParam()) != "3.1.1")
                GTEST_SKIP() << "the broker knows MQTT 3.1.1 alone";
            m_port = qEnvironmentVariable("PLC_BROKER_PORT").toInt();
        } else {
            m_broker = std::make_unique<MosquittoProcess>();
            ASSERT_TRUE(m_broker->start());
            m_port = m_broker->port();
        }
        site.addBroker({{QStringLiteral("host"), QStringLiteral("127.0.0.1")},
                        {QStringLiteral("port"), m_port},
                        {QStringLiteral("protocol"), QLatin1String(GetParam())}});
    }
    void TearDown() override
    {
        if (HasFailure())
            std::fprintf(stderr, "The gateway's log:\n%s", qPrintable(site.gateway.log()));
    }

    static bool hasOwnBroker() { return qEnvironmentVariableIsEmpty("PLC_BROKER_PORT"); }
    MosquittoProcess& broker() { return *m_broker; }
    int port() const { return m_port; }

    std::unique_ptr<Watcher> watcher(const QStringList& more = {}) const
    {
        return std::make_unique<Watcher>(
            QStringList{QStringLiteral("--port"), QString::number(m_port),
                        QStringLiteral("--group"), QStringLiteral("works"),
                        QStringLiteral("--mqtt"), QLatin1String(GetParam()).left(1)} +
            more);
    }

    /// The device's own object of the gateway's status.
    QJsonObject deviceStatus(const char* name) const
    {
        for (const QJsonValue& each : site.gateway.status()[QStringLiteral("devices")].toArray()) {
            if (each.toObject()[QStringLiteral("name")].toString() == QString::fromUtf8(name))
                return each.toObject();
        }
        return {};
    }

private:
    int m_argumentCount = 1;
    char m_name[4] = "e2e";
    char* m_arguments[2] = {m_name, nullptr};
    QCoreApplication m_application{m_argumentCount, m_arguments};
    int m_port = 0;
    std::unique_ptr<MosquittoProcess> m_broker;

protected:
    GatewaySite site;
};

/// The numbers that messages have told of a metric of a device, but births: as they came to be, or
/// as told afterwards.
inline QVector<int> numbersOf(const Watcher& consumer, const char* device, const char* name,
                              bool isHistorical)
{
    QVector<int> numbers;
    for (const QJsonObject& message : consumer.messages()) {
        if (!Watcher::is(message, "DDATA", device))
            continue;
        for (const QJsonValue& value : message[QStringLiteral("metrics")].toArray()) {
            const QJsonObject metric = value.toObject();
            if (metric[QStringLiteral("name")].toString() == QString::fromUtf8(name) &&
                metric[QStringLiteral("isHistorical")].toBool() == isHistorical)
                numbers.append(metric[QStringLiteral("value")].toInt());
        }
    }
    return numbers;
}
inline QVector<int> liveNumbers(const Watcher& consumer, const char* device, const char* name)
{
    return numbersOf(consumer, device, name, false);
}
/// Each once: what may not have arrived is told again.
inline QVector<int> historicalNumbers(const Watcher& consumer, const char* device, const char* name)
{
    QVector<int> numbers = numbersOf(consumer, device, name, true);
    numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
    return numbers;
}
inline QVector<int> countTo(int last)
{
    QVector<int> numbers(last);
    std::iota(numbers.begin(), numbers.end(), 1);
    return numbers;
}

inline auto bothVersions()
{
    return ::testing::Values("3.1.1", "5");
}
inline std::string versionName(const ::testing::TestParamInfo<const char*>& version)
{
    return std::string("Version") + version.param[0];
}

} // namespace plc::test

#endif
