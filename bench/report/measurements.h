#ifndef PLC_BENCH_REPORT_MEASUREMENTS_H
#define PLC_BENCH_REPORT_MEASUREMENTS_H

#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <algorithm>
#include <vector>

namespace plc::bench {

/// What one benchmark showed in one round, a call.
struct Measurement {
    double time = 0;        ///< Processor time in nanoseconds.
    double variables = 1;   ///< Variables that a call touches.
    double allocations = 0; ///< Calls of the allocator.
    double bytes = 0;       ///< Bytes asked of it.
    double held = 0;        ///< Bytes of heap held in the end; 0 where that is not the question.
};

/// The measurements of one round, by the names of the benchmarks.
using Round = QMap<QString, Measurement>;

/// Several rounds of the same benchmarks. What is compared stands side by side in each round, so
/// that other processes disturb both sides alike; of what the rounds show the median counts.
class Measurements {
public:
    /// From the JSON files that the benchmarks write, one a round. Ends the program when one cannot
    /// be read.
    explicit Measurements(const QStringList& paths);

    bool contains(const QString& name) const { return m_rounds.front().contains(name); }
    /// The names up to the last slash, in the order of the run.
    const QStringList& works() const { return m_works; }
    QString qtVersion() const { return m_qtVersion; }
    /// "qt5" or "qt6".
    QString qtMajor() const;

    /// The median of `valueOf(round)` over the rounds.
    template <typename ValueOf>
    double median(ValueOf valueOf) const
    {
        std::vector<double> values;
        for (const Round& round : m_rounds)
            values.push_back(valueOf(round));
        const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
        std::nth_element(values.begin(), middle, values.end());
        return *middle;
    }
    /// The median ratio of the times of two benchmarks; 0 when one of them is not in the run.
    double timeRatio(const QString& name, const QString& other) const;

private:
    void addRound(const QString& path);

    std::vector<Round> m_rounds;
    QStringList m_works;
    QString m_qtVersion;
};

[[noreturn]] void giveUp(const QString& message);

/// The JSON object in a file. Ends the program when there is none.
QJsonObject readObject(const QString& path);

} // namespace plc::bench

#endif
