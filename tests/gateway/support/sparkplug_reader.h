#ifndef PLC_TESTS_GATEWAY_SUPPORT_SPARKPLUG_READER_H
#define PLC_TESTS_GATEWAY_SUPPORT_SPARKPLUG_READER_H

#include <QtCore/QByteArray>
#include <QtCore/QVector>

#include <optional>

namespace plc::test {

/// Fields of a message of Protocol Buffers, one after the other. Shares nothing with the gateway.
class WireReader {
public:
    explicit WireReader(const QByteArray& bytes) : m_bytes(bytes) {}

    /// False at the end, and where the bytes are malformed.
    bool next()
    {
        if (m_place >= m_bytes.size())
            return false;
        const quint64 key = varint();
        m_field = int(key >> 3);
        switch (key & 7) {
            case 0:
                m_number = varint();
                return m_isGood;
            case 1:
                return take(8);
            case 2:
                return take(varint());
            case 5:
                return take(4);
            default:
                return m_isGood = false;
        }
    }
    int field() const { return m_field; }
    quint64 number() const { return m_number; }
    const QByteArray& bytes() const { return m_part; }
    bool isGood() const { return m_isGood; }

private:
    quint64 varint()
    {
        quint64 value = 0;
        for (int shift = 0; shift < 64 && m_place < m_bytes.size(); shift += 7) {
            const quint64 byte = quint8(m_bytes[m_place++]);
            value |= (byte & 0x7F) << shift;
            if (byte < 0x80)
                return value;
        }
        m_isGood = false;
        return 0;
    }
    bool take(quint64 size)
    {
        if (!m_isGood || size > quint64(m_bytes.size() - m_place))
            return m_isGood = false;
        m_part = m_bytes.mid(m_place, int(size));
        m_place += int(size);
        return true;
    }

    const QByteArray m_bytes;
    int m_place = 0;
    int m_field = 0;
    quint64 m_number = 0;
    QByteArray m_part;
    bool m_isGood = true;
};

/// What tests look at of a metric that is a whole number.
struct ReadMetric {
    QByteArray name;
    std::optional<quint64> alias;
    qint64 time = 0;
    bool isHistorical = false;
    bool isNull = false;
    int quality = 192; ///< Good, unless it says otherwise.
    std::optional<quint64> number;
};

struct ReadPayload {
    bool isGood = true;
    std::optional<quint64> seq;
    QVector<ReadMetric> metrics;
};

inline int readQuality(const QByteArray& properties)
{
    QVector<QByteArray> keys;
    QVector<int> values;
    WireReader reader(properties);
    while (reader.next()) {
        if (reader.field() == 1)
            keys.append(reader.bytes());
        if (reader.field() != 2)
            continue;
        WireReader value(reader.bytes());
        values.append(0);
        while (value.next()) {
            if (value.field() == 3)
                values.last() = int(value.number());
        }
    }
    const int place = int(keys.indexOf("Quality"));
    return place < 0 ? 192 : values.value(place);
}

inline ReadMetric readMetric(const QByteArray& bytes, bool* isGood)
{
    ReadMetric metric;
    WireReader reader(bytes);
    while (reader.next()) {
        switch (reader.field()) {
            case 1:
                metric.name = reader.bytes();
                break;
            case 2:
                metric.alias = reader.number();
                break;
            case 3:
                metric.time = qint64(reader.number());
                break;
            case 5:
                metric.isHistorical = reader.number() != 0;
                break;
            case 7:
                metric.isNull = reader.number() != 0;
                break;
            case 9:
                metric.quality = readQuality(reader.bytes());
                break;
            case 10:
            case 11:
                metric.number = reader.number();
                break;
            default:
                break;
        }
    }
    *isGood = *isGood && reader.isGood();
    return metric;
}

inline ReadPayload readPayload(const QByteArray& bytes)
{
    ReadPayload payload;
    WireReader reader(bytes);
    while (reader.next()) {
        if (reader.field() == 2)
            payload.metrics.append(readMetric(reader.bytes(), &payload.isGood));
        else if (reader.field() == 3)
            payload.seq = reader.number();
    }
    payload.isGood = payload.isGood && reader.isGood();
    return payload;
}

} // namespace plc::test

#endif
