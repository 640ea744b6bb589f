#include "support/replies.h"

namespace plc::bench {

namespace {

constexpr int kSmallestIdentification = 200;
constexpr int kSmallestFile = 30;
constexpr int kStatusSize = 2;
constexpr int kReadReplyLead = 6;

constexpr int kRequestHead = 12;
constexpr int kEntrySize = 10;
constexpr int kTrailerSize = 4;

QByteArray frameOf(const QByteArray& payload)
{
    QByteArray frame = QByteArray::fromHex("BBBB00000000");
    frame[4] = char(uchar(payload.size() >> 8 & 0xFF));
    frame[5] = char(uchar(payload.size() & 0xFF));
    return frame + payload;
}

} // namespace

QByteArray identificationReply()
{
    return frameOf(QByteArray(kSmallestIdentification, '\0'));
}

QByteArray fileReply()
{
    return frameOf(QByteArray(kSmallestFile, '\0'));
}

std::vector<int> readLengths(const QByteArray& request)
{
    std::vector<int> lengths;
    for (int end = kRequestHead + kEntrySize; end + kTrailerSize <= int(request.size());
         end += kEntrySize)
        lengths.push_back(uchar(request.at(end - 2)) << 8 | uchar(request.at(end - 1)));
    return lengths;
}

QByteArray readReply(const std::vector<int>& lengths)
{
    QByteArray payload(kReadReplyLead, '\0');
    char byte = 1;
    for (const int length : lengths) {
        payload.append('\0');
        payload.append(QByteArray(length, byte++));
    }
    return frameOf(payload);
}

QByteArray writeReply()
{
    return frameOf(QByteArray(kStatusSize, '\0'));
}

} // namespace plc::bench
