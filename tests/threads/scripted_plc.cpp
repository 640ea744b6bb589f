#include "threads/scripted_plc.h"

namespace plc::test {

namespace {

constexpr int kHeaderSize = 6;
constexpr int kEntrySize = 10;
constexpr int kFirstEntry = 12;

int number(const QByteArray& frame, int offset, int bytes)
{
    quint32 value = 0;
    for (int i = 0; i < bytes; ++i)
        value = value << 8 | uchar(frame.at(offset + i));
    return int(value);
}

QByteArray framed(const QByteArray& payload)
{
    QByteArray frame = QByteArray::fromHex("BBBB00000000");
    frame[4] = char(uchar(payload.size() >> 8));
    frame[5] = char(uchar(payload.size() & 0xFF));
    return frame + payload;
}

} // namespace

QByteArray ScriptedPlc::answer(const QByteArray& request)
{
    constexpr int kIdentificationPayload = 200;
    constexpr int kFilePayload = 30;
    const QByteArray done(2, '\0');
    const QByteArray refused = QByteArray::fromHex("0001");
    if (m_faultsOneIn > 0 && m_random.oneIn(m_faultsOneIn))
        return QByteArray();
    switch (uchar(request.at(kHeaderSize))) {
        case 0x01:
            return framed(QByteArray(kIdentificationPayload, '\0'));
        case 0x31:
            return framed(QByteArray(kFilePayload, '\0'));
        default:
            break;
    }
    if (m_faultsOneIn > 0 && m_random.oneIn(m_faultsOneIn))
        return framed(refused);
    if (uchar(request.at(kHeaderSize)) == 0x2E)
        return read(request);
    write(request);
    return framed(done);
}

QByteArray ScriptedPlc::memory(int area, int address, int length) const
{
    QByteArray bytes;
    for (int i = 0; i < length; ++i) {
        const auto found = m_memory.find({area, address + i});
        bytes.append(found == m_memory.end() ? '\0' : found->second);
    }
    return bytes;
}

QByteArray ScriptedPlc::read(const QByteArray& request) const
{
    QByteArray payload(kHeaderSize, '\0');
    const int count = number(request, 8, 4);
    for (int i = 0; i < count; ++i) {
        const int entry = kFirstEntry + kEntrySize * i;
        payload.append('\0');
        payload.append(memory(number(request, entry, 2), number(request, entry + 2, 4),
                              number(request, entry + 6, 4)));
    }
    return framed(payload);
}

void ScriptedPlc::write(const QByteArray& request)
{
    const int count = number(request, 8, 4);
    int entry = kFirstEntry;
    for (int i = 0; i < count; ++i) {
        const int area = number(request, entry, 2);
        const int address = number(request, entry + 2, 4);
        const int length = number(request, entry + 6, 4);
        for (int k = 0; k < length; ++k)
            m_memory[{area, address + k}] = request.at(entry + kEntrySize + k);
        entry += kEntrySize + length;
    }
}

} // namespace plc::test
