// Makes the recording that handover_test.sh gives to other engines.

#include <QtCore/QDateTime>

#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

#include "recorder/recorder.h"

namespace plc::recorder {
namespace test {
namespace {

constexpr qint64 kStart = (20778LL * 86400 + 6 * 3600) * 1000; // 2026-11-21T06:00:00Z

SeriesDescription ofType(const char* label, const char* type)
{
    SeriesDescription series;
    series.source = QStringLiteral("Dairy, line = \"2\"");
    series.label = QString::fromUtf8(label);
    series.type = values::findIecType(QString::fromLatin1(type));
    series.unit = QStringLiteral("m³/h");
    return series;
}

template <typename Number>
QByteArray bytesOf(Number number)
{
    return QByteArray(reinterpret_cast<const char*>(&number), int(sizeof number));
}

QByteArray wideBytes(const QString& text)
{
    QByteArray bytes;
    for (const QChar character : text)
        bytes.append(char(character.row())).append(char(character.cell()));
    return bytes.append('\0').append('\0');
}

class Example {
public:
    explicit Example(Recorder* recorder) : m_recorder(recorder) {}

    bool make()
    {
        SeriesDescription text = ofType("P.text", "WSTRING");
        text.stringLength = 40;
        SeriesDescription list = ofType("P.list[1]*3", "INT");
        list.elements = 3;
        const int count = m_recorder->series(ofType("P.count", "ULINT"));
        const int real = m_recorder->series(ofType("P.real", "LREAL"));
        for (qint64 i = 0; i < 1000; ++i) {
            add(count, i * 1000, bytesOf(quint64(i)));
            add(real, i * 1000, bytesOf(0.5 * double(i)));
        }
        m_changes.append({count, {kStart + 1000000, Quality::Stale, bytesOf(quint64(999))}});
        constexpr double kInfinity = std::numeric_limits<double>::infinity();
        add(real, 1000000, bytesOf(std::nan("")));
        add(real, 1001000, bytesOf(kInfinity));
        add(real, 1002000, bytesOf(-kInfinity));
        add(m_recorder->series(ofType("P.large", "LINT")), 0, bytesOf(9007199254740993LL));
        add(m_recorder->series(ofType("P.huge", "ULINT")), 0, bytesOf(~quint64(0)));
        add(m_recorder->series(text), 0, wideBytes(QStringLiteral("say \"1,2=3\"\\ \nü€")));
        add(m_recorder->series(list), 0,
            bytesOf(qint16(1)) + bytesOf(qint16(-2)) + bytesOf(qint16(3)));
        const int fast = m_recorder->series(ofType("P.fast", "INT"));
        for (qint16 i = 1; i <= 3; ++i)
            add(fast, 500, bytesOf(i));
        add(m_recorder->series(ofType("odd, = name", "INT")), 0, bytesOf(qint16(7)));
        return m_recorder->append(m_changes, kStart + 1003000) && m_recorder->end(kStart + 1003000);
    }

private:
    void add(int series, qint64 time, const QByteArray& bytes)
    {
        m_changes.append({series, {kStart + time, Quality::Good, bytes}});
    }

    Recorder* const m_recorder;
    QVector<Change> m_changes;
};

} // namespace
} // namespace test
} // namespace plc::recorder

int main(int count, char** arguments)
{
    using namespace plc::recorder;
    const auto recorder =
        count == 2 ? Recorder::open(QString::fromLocal8Bit(arguments[1]), Limits(), test::kStart)
                   : plc::Error{QStringLiteral("usage: example_recording FILE")};
    if (!recorder) {
        std::fprintf(stderr, "%s\n", recorder.error().text.toLocal8Bit().constData());
        return 2;
    }
    return test::Example(recorder->get()).make() ? 0 : 1;
}
