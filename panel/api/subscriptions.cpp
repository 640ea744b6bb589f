#include "panel/api/subscriptions.h"

#include <algorithm>
#include <set>
#include <utility>

#include "panel/access/secrets.h"
#include "panel/api/json_text.h"
#include "panel/api/link_json.h"

namespace plc::panel {
namespace {

const char kQualityLetters[] = "gsb";
/// Streams bear a few samples of all values, however many these are.
constexpr int kIdBytes = 8;
constexpr int kSamplesWaiting = 3;

/// Without a number (0) where it does not stand at the same place of all streams.
QByteArray eventText(quint64 number, const char* event, const QByteArray& data)
{
    QByteArray text;
    text.reserve(data.size() + 64);
    if (number > 0)
        text.append("id: ").append(QByteArray::number(number)).append('\n');
    text.append("event: ").append(event);
    return text.append("\ndata: ").append(data).append("\n\n");
}

std::shared_ptr<const QByteArray> shared(QByteArray text)
{
    return std::make_shared<const QByteArray>(std::move(text));
}

/// What stands behind the index in a row of a value.
void appendKnown(const Plant& plant, int slot, QByteArray* json)
{
    const LiveValue& value = plant.value(slot);
    json->append(',');
    appendValue(plant.point(slot), value.bytes, json);
    json->append(",\"").append(kQualityLetters[int(value.quality)]).append("\",");
    appendTime(value.time, json);
    json->append(']');
}

void appendRow(int index, const QByteArray& known, QByteArray* rows)
{
    if (!rows->isEmpty())
        rows->append(',');
    rows->append('[');
    appendNumber(index, rows);
    rows->append(known);
}

QByteArray valuesData(qint64 time, const Plant& plant, const QByteArray& rows)
{
    QByteArray data = "{";
    data.reserve(rows.size() + 128);
    appendMember("time", time, &data);
    appendMember("plc", plant.name(), &data);
    appendKey("confirmed", &data);
    appendTime(plant.confirmed().value_or(Moment()).time, &data);
    return data.append(",\"rows\":[").append(rows).append("]}");
}

} // namespace

/// What streams with equal lists of values have in common.
struct Subscriptions::Content {
    struct Stream {
        QString id;
        std::shared_ptr<EventStream> stream;
        std::function<bool()> isAllowed;
    };

    QVector<ValueName> names;
    QVector<Item> items;
    QVector<Plant*> plants; ///< Each once.
    std::vector<Stream> streams;
    int users = 0; ///< Subscriptions.
    quint64 events = 0;
    bool wasTold = false;                    ///< Since the last second.
    QByteArray rows;                         ///< Of the present sample.
    std::shared_ptr<const QByteArray> whole; ///< All values, as of sample `wholeOf`.
    quint64 wholeOf = 0;

    bool hasPlant(const Plant* plant) const
    {
        return std::find(plants.begin(), plants.end(), plant) != plants.end();
    }
};

Subscriptions::Subscriptions(Plants* plants, Clock time) : m_plants(plants), m_time(std::move(time))
{
}

Subscriptions::~Subscriptions() = default;

Expected<QString> Subscriptions::add(const QVector<ValueName>& names, const QString& owner)
{
    if (m_subscriptions.size() >= kMostSubscriptions)
        return Error{QStringLiteral("there are too many subscriptions; end some")};
    Subscription subscription;
    subscription.owner = owner;
    subscription.content = findContent(names);
    const int values = int(names.size());
    if (const auto fits = checkShare(subscription.content.get(), values, owner); !fits)
        return fits.error();
    if (!subscription.content && m_values + values > kMostInAll)
        return Error{QStringLiteral("more than %1 values would be followed; end some subscriptions")
                         .arg(kMostInAll)};
    if (!subscription.content)
        subscription.content = addContent(names);
    subscription.idleSince = m_time();
    ++subscription.content->users;
    fillShare(subscription);
    QString id = QString::fromLatin1(randomBytes(kIdBytes).toHex());
    m_subscriptions.insert(id, subscription);
    return id;
}

/// `content`: null where nobody has it yet.
Expected<void> Subscriptions::checkShare(const Content* content, int values,
                                         const QString& owner) const
{
    const Share share = m_shares.value(owner);
    if (share.subscriptions >= kMostSubscriptionsOfOwner)
        return Error{
            QStringLiteral("there are too many subscriptions of one user or address; end some")};
    if (!share.contents.contains(content) && share.values + values > kMostOfOwner)
        return Error{QStringLiteral("more than %1 values would be followed for one user or "
                                    "address; end some subscriptions")
                         .arg(kMostOfOwner)};
    return {};
}

void Subscriptions::fillShare(const Subscription& subscription)
{
    Share& share = m_shares[subscription.owner];
    ++share.subscriptions;
    const Content* const content = subscription.content.get();
    if (++share.contents[content] == 1)
        share.values += int(content->names.size());
}

void Subscriptions::emptyShare(const Subscription& subscription)
{
    Share& share = m_shares[subscription.owner];
    const Content* const content = subscription.content.get();
    if (--share.contents[content] == 0) {
        share.contents.remove(content);
        share.values -= int(content->names.size());
    }
    if (--share.subscriptions == 0)
        m_shares.remove(subscription.owner);
}

std::shared_ptr<Subscriptions::Content> Subscriptions::findContent(
    const QVector<ValueName>& names) const
{
    const auto found =
        std::find_if(m_contents.begin(), m_contents.end(),
                     [&names](const auto& content) { return content->names == names; });
    return found == m_contents.end() ? nullptr : *found;
}

std::shared_ptr<Subscriptions::Content> Subscriptions::addContent(const QVector<ValueName>& names)
{
    m_values += int(names.size());
    auto content = std::make_shared<Content>();
    makeContent(names, content.get());
    m_contents.push_back(content);
    return content;
}

void Subscriptions::makeContent(const QVector<ValueName>& names, Content* content)
{
    content->names = names;
    content->items.reserve(names.size());
    for (const ValueName& name : names) {
        Item item;
        item.name = name;
        item.plant = m_plants->find(name.plc);
        if (!item.plant) {
            item.error = QStringLiteral("there is no such PLC");
        } else if (const Expected<host::DataPoint> point = item.plant->find(name.label); point) {
            item.slot = item.plant->want(*point);
            QVector<QVector<Watch>>& watches = m_watches[item.plant];
            if (watches.size() <= item.slot)
                watches.resize(item.slot + 1);
            watches[item.slot].append({content, int(content->items.size())});
            if (!content->hasPlant(item.plant))
                content->plants.append(item.plant);
        } else {
            item.error = point.error().text;
        }
        content->items.append(item);
    }
}

void Subscriptions::endWatches(QVector<Watch>* watches, const Content* content)
{
    watches->erase(
        std::remove_if(watches->begin(), watches->end(),
                       [content](const Watch& watch) { return watch.content == content; }),
        watches->end());
}

void Subscriptions::endContent(Content* content)
{
    // A list may name one value thousands of times: those who have it are looked through once.
    std::set<std::pair<Plant*, int>> ended;
    for (const Item& item : std::as_const(content->items)) {
        if (item.slot < 0)
            continue;
        if (ended.emplace(item.plant, item.slot).second)
            endWatches(&m_watches[item.plant][item.slot], content);
        item.plant->release(item.slot);
    }
    m_values -= int(content->names.size());
    m_contents.erase(std::find_if(m_contents.begin(), m_contents.end(),
                                  [content](const auto& each) { return each.get() == content; }));
}

bool Subscriptions::remove(const QString& id)
{
    const auto found = m_subscriptions.find(id);
    if (found == m_subscriptions.end())
        return false;
    const std::shared_ptr<Content> content = found->content;
    emptyShare(*found);
    m_subscriptions.erase(found);
    for (const Content::Stream& each : content->streams) {
        if (each.id == id)
            each.stream->close();
    }
    content->streams.erase(
        std::remove_if(content->streams.begin(), content->streams.end(),
                       [&id](const Content::Stream& each) { return each.id == id; }),
        content->streams.end());
    if (--content->users == 0)
        endContent(content.get());
    return true;
}

const QVector<Subscriptions::Item>* Subscriptions::items(const QString& id) const
{
    const auto found = m_subscriptions.constFind(id);
    return found == m_subscriptions.constEnd() ? nullptr : &found->content->items;
}

std::shared_ptr<EventStream> Subscriptions::open(const QString& id, std::function<bool()> isAllowed)
{
    const auto found = m_subscriptions.find(id);
    if (found == m_subscriptions.end())
        return nullptr;
    Content* const content = found->content.get();
    const std::shared_ptr<const QByteArray> whole = wholeOf(content);
    auto stream = std::make_shared<EventStream>(
        std::max(EventStream::kMostWaiting, kSamplesWaiting * int(whole->size())));
    stream->push(shared(eventText(++content->events, "hello", hello(id, *content))));
    for (const std::unique_ptr<Plant>& plant : *m_plants)
        stream->push(shared(eventText(++content->events, "link", linkEvent(*plant))));
    if (!whole->isEmpty())
        stream->push(whole);
    content->streams.push_back({id, stream, std::move(isAllowed)});
    ++found->streams;
    return stream;
}

/// As of the last sample of each PLC, so that what changes behind it comes with the next one.
std::shared_ptr<const QByteArray> Subscriptions::wholeOf(Content* content)
{
    if (content->whole && content->wholeOf == m_samples)
        return content->whole;
    QByteArray events;
    for (const Plant* plant : std::as_const(content->plants)) {
        QByteArray rows;
        for (int index = 0; index < int(content->items.size()); ++index) {
            const Item& item = content->items[index];
            if (item.plant != plant || item.slot < 0)
                continue;
            QByteArray known;
            appendKnown(*plant, item.slot, &known);
            appendRow(index, known, &rows);
        }
        events += eventText(0, "values", valuesData(m_time(), *plant, rows));
    }
    content->whole = shared(events);
    content->wholeOf = m_samples;
    return content->whole;
}

QByteArray Subscriptions::hello(const QString& id, const Content& content) const
{
    int interval = 0;
    for (const Plant* plant : content.plants)
        interval = std::max(interval, plant->settings().cycleTime);
    QByteArray data = "{";
    appendMember("time", m_time(), &data);
    appendMember("subscription", id, &data);
    appendMember("interval", interval, &data);
    return data.append('}');
}

QByteArray Subscriptions::linkEvent(const Plant& plant) const
{
    const qint64 now = m_time();
    QByteArray data = "{";
    appendMember("time", now, &data);
    appendMember("plc", plant.name(), &data);
    appendLinkMembers(plant.link(), now, &data);
    return data.append('}');
}

void Subscriptions::sampled(Plant* plant, const QVector<int>& changed)
{
    ++m_samples;
    const QVector<QVector<Watch>> watches = m_watches.value(plant);
    QByteArray known;
    for (const int slot : changed) {
        if (slot >= watches.size() || watches[slot].isEmpty())
            continue;
        known.resize(0);
        appendKnown(*plant, slot, &known);
        for (const Watch& watch : watches[slot]) {
            if (!watch.content->streams.empty())
                appendRow(watch.index, known, &watch.content->rows);
        }
    }
    for (const std::shared_ptr<Content>& content : m_contents) {
        if (content->streams.empty() || !content->hasPlant(plant))
            continue;
        const QByteArray data = valuesData(m_time(), *plant, content->rows);
        content->rows.resize(0);
        push(content.get(), shared(eventText(++content->events, "values", data)));
    }
}

void Subscriptions::push(Content* content, const std::shared_ptr<const QByteArray>& event)
{
    content->wasTold = true;
    auto& streams = content->streams;
    for (std::size_t i = 0; i < streams.size();) {
        if (streams[i].stream->push(event)) {
            ++i;
            continue;
        }
        lostStream(streams[i].id);
        streams[i] = std::move(streams.back());
        streams.pop_back();
    }
}

void Subscriptions::lostStream(const QString& id)
{
    const auto found = m_subscriptions.find(id);
    if (found == m_subscriptions.end())
        return;
    if (--found->streams == 0)
        found->idleSince = m_time();
}

void Subscriptions::linkChanged(Plant* plant)
{
    tellAll("link", linkEvent(*plant));
}

void Subscriptions::tellAll(const char* event, const QByteArray& data)
{
    for (const std::shared_ptr<Content>& content : m_contents) {
        if (!content->streams.empty())
            push(content.get(), shared(eventText(++content->events, event, data)));
    }
}

void Subscriptions::passSecond()
{
    QByteArray data = "{";
    const qint64 now = m_time();
    appendMember("time", now, &data);
    data.append('}');
    for (const std::shared_ptr<Content>& content : m_contents) {
        // What is closed is lost with the next event.
        for (const Content::Stream& each : content->streams) {
            if (!each.isAllowed())
                each.stream->close();
        }
        if (!content->wasTold && !content->streams.empty())
            push(content.get(), shared(eventText(++content->events, "tick", data)));
        content->wasTold = false;
        // Only a new sample could use it.
        content->whole.reset();
    }
    QVector<QString> idle;
    for (auto each = m_subscriptions.constBegin(); each != m_subscriptions.constEnd(); ++each) {
        if (each->streams == 0 && now - each->idleSince >= kKeptIdle)
            idle.append(each.key());
    }
    for (const QString& id : idle)
        remove(id);
}

void Subscriptions::clear()
{
    const QList<QString> ids = m_subscriptions.keys();
    for (const QString& id : ids)
        remove(id);
    m_watches.clear();
}

int Subscriptions::streams() const
{
    int count = 0;
    for (const std::shared_ptr<Content>& content : m_contents)
        count += int(content->streams.size());
    return count;
}

} // namespace plc::panel
