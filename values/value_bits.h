#ifndef PLC_VALUES_VALUE_BITS_H
#define PLC_VALUES_VALUE_BITS_H

#include "values/iec_types.h"
#include "values/value_text.h"

namespace plc::values {

/// The bits of a number, those of a negative one in all 64; 0 for a text.
quint64 valueBits(const Value& value);

/// The number of a type, which is no text, of its bits. Those above the size of the type are not
/// looked at.
Value valueOfBits(const IecType& type, quint64 bits);

} // namespace plc::values

#endif
