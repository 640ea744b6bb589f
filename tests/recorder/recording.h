#ifndef PLC_TESTS_RECORDER_RECORDING_H
#define PLC_TESTS_RECORDER_RECORDING_H

#include <gmock/gmock.h>

#include <QtCore/QFile>

#include <ostream>

#include "recorder/reader.h"
#include "recorder/recorder.h"
#include "tests/support/file_test.h"

namespace plc::recorder {

inline void PrintTo(const Sample& sample, std::ostream* stream)
{
    *stream << sample.time << "gsb-"[int(sample.quality)] << sample.bytes.size() << ":"
            << sample.bytes.left(4).toHex().toStdString();
}

namespace test {

/// Recordings in a folder of their own.
class Recording : public plc::test::FileTest {
protected:
    std::unique_ptr<Recorder> open(qint64 now, const Limits& limits = {})
    {
        Expected<std::unique_ptr<Recorder>> recorder = Recorder::open(file, limits, now);
        EXPECT_TRUE(succeeds(recorder)) << error.toStdString();
        return recorder ? std::move(*recorder) : nullptr;
    }
    std::unique_ptr<Reader> read()
    {
        Expected<std::unique_ptr<Reader>> reader = Reader::open(file);
        EXPECT_TRUE(succeeds(reader)) << error.toStdString();
        return reader ? std::move(*reader) : nullptr;
    }
    void append(Recorder& recorder, const QVector<Change>& changes, qint64 now)
    {
        EXPECT_TRUE(succeeds(recorder.append(changes, now))) << error.toStdString();
    }
    History history(int series, qint64 from, qint64 to)
    {
        const Expected<History> history = read()->changes(series, from, to);
        EXPECT_TRUE(succeeds(history)) << error.toStdString();
        return history ? *history : History();
    }
    QVector<recorder::Run> runs()
    {
        const Expected<QVector<recorder::Run>> runs = read()->runs();
        EXPECT_TRUE(succeeds(runs)) << error.toStdString();
        return runs ? *runs : QVector<recorder::Run>();
    }
    /// Goes on with the file as a killed process leaves it, whose recorder is still open here.
    void leaveAsKilled()
    {
        const QString copy = path("copy%1.sqlite").arg(++m_copies);
        EXPECT_TRUE(QFile::copy(file, copy));
        EXPECT_TRUE(QFile::copy(file + QStringLiteral("-wal"), copy + QStringLiteral("-wal")));
        file = copy;
    }

    static SeriesDescription ofType(const char* label, const char* type)
    {
        SeriesDescription series;
        series.label = QString::fromUtf8(label);
        series.type = values::findIecType(QString::fromLatin1(type));
        return series;
    }
    static Change good(int series, qint64 time, const QByteArray& bytes)
    {
        return {series, {time, Quality::Good, bytes}};
    }
    static Sample gap(qint64 time) { return {time, Quality::Gap, {}}; }

    QString file = path("a.sqlite");

private:
    int m_copies = 0;
};

} // namespace test
} // namespace plc::recorder

#endif
