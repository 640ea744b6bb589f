#ifndef PLC_STREAMS_LINE_INPUT_H
#define PLC_STREAMS_LINE_INPUT_H

#include <QtCore/QSocketNotifier>

#include "streams/line_splitter.h"

namespace plc::streams {

/// Bytes of the longest line: a write of a hundred thousand numbers is shorter.
constexpr int kLongestInputLine = 1024 * 1024;

/// Hands over the lines of a file descriptor while the event loop runs, until it ends; what stands
/// behind the last line end is a line too. A terminal that another job has in use is not read.
class LineInput {
public:
    /// `refuse` is called for each line that is too long.
    LineInput(int descriptor, LineSplitter::Handle handle, LineSplitter::Refuse refuse);

private:
    void read();

    const int m_descriptor;
    LineSplitter m_lines;
    QSocketNotifier m_notifier;
};

} // namespace plc::streams

#endif
