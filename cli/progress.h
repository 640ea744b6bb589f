#ifndef PLC_CLI_PROGRESS_H
#define PLC_CLI_PROGRESS_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <functional>

namespace plc::cli {

/// How far long work is, how fast it goes and how long the rest will take. Times are milliseconds
/// of any clock that only goes forward.
class ProgressMeter {
public:
    /// `total` counts the same things as the done ones later, named by `unit` ("rows"); 0 when it
    /// is not known beforehand.
    ProgressMeter(const QString& task, const QString& unit, qint64 total, qint64 now);

    void advance(qint64 done, qint64 now);
    /// Things done in a second, of late.
    double rate() const;
    /// "TASK: 42 %, 1.25k rows/s, 3 s left"; "TASK: 420 rows, 1.25k rows/s" without a total.
    QString text() const;

private:
    struct Sample {
        qint64 time;
        qint64 done;
    };

    QString m_task;
    QString m_unit;
    qint64 m_total;
    Sample m_last;
    QVector<Sample> m_samples; ///< Of late, the oldest first.
};

/// Shows long work in one line of a terminal, rewritten in place and taken away at the end. Work
/// that is soon done shows nothing.
class Progress {
public:
    using Output = std::function<void(const QByteArray&)>;

    /// On the terminal that the standard error is; if it is none, nothing is ever written.
    Progress(const QString& task, const QString& unit, qint64 total, qint64 now);
    /// Through `output`, in a line of `width` characters.
    Progress(const ProgressMeter& meter, qint64 now, Output output, int width);
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// May be called for every single step: it writes some times a second at most.
    void advance(qint64 done, qint64 now);
    /// Takes the line away: before other lines are written, and at the end.
    void clear();

private:
    ProgressMeter m_meter;
    Output m_output; ///< Empty when there is no terminal.
    int m_width;
    qint64 m_nextShow;
    bool m_isShown = false;
};

} // namespace plc::cli

#endif
