#ifndef PLC_VALUES_CSV_H
#define PLC_VALUES_CSV_H

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QVector>

#include "values/expected.h"

#include "values/export.h"

namespace plc::values {
namespace csv {

// Comma-separated values as RFC 4180 has them. Spreadsheets compute fields that begin with = + - @
// or a blank such as a tab; those that are no numbers get an apostrophe before them, which parse()
// takes away again.

/// The field as it stands in a row: in quotes when it holds commas, quotes or line ends.
PLC_HOST_EXPORT QString quotedField(const QString& field);

/// The fields as one row, without the line end, with marks before texts that look like formulas.
PLC_HOST_EXPORT QString row(const QStringList& fields);

struct Record {
    int line = 0; ///< Of the text, from 1, where the record begins.
    QStringList fields;
};

/// The records of a text, in which lines may end in LF, too. Empty lines are left out. An
/// error begins with the line ("line 3: ").
PLC_HOST_EXPORT Expected<QVector<Record>> parse(const QString& text);

} // namespace csv
} // namespace plc::values

#endif
