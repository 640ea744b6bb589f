#include "simulator/line_input.h"

#include <unistd.h>

namespace plc::simulator {
namespace {

constexpr int kLongestLine = 64 * 1024;

} // namespace

LineInput::LineInput(int descriptor, std::function<void(const QByteArray&)> onLine)
    : m_descriptor(descriptor),
      m_onLine(std::move(onLine)),
      m_notifier(descriptor, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { readMore(); });
}

void LineInput::readMore()
{
    QByteArray bytes(kLongestLine, '\0');
    const ssize_t count = ::read(m_descriptor, bytes.data(), size_t(bytes.size()));
    if (count <= 0 || m_unfinished.size() > kLongestLine) {
        // The end, a terminal that belongs to others, or no lines at all.
        m_notifier.setEnabled(false);
        return;
    }
    m_unfinished.append(bytes.constData(), int(count));
    int start = 0;
    for (int end = int(m_unfinished.indexOf('\n')); end >= 0;
         end = int(m_unfinished.indexOf('\n', start))) {
        m_onLine(m_unfinished.mid(start, end - start));
        start = end + 1;
    }
    m_unfinished.remove(0, start);
}

} // namespace plc::simulator
