#ifndef PLC_VALUES_IEC_TYPES_H
#define PLC_VALUES_IEC_TYPES_H

#include <QtCore/QString>

#include <string_view>

#include "values/export.h"

namespace plc::values {

/// How the bytes of a value are shown and entered.
enum class ValueFormat { Boolean, Signed, Unsigned, Hexadecimal, Real, Duration, Text, WideText };

/// One IEC 61131-3 elementary type in the driver's terms.
struct IecType {
    const char* name;
    int code; ///< the driver's type code, 1 to 17 without 12
    int size; ///< bytes of one element in PLC memory; 0 for BIT and the strings
    ValueFormat format;
};

/// The code whose addresses count bits.
constexpr int kBitTypeCode = 13;

/// Numbers that a type can hold, both ends inclusive; of the 64-bit integers as near as a double
/// comes.
struct IecRange {
    double lowest;
    double highest;
};

/// The type of this name (upper case), or null.
PLC_HOST_EXPORT const IecType* findIecType(const QString& name);
PLC_HOST_EXPORT const IecType* findIecType(std::string_view name);

/// All types, for listings and error texts; ends with a record whose name is null.
PLC_HOST_EXPORT const IecType* iecTypes();

/// Whether values are texts (STRING, WSTRING).
PLC_HOST_EXPORT bool isText(const IecType& type);

/// Whether addresses count bits (BIT).
PLC_HOST_EXPORT bool isBit(const IecType& type);

/// Whether values are numbers: neither texts nor true or false.
PLC_HOST_EXPORT bool isNumeric(const IecType& type);

/// Range of a type that is not a text.
PLC_HOST_EXPORT IecRange iecRange(const IecType& type);

} // namespace plc::values

#endif
