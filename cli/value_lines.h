#ifndef PLC_CLI_VALUE_LINES_H
#define PLC_CLI_VALUE_LINES_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "cli/assignment.h"
#include "host/points/data_point.h"
#include "host/transfers/transfer_outcome.h"

namespace plc::cli {

/// `LABEL = VALUE UNIT`
QString valueLine(const host::DataPoint& point, const QString& value);

/// "area 3 address 10", and the station where it is not 0.
QString addressText(const host::DataPoint& point);

/// The unit to be put behind a value, with a blank before it, or nothing.
QString unitText(const host::DataPoint& point);

/// A JSON object that is put together member by member, in the order of the calls.
class JsonLine {
public:
    JsonLine& add(const char* name, const QString& text);
    JsonLine& add(const char* name, qint64 number);
    JsonLine& add(const char* name, double number, int decimals);
    JsonLine& addFlag(const char* name, bool flag);
    /// `json` as it stands.
    JsonLine& addJson(const char* name, const QString& json);
    /// Label, type and, where there is one, the unit.
    JsonLine& addPoint(const host::DataPoint& point);
    /// Outcome, and for a failure its text.
    JsonLine& addOutcome(const host::TransferOutcome& outcome, const QString& text);

    QString text() const;

private:
    QStringList m_members;
};

/// `LABEL = VALUE UNIT: OUTCOME`, with the place in the PLC where it failed.
QString writeLine(const Assignment& assignment, const host::TransferOutcome& outcome);

/// Adds what became of a write.
void addWrite(const Assignment& assignment, const host::TransferOutcome& outcome, JsonLine* line);

/// A value that was read, or why it was not.
struct ReadValue {
    host::DataPoint point;
    host::TransferOutcome outcome;
    QByteArray bytes;
    bool isPieced = false; ///< The bytes are put together from several replies.
};

/// Prints it, with a failure on the standard error unless in JSON.
void printRead(const ReadValue& read, bool json);

} // namespace plc::cli

#endif
