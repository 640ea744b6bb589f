#ifndef PLC_TESTS_SIMULATOR_FRAME_BYTES_H
#define PLC_TESTS_SIMULATOR_FRAME_BYTES_H

#include <QtCore/QByteArray>

#include <string>

#include "simulator/plc_services.h"

namespace plc::simulator {
namespace test {

/// Bytes from hexadecimal digits; blanks may stand between them.
inline QByteArray bytes(const char* hex)
{
    return QByteArray::fromHex(QByteArray(hex));
}

/// As bytes() shows them, for messages and comparisons.
inline std::string hex(const QByteArray& data)
{
    return data.toHex(' ').toStdString();
}

constexpr const char* kIdentification =
    "bb bb 00 00 00 0e 01 00 00 00 02 00 00 00 06 00 00 00 00 00";
constexpr const char* kFileRequest =
    "bb bb 00 00 00 11 31 00 00 0d 44 4f 57 4e 4c 4f 41 44 2e 53 44 42 00";

/// A session that has logged in: requests end in 00 01 25 24.
inline Session loggedInSession()
{
    Session session;
    session.login = Session::Login::Done;
    session.infoByte24 = 0x24;
    session.infoByte25 = 0x25;
    return session;
}

/// Puts header and length before a request that begins with its service.
inline QByteArray framed(const QByteArray& payload)
{
    QByteArray frame = bytes("bb bb 00 00 00 00");
    frame[4] = char(payload.size() >> 8);
    frame[5] = char(payload.size());
    return frame + payload;
}

} // namespace test
} // namespace plc::simulator

#endif
