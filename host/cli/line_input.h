#ifndef PLC_HOST_CLI_LINE_INPUT_H
#define PLC_HOST_CLI_LINE_INPUT_H

#include <QtCore/QSocketNotifier>

#include "host/cli/line_splitter.h"

namespace plc {

/// Bytes of the longest line: a write of a hundred thousand numbers is shorter.
constexpr int kLongestInputLine = 1024 * 1024;

/// Lines from the standard input, as they come, until it ends. `refuse` is called for each that is
/// too long.
class LineInput {
public:
    LineInput(LineSplitter::Handle handle, LineSplitter::Refuse refuse);

private:
    void read();

    LineSplitter m_lines;
    QSocketNotifier m_notifier;
};

} // namespace plc

#endif
