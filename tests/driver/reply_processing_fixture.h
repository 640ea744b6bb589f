#ifndef PLC_TESTS_DRIVER_REPLY_PROCESSING_FIXTURE_H
#define PLC_TESTS_DRIVER_REPLY_PROCESSING_FIXTURE_H

#include <climits>
#include <random>

#include "support/driver_fixture.h"

namespace plc::test {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

// Not the local device number.
constexpr int kOtherDevice = 6;

inline RW_VAR numberedRead(int number, int length = 2)
{
    return makeVar(1, number, length);
}

/// A write or one-shot read that lies at `number` and belongs to the host request (category, aux1).
inline RW_VAR tagged(int number, int category, int aux1, int length = 1)
{
    RW_VAR var = makeWrite(1, number, QByteArray(length, 'x'), category, aux1);
    return var;
}

class ReplyProcessing : public DriverTest {
protected:
    /// The reply to the request at the head of the queue, complete in itself and good.
    static QByteArray goodReply()
    {
        QByteArray payload(6, '\0');
        for (int i = 0; i < batchSize(); ++i)
            payload += QByteArray(1 + qMax(0, PLC_driver.batch[i].length), '\0');
        return frameOf(payload);
    }

    /// Hands over `reply` once.
    static int once(const QByteArray& reply, int received)
    {
        ExactBytes bytes(reply);
        return DataCom(bytes.get(), received)->result;
    }
    static int once(const QByteArray& reply) { return once(reply, int(reply.size())); }

    static int imageByte(quint32 areaIndex, quint32 address)
    {
        const quint64 key = DataImage::key(areaIndex, address);
        return PLC_driver.localImage.contains(key) ? PLC_driver.localImage.value(key) : -1;
    }

    static void addReads(int count)
    {
        for (int i = 0; i < count; ++i)
            PLC_driver.readList.append(numberedRead(i));
    }

    /// Asks for a request, and fails the test when there is none.
    static const Protocol& issue()
    {
        static const Protocol kNone;
        const Protocol* request = ComCommunication();
        EXPECT_NE(request, nullptr);
        return request ? *request : kNone;
    }
};

class Exchange : public ReplyProcessing {
protected:
    Exchange() { logIn(); }
};

} // namespace plc::test

#endif
