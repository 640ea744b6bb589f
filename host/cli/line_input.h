#ifndef PLC_HOST_CLI_LINE_INPUT_H
#define PLC_HOST_CLI_LINE_INPUT_H

#include <QtCore/QByteArray>
#include <QtCore/QSocketNotifier>
#include <QtCore/QString>

#include <functional>

namespace plc {

/// Lines from the standard input, as they come, until it ends.
class LineInput {
public:
    explicit LineInput(std::function<void(const QString&)> handle);

private:
    void read();

    std::function<void(const QString&)> m_handle;
    QSocketNotifier m_notifier;
    QByteArray m_pending;
};

} // namespace plc

#endif
