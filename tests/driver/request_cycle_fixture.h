#ifndef PLC_TESTS_DRIVER_REQUEST_CYCLE_FIXTURE_H
#define PLC_TESTS_DRIVER_REQUEST_CYCLE_FIXTURE_H

#include <climits>
#include <thread>

#include "support/driver_fixture.h"

namespace plc::test {

inline int fieldOf(const QByteArray& frame, int offset)
{
    quint32 value = 0;
    for (int i = 0; i < 4; ++i)
        value = value << 8 | uchar(frame.at(offset + i));
    return int(value);
}

inline int serviceOf(const Protocol* request)
{
    return uchar(request->frame.at(6));
}
inline int entriesOf(const Protocol* request)
{
    return fieldOf(request->frame, 8);
}

constexpr int kRead = 0x2E;
constexpr int kWriteOut = 0x3C;
constexpr int kIdentification = 0x01;

/// A write of `length` bytes, numbered by its address.
inline RW_VAR numberedWrite(int number, int length)
{
    return makeWrite(1, number, QByteArray(length, 'x'), 1, number);
}

inline std::vector<int> batchAddresses()
{
    std::vector<int> addresses;
    for (int i = 0; i < batchSize(); ++i)
        addresses.push_back(PLC_driver.batch[i].address);
    return addresses;
}

using ::testing::ElementsAre;

class RequestCycle : public DriverTest {
protected:
    static void addReads(std::initializer_list<int> lengths)
    {
        int address = 0;
        for (int length : lengths)
            PLC_driver.readList.append(makeVar(1, address++, length));
    }

    static void addOnceReads(std::initializer_list<int> lengths)
    {
        int address = 0;
        for (int length : lengths) {
            RW_VAR var = makeVar(2, address++, length);
            var.category = 2;
            PLC_driver.onceReadList.append(var);
        }
    }

    static void addWrites(std::initializer_list<int> lengths)
    {
        int address = 0;
        for (int length : lengths)
            PLC_driver.writeList.append(numberedWrite(address++, length));
    }

    /// Asks for a request and answers it well; returns the kind that was served.
    static int serveOne()
    {
        const Protocol* request = ComCommunication();
        if (!request)
            return -1;
        if (serviceOf(request) == kWriteOut) {
            deliver(writeReply());
        } else {
            QByteArray payload(6, '\0');
            for (int i = 0; i < batchSize(); ++i)
                payload += QByteArray(1 + PLC_driver.batch[i].length, '\0');
            deliver(frameOf(payload));
        }
        return PLC_driver.lastKind;
    }
};

class LoggedIn : public RequestCycle {
protected:
    LoggedIn() { logIn(0x12, 0x34); }
};

} // namespace plc::test

#endif
