#ifndef PLC_STREAMS_LINE_SPLITTER_H
#define PLC_STREAMS_LINE_SPLITTER_H

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <functional>
#include <utility>

namespace plc::streams {

/// Takes bytes, however they come in pieces, apart into lines. A line that is longer than the limit
/// is left out as a whole, and no more of it is kept than the limit.
class LineSplitter {
public:
    using Handle = std::function<void(const QString& line)>;
    using Refuse = std::function<void()>;

    /// `limit` bytes are the longest line, without its end. `handle` gets each line, `refuse` is
    /// called for each that is longer, as soon as that is known.
    LineSplitter(int limit, Handle handle, Refuse refuse)
        : m_limit(limit), m_handle(std::move(handle)), m_refuse(std::move(refuse))
    {
    }

    void feed(const QByteArray& bytes);
    /// The input has ended, perhaps without the end of a line.
    void finish();

    /// Bytes of a line whose end has not come yet.
    int pending() const { return int(m_pending.size()); }

private:
    void append(const QByteArray& part);
    void endLine();

    const int m_limit;
    const Handle m_handle;
    const Refuse m_refuse;
    QByteArray m_pending;
    bool m_isSkipping = false; ///< Up to the end of a line that is too long.
};

} // namespace plc::streams

#endif
