#include "host/report/latency_histogram.h"

#include <algorithm>
#include <cmath>

namespace plc::host {
namespace {

/// Classes from one power of two to the next.
constexpr int kClassBits = 7;
constexpr qint64 kClasses = qint64(1) << kClassBits;
/// Below this every time is a class of its own.
constexpr qint64 kFine = 2 * kClasses;
/// More than an hour; longer times count as this.
constexpr int kLongestBits = 42;
constexpr qint64 kLongest = (qint64(1) << kLongestBits) - 1;
constexpr size_t kSize = size_t(kFine + (kLongestBits - kClassBits - 1) * kClasses);

/// Bits by which a time of `nanoseconds` is coarser than its class number.
int shiftOf(qint64 nanoseconds)
{
    int shift = 0;
    while ((nanoseconds >> shift) >= kFine)
        ++shift;
    return shift;
}

size_t classOf(qint64 nanoseconds)
{
    const int shift = shiftOf(nanoseconds);
    return size_t(shift * kClasses + (nanoseconds >> shift));
}

qint64 longestOfClass(size_t index)
{
    if (qint64(index) < kFine)
        return qint64(index);
    const int shift = int(qint64(index) / kClasses) - 1;
    const qint64 first = qint64(index) - shift * kClasses;
    return ((first + 1) << shift) - 1;
}

} // namespace

LatencyHistogram::LatencyHistogram() : m_counts(kSize) {}

void LatencyHistogram::add(qint64 nanoseconds)
{
    ++m_counts[classOf(qBound<qint64>(0, nanoseconds, kLongest))];
    ++m_count;
    m_longest = std::max(m_longest, nanoseconds);
}

qint64 LatencyHistogram::percentile(double share) const
{
    const quint64 rank = quint64(std::max(1.0, std::ceil(share * double(m_count))));
    quint64 passed = 0;
    for (size_t i = 0; i < m_counts.size(); ++i) {
        passed += m_counts[i];
        if (passed >= rank)
            return std::min(longestOfClass(i), m_longest);
    }
    return m_longest;
}

} // namespace plc::host
