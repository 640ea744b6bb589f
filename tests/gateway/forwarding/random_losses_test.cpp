#include <gtest/gtest.h>

#include <random>
#include <set>

#include "gateway/forwarding/forwarder.h"
#include "tests/gateway/forwarding/fakes.h"
#include "values/iec_types.h"

namespace plc::gateway {
namespace {

constexpr int kDevices = 3;
constexpr int kMetrics = 4;
constexpr int kSteps = 3000;

/// What a consumer makes of the texts of a TextPublisher.
class Consumer {
public:
    void see(const QString& text)
    {
        QStringList words = text.split(QLatin1Char(' '));
        if (words[0] == QLatin1String("open")) {
            m_live.clear();
        } else if (words[0] == QLatin1String("end")) {
            m_live.remove(words[1]);
        } else if (words[0] == QLatin1String("begin")) {
            m_live.insert(words[1], {});
            takeChanges(words.mid(1));
            takeLive(words.mid(1));
        } else if (words[0] == QLatin1String("old")) {
            takeChanges(words.mid(1));
        } else {
            takeChanges(words);
            takeLive(words);
        }
    }
    void loseSight() { m_live.clear(); }

    /// "a x=1@5" of each change.
    std::set<QString> changes;
    const QMap<QString, QMap<QString, QString>>& live() const { return m_live; }

private:
    void takeChanges(const QStringList& words)
    {
        for (const QString& word : words.mid(1))
            changes.insert(words[0] + QLatin1Char(' ') + word);
    }

    void takeLive(const QStringList& words)
    {
        for (const QString& word : words.mid(1)) {
            const QString value = word.section('=', 1).section('@', 0, 0);
            m_live[words[0]].insert(word.section('=', 0, 0), value);
        }
    }

    QMap<QString, QMap<QString, QString>> m_live;
};

/// Devices that change and come and go, a broker that is lost and found, a disk that fills up.
class Plant {
public:
    explicit Plant(unsigned seed) : m_random(seed)
    {
        m_publisher.hasTimesInBirths = true;
        for (int device = 0; device < kDevices; ++device) {
            Device description;
            description.name = QChar('a' + device);
            for (int metric = 0; metric < kMetrics; ++metric) {
                Metric entry;
                entry.name = QChar('p' + metric);
                entry.point.type = values::findIecType(QStringLiteral("INT"));
                description.metrics.append(entry);
                m_told[device].append({metric, 0, Quality::Stale, true, {}});
            }
            m_forwarder.addDevice(device, description, m_told[device]);
        }
    }

    void step()
    {
        m_now += chance(100);
        switch (chance(20)) {
            case 0:
                comeOrGo();
                break;
            case 1:
                connectOrLose();
                break;
            case 2:
            case 3:
                confirmSome();
                break;
            case 4:
                m_store.isFailing = chance(3) == 0;
                break;
            case 5:
                m_forwarder.wantRebirth(m_now, m_now);
                break;
            default:
                change();
        }
        if (chance(2) == 0)
            m_forwarder.tick(m_now, m_now);
    }

    /// Everything works from now on.
    void settle()
    {
        m_store.isFailing = false;
        if (!m_isConnected)
            connectOrLose();
        for (int i = 0; i < 4 || m_store.size() > 0 || m_forwarder.hasUnconfirmed(); ++i) {
            ASSERT_LT(i, 2000);
            m_now += 250;
            m_forwarder.tick(m_now, m_now);
            deliver(int(m_broker.published.size()));
            if (!m_broker.marks.isEmpty())
                m_forwarder.confirmed(m_broker.marks.last());
        }
        m_forwarder.tick(m_now, m_now);
        deliver(int(m_broker.published.size()));
    }

    void check() const
    {
        EXPECT_EQ(0u, m_store.size());
        EXPECT_EQ(0u, m_store.dropped());
        for (const QString& change : m_found)
            ASSERT_TRUE(m_consumer.changes.count(change)) << "lost: " << qPrintable(change);
        for (const QString& change : m_consumer.changes) {
            ASSERT_TRUE(m_found.count(change) || change.contains(QLatin1Char('~')))
                << "invented: " << qPrintable(change);
        }
        for (int device = 0; device < kDevices; ++device) {
            const QString name = QChar('a' + device);
            ASSERT_EQ(m_isAlive[device], m_consumer.live().contains(name)) << qPrintable(name);
            for (int metric = 0; m_isAlive[device] && metric < kMetrics; ++metric) {
                const Sample& told = m_told[device][metric];
                const QString value =
                    QLatin1String(told.quality == Quality::Good ? "" : "~") +
                    (told.bytes.isEmpty() ? QStringLiteral("?") : QString::fromLatin1(told.bytes));
                EXPECT_EQ(value, m_consumer.live()[name][QChar('p' + metric)]);
            }
        }
    }

private:
    int chance(int of) { return int(m_random() % unsigned(of)); }

    void change()
    {
        const int device = chance(kDevices);
        if (!m_isAlive[device])
            return;
        QVector<Sample> samples;
        for (int metric = 0; metric < kMetrics; ++metric) {
            if (chance(2) == 0)
                continue;
            samples.append({metric, m_now, Quality::Good, false, QByteArray::number(++m_value)});
            m_found.insert(QStringLiteral("%1 %2=%3@%4")
                               .arg(QChar('a' + device))
                               .arg(QChar('p' + metric))
                               .arg(m_value)
                               .arg(m_now));
        }
        update(device, samples);
    }
    void comeOrGo()
    {
        const int device = chance(kDevices);
        m_isAlive[device] = !m_isAlive[device];
        QVector<Sample> samples;
        if (!m_isAlive[device]) {
            for (const Sample& told : m_told[device]) {
                if (told.quality == Quality::Good)
                    samples.append({told.metric, m_now, Quality::Stale, true, told.bytes});
            }
        }
        update(device, samples);
    }
    void update(int device, const QVector<Sample>& samples)
    {
        for (const Sample& sample : samples)
            m_told[device][sample.metric] = sample;
        m_forwarder.update(device, m_isAlive[device], samples, m_now, m_now);
    }
    void connectOrLose()
    {
        m_isConnected = !m_isConnected;
        if (m_isConnected) {
            m_forwarder.connected(m_now, m_now);
            return;
        }
        // Of what is on its way anything may have arrived.
        deliver(chance(int(m_broker.published.size()) + 1));
        m_broker.published.clear();
        m_broker.marks.clear();
        m_broker.publishedAtMark.clear();
        m_consumer.loseSight();
        m_forwarder.lost(m_now);
    }
    void confirmSome()
    {
        if (m_broker.marks.isEmpty())
            return;
        const int mark = chance(int(m_broker.marks.size()));
        deliver(m_broker.publishedAtMark[mark]);
        m_forwarder.confirmed(m_broker.marks[mark]);
        m_broker.marks.remove(0, mark + 1);
        m_broker.publishedAtMark.remove(0, mark + 1);
    }
    void deliver(int count)
    {
        for (int i = 0; i < count; ++i)
            m_consumer.see(m_broker.published.takeFirst());
        for (int& at : m_broker.publishedAtMark)
            at -= qMax(count, 0);
    }

    std::mt19937 m_random;
    qint64 m_now = 1000;
    int m_value = 0;
    bool m_isConnected = false;
    bool m_isAlive[kDevices] = {};
    QVector<Sample> m_told[kDevices];
    std::set<QString> m_found;
    Consumer m_consumer;
    test::TextPublisher m_publisher;
    test::HandBroker m_broker;
    test::MemoryStore m_store;
    Forwarder m_forwarder{&m_publisher, &m_broker, &m_store, 2000, QStringLiteral("1")};
};

class RandomLosses : public testing::TestWithParam<int> {};

TEST_P(RandomLosses, ConsumerHasEveryChangeAndNoOtherAndSeesWhatIsSoNow)
{
    Plant plant(static_cast<unsigned>(GetParam()));
    for (int i = 0; i < kSteps; ++i)
        plant.step();
    plant.settle();
    plant.check();
}

INSTANTIATE_TEST_SUITE_P(Seed, RandomLosses, testing::Range(0, 20));

} // namespace
} // namespace plc::gateway
