#ifndef PLC_CLI_LINE_VIEW_H
#define PLC_CLI_LINE_VIEW_H

#include "cli/run_view.h"
#include "cli/value_changes.h"

namespace plc::cli {

class JsonLine;

/// Prints line by line: values when they have changed, became stale or are fresh again, and all
/// that happens to the link and to writes.
class LineView : public RunView {
public:
    /// With `everyChange` values are printed whenever they are read, not only at each refresh().
    LineView(const QString& peer, bool json, bool everyChange)
        : m_peer(peer), m_json(json), m_everyChange(everyChange)
    {
    }

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void writeSettled(const Assignment& assignment, const host::TransferOutcome& outcome) override;
    void valueRefused(const host::DataPoint& point, int status) override;
    void message(const QString& text) override;
    void valuesRead(const host::Runtime& runtime, qint64 now) override;
    void refresh(const host::Runtime& runtime, qint64 now) override;
    void end(const host::Runtime& runtime, qint64 now) override;
    int usualInterval() const override { return 1000; }

private:
    void printValue(const host::ValueTable& values, int row, qint64 now, const QString& time) const;
    QString eventLine(const QString& text, const JsonLine& json, const QString& time) const;
    void printEvent(const QString& text, const JsonLine& json) const;

    const QString m_peer;
    const bool m_json;
    const bool m_everyChange;
    ValueChanges m_changes;
};

} // namespace plc::cli

#endif
