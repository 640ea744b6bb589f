#include "simulator/value_access.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "project/memory_layout.h"
#include "simulator/big_endian.h"
#include "values/iec_types.h"
#include "values/nearest_name.h"

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

/// A number as entered: decimal, or with a base in front as in 16#ff.
std::optional<quint64> parseInteger(const QString& text, const values::IecType& type)
{
    const bool isSigned = type.format == values::ValueFormat::Signed;
    const int baseEnd = int(text.indexOf(QLatin1Char('#')));
    const int base = baseEnd < 0 ? 10 : text.left(baseEnd).toInt();
    if (base != 2 && base != 8 && base != 10 && base != 16)
        return {};
    const QString digits = text.mid(baseEnd + 1);
    bool converted = false;
    quint64 bits = 0;
    if (isSigned) {
        const qint64 number = digits.toLongLong(&converted, base);
        bits = quint64(number);
        converted = converted && asSigned(bits, type.size) == number;
    } else {
        bits = digits.toULongLong(&converted, base);
        converted = converted && (type.size == 8 || bits >> (8 * type.size) == 0);
    }
    return converted ? std::optional<quint64>(bits) : std::nullopt;
}

std::optional<quint64> parseBits(const QString& text, const values::IecType& type)
{
    if (type.format == values::ValueFormat::Boolean) {
        const QString lower = text.toLower();
        if (lower == QLatin1String("true") || lower == QLatin1String("1"))
            return quint64(1);
        if (lower == QLatin1String("false") || lower == QLatin1String("0"))
            return quint64(0);
        return {};
    }
    if (type.format != values::ValueFormat::Real)
        return parseInteger(text, type);
    bool converted = false;
    const double number = text.toDouble(&converted);
    const values::IecRange range = values::iecRange(type);
    if (!converted || !(number >= range.lowest && number <= range.highest))
        return {};
    return realToBits(number, type.size);
}

/// The bytes of a text, filled up with zeros; nothing if it does not fit.
std::optional<QByteArray> textBytes(const QString& text, const project::Variable& variable)
{
    if (text.size() > variable.stringLength)
        return {};
    const bool isWide = variable.type->format == values::ValueFormat::WideText;
    QByteArray bytes;
    for (const QChar character : text) {
        if (!isWide && character.unicode() > 0xff)
            return {};
        appendBigEndian(&bytes, character.unicode(), isWide ? kWideCharacterSize : 1);
    }
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

QString loadText(const PlcMemory& memory, const project::LabelTarget& place)
{
    const values::IecType& type = *place.variable->type;
    if (values::isText(type))
        return textAt(memory, place);
    const quint64 bits = loadBits(memory, place);
    switch (type.format) {
        case values::ValueFormat::Boolean:
            return bits != 0 ? QStringLiteral("true") : QStringLiteral("false");
        case values::ValueFormat::Signed:
            return QString::number(asSigned(bits, type.size));
        case values::ValueFormat::Hexadecimal:
            return QStringLiteral("16#%1").arg(bits, 2 * type.size, 16, QLatin1Char('0'));
        case values::ValueFormat::Real:
            return QString::number(realFromBits(bits, type.size), 'g', type.size == 4 ? 7 : 15);
        default:
            return QString::number(bits);
    }
}

bool storeText(PlcMemory* memory, const project::LabelTarget& place, const QString& text,
               QString* error)
{
    const project::Variable& variable = *place.variable;
    if (values::isText(*variable.type)) {
        const std::optional<QByteArray> bytes = textBytes(text, variable);
        if (bytes) {
            memory->write(place.area, quint32(place.address), *bytes);
            return true;
        }
    } else if (const std::optional<quint64> bits = parseBits(text, *variable.type)) {
        storeBits(memory, place, *bits);
        return true;
    }
    *error =
        QStringLiteral("%1 is no value of type %2%3")
            .arg(values::quoted(text), QLatin1String(variable.type->name),
                 values::isText(*variable.type) ? QStringLiteral("(%1)").arg(variable.stringLength)
                                                : QString());
    return false;
}

} // namespace plc::simulator
