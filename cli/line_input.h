#ifndef PLC_CLI_LINE_INPUT_H
#define PLC_CLI_LINE_INPUT_H

#include <QtCore/QSocketNotifier>

#include "streams/line_splitter.h"

namespace plc::cli {

/// Bytes of the longest line: a write of a hundred thousand numbers is shorter.
constexpr int kLongestInputLine = 1024 * 1024;

/// Lines from the standard input, as they come, until it ends. `refuse` is called for each that is
/// too long.
class LineInput {
public:
    LineInput(streams::LineSplitter::Handle handle, streams::LineSplitter::Refuse refuse);

private:
    void read();

    streams::LineSplitter m_lines;
    QSocketNotifier m_notifier;
};

} // namespace plc::cli

#endif
