#ifndef PLC_PANEL_API_JSON_TEXT_H
#define PLC_PANEL_API_JSON_TEXT_H

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include <optional>

#include "host/points/data_point.h"
#include "panel/model/live_value.h"
#include "values/expected.h"
#include "values/value_text.h"

namespace plc::panel {

// JSON is appended to texts that grow: what goes to many clients many times a second is written
// once and without detours.

void appendNumber(qint64 number, QByteArray* json);
/// With all digits that tell the number from others; "null" for infinities and NaN.
void appendFiniteNumber(double number, QByteArray* json);
/// In double quotes, with JSON's escapes.
void appendText(const QString& text, QByteArray* json);
/// As a list.
void appendTexts(const QStringList& texts, QByteArray* json);
/// "null" for 0.
void appendTime(qint64 time, QByteArray* json);

/// A value as the interface has it: LINT, ULINT and LWORD as texts of digits, which browsers would
/// lose; REAL and LREAL that are no number as "nan", "inf", "-inf"; TIME in ms; several as a list;
/// null where there are no bytes.
void appendValue(const host::DataPoint& point, const QByteArray& bytes, QByteArray* json);
/// One value of the type.
void appendValue(const values::IecType& type, const values::Value& value, QByteArray* json);
/// The same of values that are not in bytes yet.
QByteArray valueText(const host::DataPoint& point, const QVector<values::Value>& values);

/// One member behind others: ,"key":
void appendKey(const char* key, QByteArray* json);
/// Members of an object, each behind a comma.
void appendMember(const char* key, const QString& text, QByteArray* json);
void appendMember(const char* key, qint64 number, QByteArray* json);
/// null: not known.
void appendTruth(const char* key, std::optional<bool> truth, QByteArray* json);

/// The values that a client means; 64-bit integers as numbers or as texts of digits.
Expected<QVector<values::Value>> valuesOfClient(const host::DataPoint& point,
                                                const QVector<values::Value>& given);

} // namespace plc::panel

#endif
