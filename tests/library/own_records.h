#ifndef PLC_TESTS_LIBRARY_OWN_RECORDS_H
#define PLC_TESTS_LIBRARY_OWN_RECORDS_H

// The records as a host declares them that has never seen the driver's header: only the order and
// the types of the members are agreed.

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>

#include <cstdint>

namespace own {

struct Access {
    std::int32_t category = 0, tag = 0, storeFlag = 0, remote = 0, device = 0, result = 0;
    QString label, subLabel;
    std::int32_t type = 0, address = 0, station = 0, length = 0, marker = 0, area = 0;
    QByteArray data;
};

struct Request {
    QByteArray frame;
    std::int32_t frameLength = 0, replyLength = 0, dataOffset = 0, minReplyLength = 0;
    Access access;
    std::int32_t extra[3] = {};
};

struct Symbol {
    QString name;
    std::uint16_t flags = 0;
    std::int32_t offset = 0, dimensions = 0;
    std::uint32_t memberCount = 0;
    QList<int> bounds;
    QList<Symbol> members, definition;
    QString text;
    std::int32_t value1 = 0, value2 = 0;
    QList<int> area;
    QList<QString> texts;
};

struct CyclicItem {
    std::uint8_t station = 0;
    std::int32_t word = 0;
    QString subLabel, label;
    std::int32_t count = 0;
};

struct Settings {
    std::int32_t words[19] = {};
};
constexpr int kMaxReadBytes = 4;
constexpr int kRetryLimit = 7;
constexpr int kComWord10 = 10;
constexpr int kFrameCount = 11;
constexpr int kComWord13 = 13;
constexpr int kWriteMode = 16;
constexpr int kHostTag = 18;

} // namespace own

#endif
