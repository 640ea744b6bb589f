#include "gateway/forwarding/forwarder.h"

#include <algorithm>
#include <utility>

#include "gateway/model/metric_name.h"

namespace plc::gateway {
namespace {

constexpr int kFlushInterval = 500;       // ms
constexpr int kStoreAfter = 1000;         // ms without confirmation
constexpr int kCongestedAfter = 5000;     // ms without confirmation
constexpr qint64 kMostOnTheWay = 4 << 20; // bytes without confirmation
constexpr int kMostKept = 50000;          // changes in memory while the store does not work
constexpr int kHistoryAtOnce = 500;       // changes
constexpr int kSlowHistory = 200;         // changes, where confirmations are late
constexpr int kBirthInterval = 500;       // ms
constexpr int kOwnStateInterval = 5000;   // ms
constexpr size_t kMostOutcomes = 10000;

bool isGood(const Sample& sample)
{
    return sample.quality == Quality::Good;
}

} // namespace

Forwarder::Forwarder(Publisher* publisher, Broker* broker, ChangeStore* store, int historyRate,
                     const QString& version, TopicRecord* record)
    : m_publisher(publisher),
      m_broker(broker),
      m_store(store),
      m_historyRate(historyRate),
      m_topics(record)
{
    m_own.version = version;
}

void Forwarder::addDevice(int number, const Device& device, const QVector<Sample>& told)
{
    State state;
    state.device = device;
    state.told = told;
    for (int metric = 0; metric < int(device.metrics.size()); ++metric) {
        state.types.append(typeText(device.metrics[metric].point));
        state.metricsByName.insert(device.metrics[metric].name, metric);
    }
    m_devices[number] = std::move(state);
    m_publisher->addDevice(number, device);
}

void Forwarder::removeDevice(int number, qint64 now, qint64 time)
{
    const auto found = m_devices.find(number);
    if (found == m_devices.end())
        return;
    endDevice(number, &found->second, now, time);
    // What is on its way of it can be stored only while its names are known.
    for (const Sample& sample : m_unconfirmed.takeDevice(number))
        m_kept.append(named(number, sample));
    m_publisher->removeDevice(number);
    m_devices.erase(found);
}

void Forwarder::update(int number, bool isAlive, const QVector<Sample>& samples, qint64 now,
                       qint64 time)
{
    State& state = m_devices.at(number);
    state.isAlive = isAlive;
    for (const Sample& sample : samples)
        state.told[sample.metric] = sample;
    if (!takesLive()) {
        holdBack(number, &state, samples);
    } else if (state.isBegun) {
        publishLive(number, &state, samples, now, time);
    } else if (isAlive) {
        countLive(number, &state, samples);
        beginDevice(number, &state, now, time);
    } else {
        // That a value is stale goes without saying of a device that is away.
        for (const Sample& sample : samples) {
            if (isGood(sample))
                m_kept.append(named(number, sample));
        }
    }
    if (isAlive)
        state.isForHistory = false;
    else if (!state.isForHistory)
        endDevice(number, &state, now, time);
}

void Forwarder::tell(const WriteOutcome& outcome, qint64 now, qint64 time)
{
    if (m_isLive) {
        m_unconfirmed.addOutcome(outcome);
        publish(m_publisher->outcome(outcome, time), now);
        return;
    }
    m_outcomes.push_back(outcome);
    limitOutcomes();
}

void Forwarder::limitOutcomes()
{
    for (; m_outcomes.size() > kMostOutcomes; m_outcomes.pop_front())
        ++m_counters.lostOutcomes;
}

void Forwarder::removeStrangers(qint64 now)
{
    if (!m_isLive)
        return;
    const QVector<Message> removals =
        m_topics.removals([this](const QString& topic) { return m_publisher->isKept(topic); });
    if (removals.isEmpty())
        return;
    m_unconfirmed.addRemoval(m_topics.lastRemoval());
    publish(removals, now);
}

void Forwarder::connected(qint64 now, qint64 time, const QString& broker)
{
    m_topics.begin(broker);
    m_isConnected = true;
    m_publisher->connected();
    beginIfWanted(now, time);
}

void Forwarder::lost(qint64 now)
{
    m_isConnected = false;
    m_isLive = false;
    m_isCongested = false;
    m_isRebirthWanted = false;
    m_wasConfirmed = false;
    m_isConfirming = false;
    m_publisher->disconnected();
    keepWhatIsOnTheWay();
    for (auto& [number, state] : m_devices) {
        state.isBegun = false;
        state.isForHistory = false;
        state.heldBack.clear();
    }
    flush(now);
}

/// What is on its way may arrive or not: it goes into the store, before what was kept later.
void Forwarder::keepWhatIsOnTheWay()
{
    QVector<StoredChange> changes;
    std::deque<WriteOutcome> outcomes;
    for (const UnconfirmedSamples::Batch& batch : m_unconfirmed.takeAll()) {
        for (const UnconfirmedSamples::LiveSample& live : batch.live)
            changes.append(named(live.device, live.sample));
        outcomes.insert(outcomes.end(), batch.outcomes.begin(), batch.outcomes.end());
    }
    m_kept = changes + m_kept;
    m_outcomes.insert(m_outcomes.begin(), outcomes.begin(), outcomes.end());
    limitOutcomes();
    m_historySentTo = 0;
}

void Forwarder::confirmed(quint64 mark)
{
    m_wasConfirmed = true;
    for (const UnconfirmedSamples::Batch& batch : m_unconfirmed.take(mark)) {
        if (batch.removal > 0)
            m_topics.confirmed(batch.removal);
        if (batch.historyTo > 0)
            endHistory(batch.historyTo, batch.unsendable);
        if (batch.storedTo > 0)
            m_store->removeRange(batch.storedFrom, batch.storedTo);
    }
}

/// These have arrived, but for those that nobody could be told.
void Forwarder::endHistory(qint64 number, quint64 unsendable)
{
    if (unsendable > 0)
        m_store->countDropped(unsendable);
    m_store->removeUpTo(number);
}

void Forwarder::beginIfWanted(qint64 now, qint64 time)
{
    if (m_isConnected && !m_isLive && m_publisher->mayPublish())
        begin(now, time);
}

void Forwarder::begin(qint64 now, qint64 time)
{
    flush(now);
    m_isLive = true;
    open(now, time);
    for (auto& [number, state] : m_devices) {
        if (state.isAlive)
            beginDevice(number, &state, now, time);
    }
    for (const WriteOutcome& outcome : std::exchange(m_outcomes, {}))
        tell(outcome, now, time);
    askConfirmation();
}

void Forwarder::open(qint64 now, qint64 time)
{
    m_bornAt = now;
    // Before the node is online, which makes what is kept look like values of now.
    removeStrangers(now);
    publish(m_publisher->opening(ownState(now), time), now);
}

/// As it is, which is about to be told.
const NodeState& Forwarder::ownState(qint64 now)
{
    m_ownToldAt = now;
    m_own.stored = m_store->size();
    m_own.dropped = m_store->dropped();
    return m_own;
}

void Forwarder::beginDevice(int number, State* state, qint64 now, qint64 time)
{
    state->isBegun = true;
    state->heldBack.clear();
    publish(m_publisher->deviceBegins(number, state->told, time), now, state);
}

void Forwarder::endDevice(int number, State* state, qint64 now, qint64 time)
{
    if (!m_isLive || !state->isBegun)
        return;
    state->isBegun = false;
    state->isForHistory = false;
    publish(m_publisher->deviceEnds(number, time), now, state);
}

void Forwarder::publishLive(int number, State* state, const QVector<Sample>& samples, qint64 now,
                            qint64 time)
{
    if (samples.isEmpty())
        return;
    countLive(number, state, samples);
    publish(m_publisher->changes(number, samples, time), now, state);
}

void Forwarder::countLive(int number, State* state, const QVector<Sample>& samples)
{
    for (const Sample& sample : samples)
        m_unconfirmed.addLive(number, sample);
    m_counters.live += quint64(samples.size());
    state->counters.live += quint64(samples.size());
}

void Forwarder::holdBack(int number, State* state, const QVector<Sample>& samples)
{
    for (const Sample& sample : samples) {
        m_kept.append(named(number, sample));
        state->heldBack.insert(sample.metric);
    }
}

/// As the store takes it.
StoredChange Forwarder::named(int number, const Sample& sample) const
{
    const State& state = m_devices.at(number);
    return {0,
            state.device.name,
            state.device.metrics[sample.metric].name,
            state.types[sample.metric],
            sample.time,
            sample.quality,
            sample.isQualityNew,
            sample.bytes};
}

void Forwarder::publish(const QVector<Message>& messages, qint64 now, State* state)
{
    m_topics.note(messages);
    for (const Message& message : messages) {
        const qint64 bytes = qint64(message.topic.size()) + qint64(message.payload.size());
        m_broker->publish(message);
        m_unconfirmed.addBytes(bytes, now);
        ++m_counters.messages;
        m_counters.bytes += quint64(bytes);
    }
    if (state)
        state->counters.messages += quint64(messages.size());
}

ForwardingCounters Forwarder::counters(int number) const
{
    const auto found = m_devices.find(number);
    return found == m_devices.end() ? ForwardingCounters() : found->second.counters;
}

void Forwarder::askConfirmation()
{
    if (m_isConnected && m_unconfirmed.isGrowing())
        m_broker->askConfirmation(m_unconfirmed.endBatch());
}

void Forwarder::tick(qint64 now, qint64 time)
{
    const qint64 passed = m_lastTick < 0 ? 0 : now - m_lastTick;
    m_lastTick = now;
    m_historyBudget = std::min(m_historyBudget + double(passed) * m_historyRate / 1000.0,
                               std::max(double(kHistoryAtOnce), m_historyRate / 2.0));
    if (m_isLive) {
        if (std::exchange(m_wasConfirmed, false)) {
            m_confirmedAt = now;
            m_isConfirming = true;
        }
        m_isConfirming = m_isConfirming && now - m_confirmedAt <= kStoreAfter;
        bearAgain(now, time);
        judgeCongestion(now, time);
        sendHistory(now, time);
        endIdleDevices(now, time);
        tellOwnState(now, time);
        askConfirmation();
        storeUnconfirmed(now, kStoreAfter);
    }
    if (now - m_flushedAt >= kFlushInterval)
        flush(now);
}

void Forwarder::flush(qint64 now)
{
    m_flushedAt = now;
    if (m_kept.isEmpty())
        return;
    // What was published before goes first.
    storeUnconfirmed(now, 0);
    if (store(m_kept)) {
        m_kept.clear();
        return;
    }
    const int excess = int(m_kept.size()) - kMostKept;
    if (excess > 0) {
        m_kept.remove(0, excess);
        m_store->countDropped(quint64(excess));
    }
}

bool Forwarder::store(const QVector<StoredChange>& changes)
{
    const Expected<void> stored = m_store->append(changes);
    m_storeError = stored ? QString() : stored.error().text;
    if (stored)
        countStored(changes);
    return bool(stored);
}

void Forwarder::countStored(const QVector<StoredChange>& changes)
{
    m_counters.stored += quint64(changes.size());
    for (auto each = changes.begin(); each != changes.end();) {
        const auto end = std::find_if(each, changes.end(), [&each](const StoredChange& change) {
            return change.device != each->device;
        });
        if (const int number = numberOf(each->device); number >= 0)
            m_devices.at(number).counters.stored += quint64(end - each);
        each = end;
    }
}

/// What is only in memory is lost with the process.
void Forwarder::storeUnconfirmed(qint64 now, int olderThan)
{
    for (UnconfirmedSamples::Batch& batch : m_unconfirmed.batches()) {
        if (now - batch.begunAt < olderThan)
            return;
        QVector<StoredChange> changes;
        changes.reserve(batch.live.size());
        for (const UnconfirmedSamples::LiveSample& live : batch.live)
            changes.append(named(live.device, live.sample));
        if (changes.isEmpty() || !store(changes))
            continue;
        batch.storedTo = m_store->last();
        batch.storedFrom = batch.storedTo - changes.size() + 1;
        batch.live.clear();
    }
}

void Forwarder::judgeCongestion(qint64 now, qint64 time)
{
    if (!m_isCongested) {
        m_isCongested =
            m_unconfirmed.bytes() > kMostOnTheWay || m_unconfirmed.age(now) > kCongestedAfter;
    } else if (m_unconfirmed.isEmpty()) {
        m_isCongested = false;
        catchUp(now, time);
    }
}

/// What was held back is in the store and comes as history; what is so now is told at once.
void Forwarder::catchUp(qint64 now, qint64 time)
{
    for (auto& [number, state] : m_devices) {
        if (state.isAlive && !state.isBegun)
            beginDevice(number, &state, now, time);
        QVector<Sample> last;
        for (int metric : std::as_const(state.heldBack))
            last.append(state.told[metric]);
        state.heldBack.clear();
        if (state.isBegun && !last.isEmpty()) {
            std::sort(last.begin(), last.end(),
                      [](const Sample& a, const Sample& b) { return a.metric < b.metric; });
            publish(m_publisher->changes(number, last, time), now, &state);
        }
    }
}

/// What is in the store for the case alone that it does not arrive is no history yet.
QVector<StoredChange> Forwarder::waitingHistory(qint64 behind, int count)
{
    QVector<StoredChange> changes = m_store->oldest(behind, count);
    if (const qint64 end = m_unconfirmed.firstStored(); end > 0) {
        const auto first =
            std::find_if(changes.begin(), changes.end(),
                         [end](const StoredChange& change) { return change.number >= end; });
        changes.erase(first, changes.end());
    }
    return changes;
}

void Forwarder::sendHistory(qint64 now, qint64 time)
{
    if (m_isCongested || m_historyBudget < 1.0)
        return;
    int count = int(m_historyBudget);
    // On a slow way, too, history gets on, but no faster than it is confirmed.
    if (m_unconfirmed.age(now) > kStoreAfter) {
        if (!m_isConfirming || m_unconfirmed.hasHistory())
            return;
        count = std::min(count, kSlowHistory);
    }
    const QVector<StoredChange> changes = waitingHistory(m_historySentTo, count);
    if (changes.isEmpty())
        return;
    m_historyBudget -= double(changes.size());
    m_historySentTo = changes.last().number;
    const quint64 unsendable = sendStored(changes, now, time);
    if (!m_unconfirmed.addHistory(m_historySentTo, unsendable))
        endHistory(m_historySentTo, unsendable);
}

/// Returns how many of them no metric fits any more.
quint64 Forwarder::sendStored(const QVector<StoredChange>& changes, qint64 now, qint64 time)
{
    quint64 unsendable = 0;
    int next = 0;
    while (next < int(changes.size())) {
        const QString& device = changes[next].device;
        const int number = numberOf(device);
        QVector<Sample> samples;
        for (; next < int(changes.size()) && changes[next].device == device; ++next) {
            const StoredChange& change = changes[next];
            const State* state = number < 0 ? nullptr : &m_devices.at(number);
            const int metric = state ? state->metricsByName.value(change.metric, -1) : -1;
            if (metric >= 0 && state->types[metric] == change.type)
                samples.append(
                    {metric, change.time, change.quality, change.isQualityNew, change.bytes});
            else
                ++unsendable;
        }
        if (!samples.isEmpty())
            sendHistoryOf(number, samples, now, time);
    }
    return unsendable;
}

void Forwarder::sendHistoryOf(int number, const QVector<Sample>& samples, qint64 now, qint64 time)
{
    State& state = m_devices.at(number);
    if (!state.isBegun) {
        state.isForHistory = !state.isAlive;
        beginDevice(number, &state, now, time);
    }
    m_counters.historical += quint64(samples.size());
    state.counters.historical += quint64(samples.size());
    publish(m_publisher->history(number, samples, time), now, &state);
}

void Forwarder::endIdleDevices(qint64 now, qint64 time)
{
    if (!waitingHistory(0, 1).isEmpty())
        return;
    for (auto& [number, state] : m_devices) {
        if (!state.isAlive)
            endDevice(number, &state, now, time);
    }
}

void Forwarder::wantRebirth(qint64 now, qint64 time)
{
    m_isRebirthWanted = true;
    bearAgain(now, time);
}

void Forwarder::bearAgain(qint64 now, qint64 time)
{
    // A broker that does not keep up would have births pile up here.
    if (!takesLive() || !m_isRebirthWanted || now - m_bornAt < kBirthInterval)
        return;
    m_isRebirthWanted = false;
    open(now, time);
    for (auto& [number, state] : m_devices) {
        if (state.isBegun)
            beginDevice(number, &state, now, time);
    }
}

void Forwarder::tellOwnState(qint64 now, qint64 time)
{
    if (now - m_ownToldAt < kOwnStateInterval)
        return;
    publish(m_publisher->nodeChanges(ownState(now), time), now);
}

bool Forwarder::isBegun(int number) const
{
    const auto found = m_devices.find(number);
    return found != m_devices.end() && found->second.isBegun;
}

int Forwarder::numberOf(const QString& device) const
{
    for (const auto& [number, state] : m_devices) {
        if (state.device.name == device)
            return number;
    }
    return -1;
}

} // namespace plc::gateway
