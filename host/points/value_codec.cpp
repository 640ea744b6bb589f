#include "host/points/value_codec.h"

#include "project/memory_layout.h"
#include "values/value_bits.h"
#include "values/value_check.h"

namespace plc::host {
namespace {

/// Little-endian number of `size` bytes; bytes past the end of the buffer count as 0.
quint64 readNumber(const QByteArray& buffer, int offset, int size)
{
    const char* const bytes = buffer.constData();
    quint64 number = 0;
    for (int i = qMin(size, int(buffer.size()) - offset) - 1; i >= 0; --i)
        number = number << 8 | quint8(bytes[offset + i]);
    return number;
}

void writeNumber(quint64 number, int size, char* bytes)
{
    for (int i = 0; i < size; ++i)
        bytes[i] = char(quint8(number >> (8 * i)));
}

/// Characters up to the terminating zero; of a wide text most significant byte first.
QString readText(const DataPoint& point, const QByteArray& buffer, int offset)
{
    const bool isWide = point.type->format == values::ValueFormat::WideText;
    const int width = isWide ? 2 : 1;
    QString text;
    for (int i = 0; i < point.stringLength; ++i) {
        const int position = offset + i * width;
        if (position + width > int(buffer.size()))
            break;
        ushort character = quint8(buffer[position]);
        if (isWide)
            character = ushort(character << 8 | quint8(buffer[position + 1]));
        if (character == 0)
            break;
        text += QChar(character);
    }
    return text;
}

/// The characters and the zero that ends them, which alone are sent: what lies behind it in the
/// PLC's memory is not looked at.
WriteBuffer encodeText(const DataPoint& point, const QString& text)
{
    const bool isWide = point.type->format == values::ValueFormat::WideText;
    WriteBuffer buffer;
    for (int i = 0; i <= int(text.size()); ++i) {
        const ushort character = i < int(text.size()) ? text[i].unicode() : ushort(0);
        if (isWide)
            buffer.bytes.append(char(quint8(character >> 8)));
        buffer.bytes.append(char(quint8(character & 0xFF)));
    }
    // The driver sends the whole buffer however small the count is. Rounded up, the count would
    // send a byte more, which may belong to another variable.
    buffer.count = int(buffer.bytes.size()) / 2;
    buffer.wireBytes = int(buffer.bytes.size());
    return buffer;
}

WriteBuffer encodeNumbers(const DataPoint& point, const QVector<values::Value>& values)
{
    const values::IecType& type = *point.type;
    const bool isFlag = type.format == values::ValueFormat::Boolean;
    const int size = qMax(1, type.size);
    // Types of one byte take a register of two for each element; BOOL and BIT do not.
    const int width = isFlag ? 1 : qMax(2, size);
    WriteBuffer buffer;
    buffer.bytes = QByteArray(int(values.size()) * width, Qt::Uninitialized);
    char* bytes = buffer.bytes.data();
    for (const values::Value& value : values) {
        writeNumber(values::valueBits(value), width, bytes);
        bytes += width;
    }
    buffer.count = int(values.size()) * (isFlag ? 1 : width / 2);
    buffer.wireBytes = int(values.size()) * size;
    return buffer;
}

/// What is to be written must be all of the value, and nothing beside it.
Expected<void> checkValues(const DataPoint& point, const QVector<values::Value>& values)
{
    if (!point.type)
        return Error{QStringLiteral("the data point has no type")};
    if (values::isText(*point.type) && point.elements > 1)
        return Error{QStringLiteral("texts are written one by one, each by its own label")};
    if (values.isEmpty() || int(values.size()) != point.elements) {
        const QString expected = point.elements == 1
                                     ? QStringLiteral("one value")
                                     : QStringLiteral("%1 values").arg(point.elements);
        return Error{QStringLiteral("it takes %1, not %2").arg(expected).arg(values.size())};
    }
    for (const values::Value& value : values) {
        Expected<void> checked = values::checkValue(*point.type, point.stringLength, value);
        if (!checked)
            return checked;
    }
    return {};
}

QString joined(const QStringList& texts, int elements)
{
    const QString text = texts.join(QStringLiteral(", "));
    return elements == 1 ? text : QLatin1Char('[') + text + QLatin1Char(']');
}

} // namespace

values::Value decodeValue(const DataPoint& point, const QByteArray& buffer, int index)
{
    const values::IecType& type = *point.type;
    if (values::isText(type))
        return readText(point, buffer, index * project::kTextElementStride);
    const int size = qMax(1, type.size);
    return values::valueOfBits(type, readNumber(buffer, index * size, size));
}

QVector<values::Value> decodeValues(const DataPoint& point, const QByteArray& buffer)
{
    QVector<values::Value> values;
    values.reserve(point.elements);
    for (int i = 0; i < point.elements; ++i)
        values.append(decodeValue(point, buffer, i));
    return values;
}

Expected<WriteBuffer> encodeValues(const DataPoint& point, const QVector<values::Value>& values)
{
    const Expected<void> checked = checkValues(point, values);
    if (!checked)
        return checked.error();
    if (values::isText(*point.type))
        return encodeText(point, std::get<QString>(values.first()));
    return encodeNumbers(point, values);
}

QString pointText(const DataPoint& point, const QVector<values::Value>& values)
{
    QStringList texts;
    for (const values::Value& value : values)
        texts.append(values::valueText(*point.type, value));
    return joined(texts, point.elements);
}

QString pointJson(const DataPoint& point, const QVector<values::Value>& values)
{
    QStringList texts;
    for (const values::Value& value : values)
        texts.append(values::valueJson(value));
    return joined(texts, point.elements);
}

Expected<QVector<values::Value>> parsePoint(const DataPoint& point, const QString& text)
{
    QStringList pieces{text};
    if (point.elements > 1) {
        if (values::isText(*point.type)) {
            return Error{QStringLiteral("%1: texts are written one by one, each by its own label")
                             .arg(point.text)};
        }
        QString list = text.trimmed();
        if (list.startsWith(QLatin1Char('[')) && list.endsWith(QLatin1Char(']')))
            list = list.mid(1, int(list.size()) - 2);
        pieces = list.split(QLatin1Char(','));
    }
    if (pieces.size() != point.elements) {
        return Error{QStringLiteral("%1: %2 values are expected, separated by commas, not %3")
                         .arg(point.text)
                         .arg(point.elements)
                         .arg(pieces.size())};
    }
    QVector<values::Value> values;
    for (const QString& piece : pieces) {
        const Expected<values::Value> value =
            values::parseValue(*point.type, point.stringLength, piece);
        if (!value) {
            return Error{QStringLiteral("%1: %2").arg(point.text, value.error().text)};
        }
        values.append(*value);
    }
    return values;
}

} // namespace plc::host
