#include "streams/line_splitter.h"

namespace plc::streams {

void LineSplitter::feed(const QByteArray& bytes)
{
    int start = 0;
    for (;;) {
        const int end = int(bytes.indexOf('\n', start));
        if (end < 0)
            break;
        append(bytes.mid(start, end - start));
        endLine();
        start = end + 1;
    }
    append(bytes.mid(start));
}

void LineSplitter::finish()
{
    if (!m_pending.isEmpty())
        endLine();
    m_isSkipping = false;
}

void LineSplitter::append(const QByteArray& part)
{
    if (m_isSkipping)
        return;
    if (m_pending.size() + part.size() <= m_limit) {
        m_pending += part;
        return;
    }
    m_isSkipping = true;
    m_pending = QByteArray();
    m_refuse();
}

void LineSplitter::endLine()
{
    if (!std::exchange(m_isSkipping, false))
        m_handle(QString::fromUtf8(std::exchange(m_pending, QByteArray())));
}

} // namespace plc::streams
