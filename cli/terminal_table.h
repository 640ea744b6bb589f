#ifndef PLC_CLI_TERMINAL_TABLE_H
#define PLC_CLI_TERMINAL_TABLE_H

#include <QtCore/QStringList>

#include "cli/key_reader.h"
#include "host/runtime/runtime.h"

namespace plc::cli {

class TerminalView;

/// What a TerminalView shows: lays it out for the size of the terminal and takes the keys.
class TerminalTable {
public:
    virtual ~TerminalTable() = default;

    virtual void press(const Key& key, TerminalView* view) = 0;
    /// The lines for the terminal of `view`.
    virtual QStringList layOut(const TerminalView& view) const = 0;
    /// Called first of all, and whenever the terminal has another size.
    virtual void resized(int width, int height) = 0;
    /// Some values were read; refresh() need not be called for each time.
    virtual void valuesRead(const host::Runtime& runtime, qint64 now)
    {
        Q_UNUSED(runtime)
        Q_UNUSED(now)
    }
    /// Takes over the values as they are now.
    virtual void refresh(const host::Runtime& runtime, qint64 now, const TerminalView& view) = 0;
};

} // namespace plc::cli

#endif
