#ifndef PLC_SIMULATOR_LINE_INPUT_H
#define PLC_SIMULATOR_LINE_INPUT_H

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSocketNotifier>

#include <functional>

namespace plc::simulator {

/// Hands over the lines that arrive on a file descriptor while the event loop runs.
class LineInput : public QObject {
public:
    LineInput(int descriptor, std::function<void(const QByteArray&)> onLine);

private:
    void readMore();

    int m_descriptor;
    std::function<void(const QByteArray&)> m_onLine;
    QSocketNotifier m_notifier;
    QByteArray m_unfinished;
};

} // namespace plc::simulator

#endif
