#ifndef PLC_PANEL_ACCESS_LEAKY_BUCKETS_H
#define PLC_PANEL_ACCESS_LEAKY_BUCKETS_H

#include <QtCore/QHash>
#include <QtCore/QString>

namespace plc::panel {

/// So many at once, and one more each interval.
struct RateLimit {
    int burst = 10;
    qint64 interval = 6000; ///< ms
};

/// Limits how often something is done, apart for each name (a user, an address). The number of
/// names is bounded: where too many are counted, the one that may do most is forgotten.
///
/// Times are in ms, of a clock that never goes back.
class LeakyBuckets {
public:
    static constexpr int kMostNames = 4096;

    explicit LeakyBuckets(const RateLimit& limit) : m_limit(limit) {}

    /// Time until it may be done again; 0: now.
    qint64 wait(const QString& name, qint64 now) const;
    /// Counts it as done.
    void fill(const QString& name, qint64 now);
    /// Begins anew.
    void empty(const QString& name) { m_full.remove(name); }
    int size() const { return int(m_full.size()); }

private:
    void makeRoom(qint64 now);

    const RateLimit m_limit;
    QHash<QString, qint64> m_full; ///< When all that was filled in has leaked out.
};

} // namespace plc::panel

#endif
