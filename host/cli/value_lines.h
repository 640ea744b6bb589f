#ifndef PLC_HOST_CLI_VALUE_LINES_H
#define PLC_HOST_CLI_VALUE_LINES_H

#include <QtCore/QString>
#include <QtCore/QStringList>

#include "host/cli/assignment.h"
#include "host/data_point.h"
#include "host/transfer_outcome.h"

namespace plc {

/// `LABEL = VALUE UNIT`
QString valueLine(const DataPoint& point, const QString& value);

/// "area 3 address 10", and the station where it is not 0.
QString addressText(const DataPoint& point);

/// The unit to be put behind a value, with a blank before it, or nothing.
QString unitText(const DataPoint& point);

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
    JsonLine& addPoint(const DataPoint& point);
    /// Outcome, and for a failure its text.
    JsonLine& addOutcome(const TransferOutcome& outcome, const QString& text);

    QString text() const;

private:
    QStringList m_members;
};

/// `LABEL = VALUE UNIT: OUTCOME`, with the place in the PLC where it failed.
QString writeLine(const Assignment& assignment, const TransferOutcome& outcome);

/// Adds what became of a write.
void addWrite(const Assignment& assignment, const TransferOutcome& outcome, JsonLine* line);

/// Prints a value that was read, with its failure on the standard error unless in JSON.
void printRead(const DataPoint& point, const QByteArray& bytes, const TransferOutcome& outcome,
               bool json);

} // namespace plc

#endif
