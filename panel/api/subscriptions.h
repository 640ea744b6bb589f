#ifndef PLC_PANEL_API_SUBSCRIPTIONS_H
#define PLC_PANEL_API_SUBSCRIPTIONS_H

#include <QtCore/QHash>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>
#include <memory>
#include <vector>

#include "panel/http/event_stream.h"
#include "panel/plants/plants.h"

namespace plc::panel {

/// A value as clients name it.
struct ValueName {
    QString plc;
    QString label;

    bool operator==(const ValueName& other) const
    {
        return plc == other.plc && label == other.label;
    }
};

/// Brings values to event streams.
///
/// 1. Subscriptions to equal lists of values share what is read of the PLC and what is written for
///    the clients: each event is made once, whoever reads it.
/// 2. A stream begins with everything, and goes on with what changes. What a client missed it does
///    not get later: a new stream begins with everything again.
/// 3. A client that does not read fast enough is cut off.
///
/// For the thread of the PLCs. Times are milliseconds since 1970-01-01T00:00:00Z.
class Subscriptions {
public:
    static constexpr qint64 kKeptIdle = 60000; ///< ms that a subscription is kept without a stream.
    static constexpr int kMostSubscriptions = 2000;
    static constexpr int kMostValues = 20000; ///< Of one subscription.
    /// Of all together, where equal lists count once.
    static constexpr int kMostInAll = 200000;
    /// Of one owner, whose equal lists count once: nobody shuts the others out.
    static constexpr int kMostOfOwner = kMostInAll / 4;
    static constexpr int kMostSubscriptionsOfOwner = kMostSubscriptions / 4;

    using Clock = std::function<qint64()>;

    Subscriptions(Plants* plants, Clock time);
    ~Subscriptions();

    struct Item {
        ValueName name;
        Plant* plant = nullptr;
        int slot = -1; ///< Of the plant; -1: there is no such value.
        QString error; ///< Why not.
    };

    /// The id of a new subscription of `owner`, whatever tells one client from another. An error:
    /// there are too many of them, or of their values.
    Expected<QString> add(const QVector<ValueName>& names, const QString& owner);
    bool remove(const QString& id);
    /// Null: there is no such subscription.
    const QVector<Item>* items(const QString& id) const;

    /// A stream of a subscription; null: there is none of this id. It is ended once `isAllowed`,
    /// which is asked each second, says so.
    std::shared_ptr<EventStream> open(const QString& id, std::function<bool()> isAllowed);

    /// See PlantListener.
    void sampled(Plant* plant, const QVector<int>& changed);
    void linkChanged(Plant* plant);
    /// An event for all streams: `data` is a JSON object.
    void tellAll(const char* event, const QByteArray& data);
    /// Once a second: a sign of life where nothing else was sent, and the end of what is idle.
    void passSecond();
    /// Ends all streams and forgets all subscriptions; before PLCs are exchanged.
    void clear();

    int streams() const;
    int size() const { return int(m_subscriptions.size()); }

private:
    struct Content;
    struct Subscription {
        std::shared_ptr<Content> content;
        QString owner;
        int streams = 0;
        qint64 idleSince = 0;
    };
    /// What one owner has.
    struct Share {
        int subscriptions = 0;
        int values = 0;
        QHash<const Content*, int> contents; ///< How many of the subscriptions have each.
    };
    struct Watch {
        Content* content;
        int index;
    };

    Expected<void> checkShare(const Content* content, int values, const QString& owner) const;
    void fillShare(const Subscription& subscription);
    void emptyShare(const Subscription& subscription);
    std::shared_ptr<Content> findContent(const QVector<ValueName>& names) const;
    std::shared_ptr<Content> addContent(const QVector<ValueName>& names);
    void makeContent(const QVector<ValueName>& names, Content* content);
    static void endWatches(QVector<Watch>* watches, const Content* content);
    void endContent(Content* content);
    void push(Content* content, const std::shared_ptr<const QByteArray>& event);
    std::shared_ptr<const QByteArray> wholeOf(Content* content);
    QByteArray hello(const QString& id, const Content& content) const;
    QByteArray linkEvent(const Plant& plant) const;
    void lostStream(const QString& id);

    Plants* const m_plants;
    const Clock m_time;
    QHash<QString, Subscription> m_subscriptions;
    QHash<QString, Share> m_shares; ///< By owners.
    std::vector<std::shared_ptr<Content>> m_contents;
    int m_values = 0;                                       ///< Of all contents.
    QHash<const Plant*, QVector<QVector<Watch>>> m_watches; ///< By slots.
    quint64 m_samples = 0; ///< So far; what was made for one of them is good until the next.
};

} // namespace plc::panel

#endif
