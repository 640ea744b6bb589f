#include "simulator/value_access.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "project/memory_layout.h"
#include "simulator/big_endian.h"
#include "values/iec_types.h"

namespace plc::simulator {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr int kWideCharacterSize = 2;

template <typename To, typename From>
To sameBits(From from)
{
    static_assert(sizeof(To) == sizeof(From), "only values of one size share their bits");
    To to;
    std::memcpy(&to, &from, sizeof to);
    return to;
}

quint64 loadBits(const PlcMemory& memory, const project::LabelTarget& place)
{
    if (values::isBit(*place.variable->type))
        return memory.readBit(place.area, quint32(place.address)) ? 1 : 0;
    const int size = place.variable->type->size;
    return bigEndianAt(memory.read(place.area, quint32(place.address), size), 0, size);
}

void storeBits(PlcMemory* memory, const project::LabelTarget& place, quint64 bits)
{
    if (values::isBit(*place.variable->type)) {
        memory->writeBit(place.area, quint32(place.address), bits != 0);
        return;
    }
    QByteArray bytes;
    appendBigEndian(&bytes, bits, place.variable->type->size);
    memory->write(place.area, quint32(place.address), bytes);
}

qint64 asSigned(quint64 bits, int size)
{
    const quint64 sign = Q_UINT64_C(1) << (8 * size - 1);
    return qint64(bits & sign ? bits | ~(sign - 1) : bits);
}

double realFromBits(quint64 bits, int size)
{
    return size == 4 ? double(sameBits<float>(quint32(bits))) : sameBits<double>(bits);
}

quint64 realToBits(double number, int size)
{
    return size == 4 ? quint64(sameBits<quint32>(float(number))) : sameBits<quint64>(number);
}

/// The 64-bit pattern of a number that is within the type's range, give or take the rounding of
/// the range's ends.
quint64 integerBits(double whole, bool isSigned)
{
    if (isSigned) {
        return whole >= kTwoTo63 ? quint64(std::numeric_limits<qint64>::max())
                                 : quint64(qint64(whole));
    }
    return whole >= 2.0 * kTwoTo63 ? std::numeric_limits<quint64>::max() : quint64(whole);
}

/// The bytes of a text that fits, filled up with zeros.
QByteArray textBytes(const QString& text, const project::Variable& variable)
{
    const bool isWide = variable.type->format == values::ValueFormat::WideText;
    QByteArray bytes;
    for (const QChar character : text)
        appendBigEndian(&bytes, character.unicode(), isWide ? kWideCharacterSize : 1);
    return bytes.leftJustified(int(project::elementSize(variable)), '\0');
}

/// The bits of a number of each kind.
struct NumberBits {
    quint64 operator()(bool value) const { return value ? 1 : 0; }
    quint64 operator()(qint64 value) const { return quint64(value); }
    quint64 operator()(quint64 value) const { return value; }
    quint64 operator()(float value) const { return sameBits<quint32>(value); }
    quint64 operator()(double value) const { return sameBits<quint64>(value); }
    quint64 operator()(const QString&) const { return 0; }
};

QString textAt(const PlcMemory& memory, const project::LabelTarget& place)
{
    const bool isWide = place.variable->type->format == values::ValueFormat::WideText;
    const int width = isWide ? kWideCharacterSize : 1;
    const QByteArray bytes =
        memory.read(place.area, quint32(place.address), int(project::elementSize(*place.variable)));
    QString text;
    for (int position = 0; position + width <= int(bytes.size()); position += width) {
        const quint16 character = quint16(bigEndianAt(bytes, position, width));
        if (character == 0)
            break;
        text += QChar(character);
    }
    return text;
}

} // namespace

double loadNumber(const PlcMemory& memory, const project::LabelTarget& place)
{
    const values::IecType& type = *place.variable->type;
    const quint64 bits = loadBits(memory, place);
    if (type.format == values::ValueFormat::Real)
        return realFromBits(bits, type.size);
    if (type.format == values::ValueFormat::Signed)
        return double(asSigned(bits, type.size));
    return double(bits);
}

void storeNumber(PlcMemory* memory, const project::LabelTarget& place, double number)
{
    const values::IecType& type = *place.variable->type;
    if (type.format == values::ValueFormat::Boolean) {
        storeBits(memory, place, number >= 0.5 ? 1 : 0);
        return;
    }
    const values::IecRange range = values::iecRange(type);
    const double limited = std::isnan(number) ? 0.0 : qBound(range.lowest, number, range.highest);
    storeBits(memory, place,
              type.format == values::ValueFormat::Real
                  ? realToBits(limited, type.size)
                  : integerBits(std::round(limited), type.format == values::ValueFormat::Signed));
}

values::Value loadValue(const PlcMemory& memory, const project::LabelTarget& place)
{
    const values::IecType& type = *place.variable->type;
    if (values::isText(type))
        return textAt(memory, place);
    const quint64 bits = loadBits(memory, place);
    switch (type.format) {
        case values::ValueFormat::Boolean:
            return bits != 0;
        case values::ValueFormat::Signed:
            return asSigned(bits, type.size);
        case values::ValueFormat::Real:
            if (type.size == int(sizeof(float)))
                return sameBits<float>(quint32(bits));
            return sameBits<double>(bits);
        default:
            return bits;
    }
}

void storeValue(PlcMemory* memory, const project::LabelTarget& place, const values::Value& value)
{
    const project::Variable& variable = *place.variable;
    if (values::isText(*variable.type)) {
        memory->write(place.area, quint32(place.address),
                      textBytes(std::get<QString>(value), variable));
    } else {
        storeBits(memory, place, std::visit(NumberBits(), value));
    }
}

QString loadText(const PlcMemory& memory, const project::LabelTarget& place)
{
    return values::valueText(*place.variable->type, loadValue(memory, place));
}

Expected<void> storeText(PlcMemory* memory, const project::LabelTarget& place, const QString& text)
{
    const Expected<values::Value> value =
        values::parseValue(*place.variable->type, place.variable->stringLength, text);
    if (!value)
        return value.error();
    storeValue(memory, place, *value);
    return {};
}

} // namespace plc::simulator
