#include "values/value_bits.h"

#include <cstring>

namespace plc::values {
namespace {

constexpr int kMostBits = 64;

template <typename To, typename From>
To sameBits(From from)
{
    static_assert(sizeof(To) == sizeof(From), "the bits are taken as they are");
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

struct Bits {
    quint64 operator()(bool value) const { return value ? 1 : 0; }
    quint64 operator()(qint64 value) const { return quint64(value); }
    quint64 operator()(quint64 value) const { return value; }
    quint64 operator()(float value) const { return sameBits<quint32>(value); }
    quint64 operator()(double value) const { return sameBits<quint64>(value); }
    quint64 operator()(const QString&) const { return 0; }
};

} // namespace

quint64 valueBits(const Value& value)
{
    return std::visit(Bits(), value);
}

Value valueOfBits(const IecType& type, quint64 bits)
{
    // A BIT has no size.
    const int unused = kMostBits - 8 * qMax(1, type.size);
    switch (type.format) {
        case ValueFormat::Boolean:
            return bits != 0;
        case ValueFormat::Signed:
            return qint64(bits << unused) >> unused;
        case ValueFormat::Real:
            if (type.size == int(sizeof(float)))
                return sameBits<float>(quint32(bits));
            return sameBits<double>(bits);
        default:
            return bits << unused >> unused;
    }
}

} // namespace plc::values
