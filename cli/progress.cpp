#include "cli/progress.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

namespace plc::cli {
namespace {

constexpr double kWholeInPercent = 100;
constexpr double kMillisecondsPerSecond = 1000;

/// The rate is that of this time, so that it follows work that becomes faster or slower.
constexpr qint64 kRateWindow = 10000;                // ms
constexpr qint64 kSampleDistance = kRateWindow / 20; // ms

constexpr qint64 kQuietStart = 500;   // ms
constexpr qint64 kShowInterval = 100; // ms

constexpr int kUsualWidth = 80;
constexpr char kClearLine[] = "\r\x1b[K";

/// Three digits that count: "7.5", "125", "1.25k", "12.5M"
QString shortNumber(double number)
{
    const char* const prefixes[] = {"", "k", "M", "G"};
    int prefix = 0;
    while (number >= 999.5 && prefix < 3) {
        number /= 1000;
        ++prefix;
    }
    return QString::number(number, 'g', 3) + QLatin1String(prefixes[prefix]);
}

/// "3 s", "2 min 5 s", "1 h 12 min"
QString timeText(double seconds)
{
    constexpr double kLongest = 1000 * 60 * 60;
    if (seconds >= kLongest)
        return QStringLiteral("more than 1000 h");
    const int whole = qRound(seconds);
    if (whole < 60)
        return QStringLiteral("%1 s").arg(whole);
    if (whole < 60 * 60)
        return QStringLiteral("%1 min %2 s").arg(whole / 60).arg(whole % 60);
    return QStringLiteral("%1 h %2 min").arg(whole / 60 / 60).arg(whole / 60 % 60);
}

bool isTerminal()
{
    return ::isatty(STDERR_FILENO) != 0 && qgetenv("TERM") != "dumb";
}

int terminalWidth()
{
    winsize size = {};
    const bool isKnown = ::ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return isKnown ? size.ws_col : kUsualWidth;
}

void writeError(const QByteArray& bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
    std::fflush(stderr);
}

} // namespace

ProgressMeter::ProgressMeter(const QString& task, const QString& unit, qint64 total, qint64 now)
    : m_task(task), m_unit(unit), m_total(total), m_last{now, 0}, m_samples{m_last}
{
}

void ProgressMeter::advance(qint64 done, qint64 now)
{
    m_last = {now, done};
    if (now - m_samples.last().time >= kSampleDistance)
        m_samples.append(m_last);
    // The one at the window's far edge stays, so that the window is covered as a whole.
    while (m_samples.size() > 2 && now - m_samples[1].time >= kRateWindow)
        m_samples.removeFirst();
}

double ProgressMeter::rate() const
{
    const Sample& first = m_samples.first();
    const qint64 time = m_last.time - first.time;
    return time > 0 ? double(m_last.done - first.done) * kMillisecondsPerSecond / double(time) : 0;
}

QString ProgressMeter::text() const
{
    const double rate = this->rate();
    const QString rateText = QStringLiteral("%1 %2/s").arg(shortNumber(rate), m_unit);
    if (m_total <= 0) {
        return QStringLiteral("%1: %2 %3, %4")
            .arg(m_task, QString::number(m_last.done), m_unit, rateText);
    }
    const qint64 done = qBound(qint64(0), m_last.done, m_total);
    // Not rounded: 100 % means done.
    const int percent = int(double(done) / double(m_total) * kWholeInPercent);
    QString text = QStringLiteral("%1: %2 %, %3").arg(m_task, QString::number(percent), rateText);
    if (rate > 0)
        text += QStringLiteral(", %1 left").arg(timeText(double(m_total - done) / rate));
    return text;
}

Progress::Progress(const QString& task, const QString& unit, qint64 total, qint64 now)
    : Progress(ProgressMeter(task, unit, total, now), now, isTerminal() ? writeError : Output(),
               terminalWidth())
{
}

Progress::Progress(const ProgressMeter& meter, qint64 now, Output output, int width)
    : m_meter(meter), m_output(std::move(output)), m_width(width), m_nextShow(now + kQuietStart)
{
}

void Progress::advance(qint64 done, qint64 now)
{
    if (!m_output)
        return;
    m_meter.advance(done, now);
    if (now < m_nextShow)
        return;
    m_nextShow = now + kShowInterval;
    m_isShown = true;
    // A full line would wrap, and the next one begin below it.
    m_output(kClearLine + m_meter.text().left(m_width - 1).toUtf8());
}

void Progress::clear()
{
    if (m_isShown)
        m_output(kClearLine);
    m_isShown = false;
}

} // namespace plc::cli
