#ifndef PLC_RECORDER_EXACT_NUMBER_H
#define PLC_RECORDER_EXACT_NUMBER_H

#include <QtCore/QtGlobal>

#include <optional>

#include "values/iec_types.h"
#include "values/value_text.h"

namespace plc::recorder {

/// A number, exact also where it has more digits than a double. A whole number of 64 bits is at
/// most 1,024 away from the nearest double, and no larger one has a smaller nearest double: so they
/// are ordered by both.
struct ExactNumber {
    double nearest = 0;
    qint16 rest = 0; ///< What it is more than that.
};

inline bool operator<(const ExactNumber& a, const ExactNumber& b)
{
    return a.nearest < b.nearest || (a.nearest == b.nearest && a.rest < b.rest);
}

inline bool operator==(const ExactNumber& a, const ExactNumber& b)
{
    return a.nearest == b.nearest && a.rest == b.rest;
}

/// Nothing of texts, infinities and NaN.
std::optional<ExactNumber> exactNumber(const values::Value& value);

/// The value of the type whose number it is.
values::Value valueOf(const values::IecType& type, const ExactNumber& number);

} // namespace plc::recorder

#endif
