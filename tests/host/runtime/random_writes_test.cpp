#include <cmath>
#include <cstring>
#include <limits>
#include <map>

#include "project/memory_layout.h"
#include "tests/host/host_fixture.h"
#include "tests/support/random.h"

namespace plc::host::test {
namespace {

using plc::test::Random;

/// The memory of a PLC with the areas of the test project.
class Memory {
public:
    explicit Memory(Random* random)
    {
        for (const auto& [area, size] :
             {std::pair(0, 256), std::pair(1, 1024), std::pair(2, 16384)})
            for (int i = 0; i < size; ++i)
                m_areas[area].append(char(quint8(random->bits())));
    }

    QByteArray bytes(int area, qint64 address, int count) const
    {
        return m_areas.at(area).mid(int(address), count);
    }
    bool bit(int area, qint64 offset) const
    {
        const project::BitPlace place = project::bitPlace(offset);
        return (quint8(m_areas.at(area)[int(place.byte)]) >> place.bit & 1) != 0;
    }
    void write(const FramePlace& entry, const QByteArray& data)
    {
        QByteArray& area = m_areas.at(entry.area);
        if (!entry.isBit) {
            EXPECT_LE(int(entry.address + entry.length), int(area.size()));
            area.replace(int(entry.address), int(entry.length), data);
            return;
        }
        const project::BitPlace place = project::bitPlace(entry.address);
        const auto mask = quint8(1U << place.bit);
        const auto rest = quint8(quint8(area[int(place.byte)]) & ~mask);
        area[int(place.byte)] = char(data[0] != 0 ? rest | mask : rest);
    }
    /// Makes bytes like those of `other`.
    void take(const Memory& other, int area, qint64 address, int count)
    {
        m_areas.at(area).replace(int(address), count, other.bytes(area, address, count));
    }
    void setBit(int area, qint64 offset, bool value)
    {
        write({quint16(area), quint32(offset), 1, true}, QByteArray(1, value ? 1 : 0));
    }
    bool operator==(const Memory& other) const { return m_areas == other.m_areas; }

private:
    std::map<int, QByteArray> m_areas;
};

quint64 numberOf(const QByteArray& bytes)
{
    quint64 number = 0;
    for (const char byte : bytes)
        number = number << 8 | quint8(byte);
    return number;
}

/// Whether these bytes of a PLC are this number, no matter of which kind it was given.
struct IsNumber {
    const values::IecType& type;
    quint64 bits;

    qint64 asSigned() const
    {
        const int unused = 64 - 8 * type.size;
        return qint64(bits << unused) >> unused;
    }
    bool isSigned() const { return type.format == values::ValueFormat::Signed; }
    bool isReal() const { return type.format == values::ValueFormat::Real; }

    bool operator()(bool value) const { return bits == (value ? 1U : 0U); }
    bool operator()(qint64 value) const
    {
        return !isReal() &&
               (isSigned() ? asSigned() == value : value >= 0 && bits == quint64(value));
    }
    bool operator()(quint64 value) const
    {
        return !isReal() &&
               (isSigned() ? asSigned() >= 0 && quint64(asSigned()) == value : bits == value);
    }
    bool operator()(float value) const { return type.size == 4 && isSame<quint32>(value); }
    bool operator()(double value) const { return type.size == 8 && isSame<quint64>(value); }
    bool operator()(const QString&) const { return false; }

private:
    template <typename Bits, typename Real>
    bool isSame(Real value) const
    {
        Bits of = 0;
        std::memcpy(&of, &value, sizeof of);
        return isReal() && bits == of;
    }
};

/// One write after the other, into a PLC that is played to the end of each.
class RandomWrites : public HostTest, public ::testing::WithParamInterface<int> {
protected:
    RandomWrites() : m_random(std::uint32_t(GetParam())), m_plc(&m_random)
    {
        session().start(now);
        play();
    }

    /// Answers all that the host asks.
    void play()
    {
        for (std::string done = actions(); !done.empty(); done = actions()) {
            ASSERT_EQ(std::string::npos, done.find('X')) << "the link was lost";
            if (done == "C")
                session().connected(now);
            else
                answer(replyTo(sent));
        }
    }
    QByteArray replyTo(const QByteArray& frame)
    {
        const RequestContent request = parseRequest(frame);
        if (request.service == Service::Identification)
            return identificationReply();
        if (request.service == Service::File)
            return fileReply();
        QByteArray payload(request.service == Service::Read ? 6 : 2, '\0');
        for (const FrameEntry& entry : request.entries) {
            if (request.service == Service::Write)
                m_plc.write(entry, writtenBytes(frame, entry));
            else
                payload += hex("EE") + m_plc.bytes(entry.area, entry.address, int(entry.length));
        }
        return frameOf(payload);
    }

    DataPoint anyPoint()
    {
        static const char* const kLabels[] = {
            "Io.start",         "Io.lamp[0]*20",   "Io.lamp[3]*5",      "Main.flag",
            "Main.byte",        "Main.small",      "Main.usmall",       "Main.speed",
            "Main.count",       "Main.word",       "Main.long",         "Main.ulong",
            "Main.real",        "Main.dword",      "Main.time",         "Main.lreal",
            "Main.lint",        "Main.ulint",      "Main.lword",        "Main.text",
            "Main.wide",        "Main.table[0,1]", "Main.table[1,2]*3", "Main.axis[2].speed",
            "Main.bytes[0]*10", "Main.bytes[4]",   "Big.block[7]*400",  "Big.texts[2]",
            "Big.texts[0]*2"};
        return point(kLabels[m_random.below(int(std::size(kLabels)))]);
    }
    /// What a program might make of a point by hand.
    void spoil(DataPoint* point)
    {
        static const int kNumbers[] = {-1, 0, 1, 2, 3, 64, 1023, 65536, 1 << 30};
        const int number = kNumbers[m_random.below(int(std::size(kNumbers)))];
        switch (m_random.below(7)) {
            case 0:
                point->elements = number;
                break;
            case 1:
                point->address = number;
                break;
            case 2:
                point->area = number;
                break;
            case 3:
                point->stringLength = number;
                break;
            case 4:
                point->station = number;
                break;
            case 5:
                point->type = m_random.oneIn(4) ? nullptr : values::iecTypes() + m_random.below(19);
                break;
            default:
                point->label += QStringLiteral("x");
                break;
        }
    }

    values::Value anyValue(const DataPoint& point)
    {
        const bool isOther = m_random.oneIn(12) || !point.type;
        const values::IecType& type =
            isOther ? values::iecTypes()[m_random.below(19)] : *point.type;
        switch (type.format) {
            case values::ValueFormat::Boolean:
                return m_random.oneIn(2);
            case values::ValueFormat::Real:
                if (type.size == 4 || m_random.oneIn(12))
                    return float(anyWhole(type)) / 8;
                return double(anyWhole(type)) / 8;
            case values::ValueFormat::Text:
            case values::ValueFormat::WideText:
                return anyText(type, point.stringLength);
            default:
                break;
        }
        const bool isSigned = (type.format == values::ValueFormat::Signed) != m_random.oneIn(8);
        return isSigned ? values::Value(anyWhole(type)) : values::Value(quint64(anyWhole(type)));
    }
    /// Often at an end of the type's range, now and then beyond it.
    qint64 anyWhole(const values::IecType& type)
    {
        const int bits = 8 * qMax(1, type.size);
        const auto any = qint64(quint64(m_random.bits()) << 32 | m_random.bits());
        const quint64 end = Q_UINT64_C(1) << (bits - 1);
        const bool isLong = bits == 64;
        switch (m_random.below(8)) {
            case 0:
                return qint64(end);
            case 1:
                return qint64(end - 1);
            case 2:
                return qint64(0 - end);
            case 3:
                return qint64(end + end);
            case 4:
                return qint64(end + end - 1);
            default:
                return m_random.oneIn(2) ? any >> (64 - bits)
                       : isLong          ? any
                                         : any & qint64(end - 1);
        }
    }
    QString anyText(const values::IecType& type, int capacity)
    {
        QString text;
        const int size =
            m_random.between(0, qBound(0, capacity, 300) + (m_random.oneIn(4) ? 3 : 0));
        const int highest = type.format == values::ValueFormat::Text ? 0xFF : 0xFFFF;
        for (int i = 0; i < size; ++i)
            text += QChar(ushort(m_random.between(1, highest)));
        if (m_random.oneIn(10))
            text += QChar(ushort(m_random.oneIn(2) ? 0 : 0x20AC));
        return text;
    }
    QVector<values::Value> anyValues(const DataPoint& point)
    {
        const int count = m_random.oneIn(6) ? m_random.below(4) : qBound(0, point.elements, 1000);
        QVector<values::Value> values;
        for (int i = 0; i < count; ++i)
            values.append(anyValue(point));
        return values;
    }

    bool holds(const DataPoint& point, const QVector<values::Value>& values) const
    {
        if (int(values.size()) != point.elements)
            return false;
        if (values::isText(*point.type))
            return holdsText(point, values[0]);
        for (int i = 0; i < point.elements; ++i) {
            const quint64 bits =
                values::isBit(*point.type)
                    ? quint64(m_plc.bit(point.area, point.address + i))
                    : numberOf(m_plc.bytes(point.area, point.address + i * point.type->size,
                                           point.type->size));
            const bool isFlag = point.type->format == values::ValueFormat::Boolean;
            if (isFlag != std::holds_alternative<bool>(values[i]) ||
                !std::visit(IsNumber{*point.type, bits}, values[i]))
                return false;
        }
        return true;
    }
    bool holdsText(const DataPoint& point, const values::Value& value) const
    {
        const QString* const text = std::get_if<QString>(&value);
        if (!text || point.elements != 1 || int(text->size()) > point.stringLength)
            return false;
        const int width = point.type->format == values::ValueFormat::WideText ? 2 : 1;
        for (int i = 0; i <= int(text->size()); ++i) {
            const quint64 expected = i < int(text->size()) ? (*text)[i].unicode() : 0;
            const bool isEarlyEnd = expected == 0 && i < int(text->size());
            if (isEarlyEnd ||
                numberOf(m_plc.bytes(point.area, point.address + i * width, width)) != expected)
                return false;
        }
        return true;
    }
    /// All but what the write was for is as it was before.
    bool isRestUntouched(const Memory& before, const DataPoint& point,
                         const QVector<values::Value>& values)
    {
        Memory restored = m_plc;
        if (values::isBit(*point.type)) {
            for (int i = 0; i < point.elements; ++i)
                restored.setBit(point.area, point.address + i,
                                before.bit(point.area, point.address + i));
        } else if (values::isText(*point.type)) {
            const int width = point.type->format == values::ValueFormat::WideText ? 2 : 1;
            const int size = int(std::get<QString>(values[0]).size()) + 1;
            restored.take(before, point.area, point.address, size * width);
        } else {
            restored.take(before, point.area, point.address, point.elements * point.type->size);
        }
        return restored == before;
    }

    Random m_random;
    Memory m_plc;
};

TEST_P(RandomWrites, AreCarriedOutExactlyOrRefusedAsAWhole)
{
    int done = 0;
    for (int i = 0; i < 400; ++i) {
        const Memory before = m_plc;
        DataPoint point = anyPoint();
        if (m_random.oneIn(5))
            spoil(&point);
        const QVector<values::Value> values = anyValues(point);
        std::vector<TransferOutcome> outcomes;
        runtime->write(point, values, now, [&outcomes](const TransferOutcome& outcome) {
            outcomes.push_back(outcome);
        });
        play();
        SCOPED_TRACE("write " + std::to_string(i) + " to " + point.text.toStdString());
        ASSERT_EQ(1u, outcomes.size());
        if (outcomes[0].isDone()) {
            ++done;
            ASSERT_TRUE(holds(point, values));
            ASSERT_TRUE(isRestUntouched(before, point, values));
        } else {
            ASSERT_EQ(TransferOutcome::NotSent, outcomes[0].kind);
            ASSERT_FALSE(outcomes[0].reason.isEmpty());
            ASSERT_TRUE(m_plc == before);
        }
        ASSERT_EQ(0, runtime->openWrites());
    }
    EXPECT_GT(done, 100);
    EXPECT_LT(done, 350);
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomWrites, ::testing::Range(1, 11));

} // namespace
} // namespace plc::host::test
