#ifndef PLC_BENCH_REPORT_MEASUREMENTS_H
#define PLC_BENCH_REPORT_MEASUREMENTS_H

#include <QtCore/QJsonObject>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace plc {
namespace bench {

/// What one benchmark showed: the medians of its repetitions, a call.
struct Measurement {
    double time = 0;        ///< Processor time in nanoseconds.
    double leastTime = 0;   ///< That of the repetition that other processes disturbed least.
    double variables = 0;   ///< Variables that a call touches.
    double allocations = 0; ///< Calls of the allocator.
    double bytes = 0;       ///< Bytes asked of it.
    double held = 0;        ///< Bytes of heap held in the end; 0 where that is not the question.

    double timePerVariable() const { return time / variables; }
};

/// The measurements of one run, by the names of the benchmarks.
class Measurements {
public:
    /// From the JSON that the benchmarks write. Ends the program when it cannot be read.
    static Measurements fromFile(const QString& path);

    bool contains(const QString& name) const { return m_byName.contains(name); }
    Measurement operator[](const QString& name) const { return m_byName.value(name); }
    /// The names up to the last slash, in the order of the run.
    const QStringList& works() const { return m_works; }
    QString qtVersion() const { return m_qtVersion; }
    /// "qt5" or "qt6".
    QString qtMajor() const;

private:
    QMap<QString, Measurement> m_byName;
    QStringList m_works;
    QString m_qtVersion;
};

[[noreturn]] void giveUp(const QString& message);

/// The JSON object in a file. Ends the program when there is none.
QJsonObject readObject(const QString& path);

} // namespace bench
} // namespace plc

#endif
