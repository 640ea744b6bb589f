#ifndef PLC_HOST_CLI_LINE_VIEW_H
#define PLC_HOST_CLI_LINE_VIEW_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include "host/cli/run_view.h"

namespace plc {

class JsonLine;

/// Prints line by line: values when they have changed, became stale or are fresh again, and all
/// that happens to the link and to writes.
class LineView : public RunView {
public:
    LineView(const QString& peer, bool json) : m_peer(peer), m_json(json) {}

    void linkChanged(LinkState state, const QString& reason, int retryDelay) override;
    void writeSettled(const Assignment& assignment, const TransferOutcome& outcome) override;
    void message(const QString& text) override;
    void refresh(const Runtime& runtime, qint64 now) override;
    void end(const Runtime& runtime, qint64 now) override;
    int usualInterval() const override { return 1000; }

private:
    /// A value as it was printed last.
    struct Printed {
        bool wasPrinted = false;
        bool isStale = false;
        QByteArray bytes;
    };

    void printValue(const ValueTable& values, int row, qint64 now) const;
    void printEvent(const QString& text, const JsonLine& json) const;

    const QString m_peer;
    const bool m_json;
    QVector<Printed> m_printed;
};

} // namespace plc

#endif
