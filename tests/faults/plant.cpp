#include "faults/plant.h"

#include <gtest/gtest.h>

#include <QtCore/QMap>
#include <QtCore/QStringList>

#include "faults/frames.h"

namespace plc::faults {
namespace {

const Array kWords{"word", Array::Word, 1, 2700, 20};
const Array kLongs{"long", Array::Long, 1, 2800, 10};
const Array kBits{"bit", Array::Bit, 2, 0, 16};
/// Longer than one write request carries.
const Array kBlock{"block", Array::Word, 3, 0, 600};

/// Bytes of a value that one write request carries.
constexpr int kMostBytesOfPiece = 1000;

QByteArray bigEndianBytes(quint32 number, int width)
{
    QByteArray bytes;
    for (int shift = 8 * (width - 1); shift >= 0; shift -= 8)
        bytes += char(number >> shift & 0xFF);
    return bytes;
}

QString element(const Array& array, int index)
{
    return QStringLiteral("F.%1[%2]").arg(QLatin1String(array.name)).arg(index);
}

PlannedWrite wordWrite(int index, int number)
{
    const quint32 address = quint32(kWords.address + 2 * index);
    return {element(kWords, index),
            {values::Value(quint64(number))},
            {{kWords.area, address, false, bigEndianBytes(quint32(number), 2)}},
            2,
            true};
}

PlannedWrite longWrite(int index, int number)
{
    const quint32 value = 0xA0000000u + quint32(number);
    const quint32 address = quint32(kLongs.address + 4 * index);
    return {element(kLongs, index),
            {values::Value(quint64(value))},
            {{kLongs.area, address, false, bigEndianBytes(value, 4)}},
            4,
            true};
}

PlannedWrite bitWrite(int index, bool isSet)
{
    return {element(kBits, index),
            {values::Value(isSet)},
            {{kBits.area, quint32(index), true, QByteArray(1, isSet ? '\1' : '\0')}},
            1,
            false};
}

PlannedWrite blockWrite(int number)
{
    const QByteArray word = bigEndianBytes(quint32(number), 2);
    PlannedWrite write{wholeArray(kBlock),
                       QVector<values::Value>(kBlock.elements, values::Value(quint64(number))),
                       {},
                       2,
                       true};
    for (int at = 0; at < memorySize(kBlock); at += kMostBytesOfPiece) {
        const int size = qMin(kMostBytesOfPiece, memorySize(kBlock) - at);
        write.pieces.append({kBlock.area, quint32(kBlock.address + at), false,
                             word.repeated(size / int(word.size()))});
    }
    return write;
}

} // namespace

const QVector<Array> kArrays{{"a", Array::Word, 1, 0, 300},
                             {"b", Array::Word, 1, 1000, 300},
                             {"c", Array::Word, 1, 2000, 300},
                             kWords,
                             kLongs,
                             kBits,
                             kBlock};

const QVector<Array> kStampedArrays{{"a", Array::Word, 1, 0, 300},
                                    {"b", Array::Word, 1, 600, 300},
                                    {"c", Array::Long, 1, 1200, 3},
                                    {"d", Array::Long, 1, 1212, 1},
                                    {"e", Array::Word, 1, 1218, 96},
                                    {"f", Array::Word, 1, 1790, 2},
                                    {"g", Array::Long, 1, 1796, 2},
                                    kWords,
                                    kLongs,
                                    kBits,
                                    kBlock,
                                    {"head", Array::Word, 4, 0, 1},
                                    {"full", Array::Word, 4, 2, 450},
                                    {"tail", Array::Long, 4, 902, 1},
                                    {"r0", Array::Word, 5, 0, 1},
                                    {"r1", Array::Word, 5, 2, 1},
                                    {"r2", Array::Word, 5, 4, 1},
                                    {"r3", Array::Word, 5, 6, 1}};

HostSettings randomSettings(test::Random* random)
{
    HostSettings settings;
    const int readSizes[] = {100, 200, 600, 900};
    settings.maxReadBytes = readSizes[random->below(4)];
    settings.retryLimit = random->below(3);
    return settings;
}

QByteArray projectJson(const HostSettings& settings, const QVector<Array>& arrays)
{
    static constexpr const char* kTypeNames[] = {"BIT", "UINT", "UDINT"};
    QStringList variables, cyclic, areas;
    QMap<int, int> sizes;
    for (const Array& array : arrays) {
        const int offset = array.type == Array::Bit ? 16 * array.address : array.address;
        variables += QStringLiteral(
                         "{'name':'%1','type':'%2','area':%3,'offset':%4,"
                         "'array':[[0,%5]]}")
                         .arg(QLatin1String(array.name), QLatin1String(kTypeNames[array.type]))
                         .arg(array.area)
                         .arg(offset)
                         .arg(array.elements - 1);
        cyclic += QStringLiteral("{'label':'F.%1[0]','elements':%2}")
                      .arg(QLatin1String(array.name))
                      .arg(array.elements);
        sizes[array.area] = qMax(sizes.value(array.area), array.address + memorySize(array));
    }
    for (auto size = sizes.cbegin(); size != sizes.cend(); ++size)
        areas += QStringLiteral("{'index':%1,'size':%2}").arg(size.key()).arg(size.value());
    const QString json =
        QStringLiteral(
            "{'name':'Faults','settings':{'maxReadBytes':%1,'retryLimit':%2,"
            "'connectTimeout':%3,'replyTimeout':%4,'reconnectDelay':%5,"
            "'reconnectDelayLimit':%6,'staleAfter':%7},")
            .arg(settings.maxReadBytes)
            .arg(settings.retryLimit)
            .arg(settings.connectTimeout)
            .arg(settings.replyTimeout)
            .arg(settings.reconnectDelay)
            .arg(settings.reconnectDelayLimit)
            .arg(settings.staleAfter) +
        QStringLiteral("'areas':[%1],'scopes':[{'name':'F','variables':[%2]}],'cyclic':[%3]}")
            .arg(areas.join(QLatin1Char(',')), variables.join(QLatin1Char(',')),
                 cyclic.join(QLatin1Char(',')));
    return json.toUtf8().replace('\'', '"');
}

project::Project projectOf(const HostSettings& settings, const QVector<Array>& arrays)
{
    const Expected<project::Project> project =
        project::parseProject(projectJson(settings, arrays), QStringLiteral("project"));
    if (!project)
        ADD_FAILURE() << project.error().text.toStdString();
    return project.valueOr(project::Project());
}

QString wholeArray(const Array& array)
{
    return QStringLiteral("%1*%2").arg(element(array, 0)).arg(array.elements);
}

int memorySize(const Array& array)
{
    switch (array.type) {
        case Array::Bit:
            return 2;
        case Array::Word:
            return 2 * array.elements;
        case Array::Long:
            break;
    }
    return 4 * array.elements;
}

QVector<values::Value> expectedValues(const Array& array, const QByteArray& memory)
{
    QVector<values::Value> values;
    for (int i = 0; i < array.elements; ++i) {
        if (array.type == Array::Bit)
            values.append(values::Value((bigEndian(memory, 0, 2) >> i & 1) != 0));
        else if (array.type == Array::Word)
            values.append(values::Value(quint64(bigEndian(memory, 2 * i, 2))));
        else
            values.append(values::Value(quint64(bigEndian(memory, 4 * i, 4))));
    }
    return values;
}

QByteArray memoryOf(const Array& array, const QVector<values::Value>& values)
{
    QByteArray memory;
    quint32 bits = 0;
    for (int i = 0; i < values.size(); ++i) {
        if (array.type == Array::Bit)
            bits |= quint32(std::get<bool>(values[i])) << i;
        else
            memory += bigEndianBytes(quint32(std::get<quint64>(values[i])),
                                     array.type == Array::Word ? 2 : 4);
    }
    return array.type == Array::Bit ? bigEndianBytes(bits, 2) : memory;
}

PlannedWrite anyWrite(test::Random* random, int number)
{
    switch (random->below(8)) {
        case 0:
            return blockWrite(number);
        case 1:
        case 2:
            return bitWrite(random->below(kBits.elements), random->oneIn(2));
        case 3:
        case 4:
            return longWrite(random->below(kLongs.elements), number);
        default:
            return wordWrite(random->below(kWords.elements), number);
    }
}

QVector<PlannedWrite> writesOfEachKind(int number)
{
    return {wordWrite(3, number),   wordWrite(3, number + 1), longWrite(4, number + 2),
            bitWrite(5, true),      bitWrite(6, false),       bitWrite(5, false),
            blockWrite(number + 3), wordWrite(0, number + 4)};
}

} // namespace plc::faults
