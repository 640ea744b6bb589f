#include "simulator/value_access.h"

#include <cmath>
#include <limits>
#include <optional>
#include <type_traits>

#include "project/memory_layout.h"
#include "simulator/big_endian.h"
#include "values/iec_types.h"
#include "values/value_bits.h"

namespace plc::simulator {
namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;
constexpr int kWideCharacterSize = 2;

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
    return std::visit(
        [](const auto& held) {
            if constexpr (std::is_same_v<std::decay_t<decltype(held)>, QString>)
                return 0.0;
            else
                return double(held);
        },
        loadValue(memory, place));
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
    if (type.format != values::ValueFormat::Real)
        storeBits(memory, place,
                  integerBits(std::round(limited), type.format == values::ValueFormat::Signed));
    else if (type.size == int(sizeof(float)))
        storeBits(memory, place, values::valueBits(float(limited)));
    else
        storeBits(memory, place, values::valueBits(limited));
}

values::Value loadValue(const PlcMemory& memory, const project::LabelTarget& place)
{
    const values::IecType& type = *place.variable->type;
    if (values::isText(type))
        return textAt(memory, place);
    return values::valueOfBits(type, loadBits(memory, place));
}

void storeValue(PlcMemory* memory, const project::LabelTarget& place, const values::Value& value)
{
    const project::Variable& variable = *place.variable;
    if (values::isText(*variable.type)) {
        memory->write(place.area, quint32(place.address),
                      textBytes(std::get<QString>(value), variable));
    } else {
        storeBits(memory, place, values::valueBits(value));
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
