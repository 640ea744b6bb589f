#ifndef PLC_SIMULATOR_FRAME_PARSER_H
#define PLC_SIMULATOR_FRAME_PARSER_H

#include <QtCore/QByteArray>

namespace plc::simulator {

/// Cuts a stream of bytes, arriving in any pieces, into frames.
class FrameParser {
public:
    enum class Outcome {
        Complete,  ///< A frame was taken out.
        NeedMore,  ///< The next frame has not arrived whole.
        NoFrame,   ///< The bytes do not begin a frame; nothing behind them can be found.
        BadLength, ///< The header announces more or less than a frame can hold.
    };

    void append(const QByteArray& bytes);

    /// Takes out the next frame. After NoFrame and BadLength the stream is of no further use.
    Outcome take(QByteArray* frame);

    int bufferedBytes() const { return int(m_buffer.size()) - m_taken; }

private:
    QByteArray m_buffer;
    int m_taken = 0; ///< Bytes at the front that belong to frames taken out.
};

} // namespace plc::simulator

#endif
