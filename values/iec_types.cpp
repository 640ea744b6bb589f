#include "values/iec_types.h"

#include <limits>

namespace plc::values {
namespace {

constexpr IecType kIecTypes[] = {
    {"BOOL", 1, 1, ValueFormat::Boolean},       {"BYTE", 2, 1, ValueFormat::Hexadecimal},
    {"SINT", 14, 1, ValueFormat::Signed},       {"USINT", 15, 1, ValueFormat::Unsigned},
    {"INT", 3, 2, ValueFormat::Signed},         {"UINT", 4, 2, ValueFormat::Unsigned},
    {"WORD", 16, 2, ValueFormat::Hexadecimal},  {"DINT", 5, 4, ValueFormat::Signed},
    {"UDINT", 6, 4, ValueFormat::Unsigned},     {"REAL", 7, 4, ValueFormat::Real},
    {"DWORD", 17, 4, ValueFormat::Hexadecimal}, {"TIME", 17, 4, ValueFormat::Duration},
    {"LREAL", 8, 8, ValueFormat::Real},         {"LINT", 9, 8, ValueFormat::Signed},
    {"ULINT", 9, 8, ValueFormat::Unsigned},     {"LWORD", 9, 8, ValueFormat::Hexadecimal},
    {"STRING", 10, 0, ValueFormat::Text},       {"WSTRING", 11, 0, ValueFormat::WideText},
    {"BIT", 13, 0, ValueFormat::Boolean},       {nullptr, 0, 0, ValueFormat::Boolean}};

} // namespace

const IecType* findIecType(const QString& name)
{
    for (const IecType* type = kIecTypes; type->name; ++type) {
        if (name == QLatin1String(type->name))
            return type;
    }
    return nullptr;
}

const IecType* findIecType(std::string_view name)
{
    for (const IecType* type = kIecTypes; type->name; ++type) {
        if (!name.empty() && name.front() == type->name[0] && name == type->name)
            return type;
    }
    return nullptr;
}

const IecType* iecTypes()
{
    return kIecTypes;
}

bool isText(const IecType& type)
{
    return type.format == ValueFormat::Text || type.format == ValueFormat::WideText;
}

bool isBit(const IecType& type)
{
    return type.code == kBitTypeCode;
}

bool isNumeric(const IecType& type)
{
    return !isText(type) && type.format != ValueFormat::Boolean;
}

IecRange iecRange(const IecType& type)
{
    const int bits = 8 * type.size;
    switch (type.format) {
        case ValueFormat::Boolean:
            return {0.0, 1.0};
        case ValueFormat::Signed: {
            const double half = double(Q_UINT64_C(1) << (bits - 1));
            return {-half, half - 1.0};
        }
        case ValueFormat::Unsigned:
        case ValueFormat::Hexadecimal:
        case ValueFormat::Duration:
            return {0.0, 2.0 * double(Q_UINT64_C(1) << (bits - 1)) - 1.0};
        case ValueFormat::Real: {
            const double highest = type.size == 4 ? double(std::numeric_limits<float>::max())
                                                  : std::numeric_limits<double>::max();
            return {-highest, highest};
        }
        case ValueFormat::Text:
        case ValueFormat::WideText:
            break;
    }
    return {0.0, 0.0};
}

} // namespace plc::values
