#ifndef PLC_TESTS_SUPPORT_DRIVER_FIXTURE_H
#define PLC_TESTS_SUPPORT_DRIVER_FIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <new>
#include <ostream>
#include <vector>

#include "driver/Communication_Protocol.h"
#include "driver/plc_driver.h"
#include "driver/request_building.h"

// How GoogleTest shows bytes in a failure message.
inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    const char* separator = "\"";
    for (int i = 0; i < int(bytes.size()); ++i) {
        *out << separator << bytes.mid(i, 1).toHex().toUpper().constData();
        separator = " ";
    }
    *out << "\" (" << bytes.size() << " bytes)";
}

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

namespace plc::test {

/// Bytes from hexadecimal pairs; blanks do not count.
inline QByteArray hex(const char* text)
{
    return QByteArray::fromHex(text);
}

/// A byte array over a heap block of exactly its size, without the terminating zero that Qt adds,
/// so that AddressSanitizer sees a single byte read past the end.
class ExactBytes {
public:
    explicit ExactBytes(const QByteArray& bytes)
        : m_block(new char[size_t(bytes.size())]),
          m_bytes(QByteArray::fromRawData(m_block.get(), bytes.size()))
    {
        std::copy(bytes.constBegin(), bytes.constEnd(), m_block.get());
    }
    QByteArray* get() { return &m_bytes; }
    int size() const { return int(m_bytes.size()); }

private:
    std::unique_ptr<char[]> m_block;
    QByteArray m_bytes;
};

inline std::vector<int> addressesOf(const QList<RW_VAR>& list)
{
    std::vector<int> addresses;
    for (const RW_VAR& var : list)
        addresses.push_back(var.address);
    return addresses;
}

/// A frame with the low 16 bits of its payload length filled in.
inline QByteArray frameOf(const QByteArray& payload)
{
    QByteArray frame = hex("BB BB 00 00 00 00");
    frame[4] = char(uchar(payload.size() >> 8 & 0xFF));
    frame[5] = char(uchar(payload.size() & 0xFF));
    return frame + payload;
}

/// A reply to the identification frame; 200 payload bytes are the fewest that are accepted.
inline QByteArray identificationReply(int payloadSize = 200)
{
    return frameOf(QByteArray(payloadSize, '\0'));
}

/// A reply to the file request; 30 payload bytes are the fewest that are accepted.
inline QByteArray fileReply(int byte24 = 0, int byte25 = 0, int payloadSize = 30)
{
    QByteArray reply = frameOf(QByteArray(payloadSize, '\0'));
    if (reply.size() > 25) {
        reply[24] = char(uchar(byte24));
        reply[25] = char(uchar(byte25));
    }
    return reply;
}

/// A good reply to a read request: status 0, four bytes, then for each entry a leading byte and its
/// data.
inline QByteArray readReply(std::initializer_list<QByteArray> blocks)
{
    QByteArray payload(6, '\0');
    for (const QByteArray& block : blocks)
        payload += hex("EE") + block;
    return frameOf(payload);
}

/// A good reply to a read request of `count` entries of `length` bytes, all of value `fill`.
inline QByteArray uniformReadReply(int count, int length, char fill = 0)
{
    QByteArray payload(6, '\0');
    for (int i = 0; i < count; ++i)
        payload += hex("EE") + QByteArray(length, fill);
    return frameOf(payload);
}

/// A good acknowledgement of a write.
inline QByteArray writeReply()
{
    return hex("BB BB 00 00 00 02 00 00");
}

/// A whole frame whose status is not 0.
inline QByteArray refusedReply()
{
    return hex("BB BB 00 00 00 02 00 01");
}

/// A 16-bit variable (type code 3) unless told otherwise.
inline RW_VAR makeVar(int areaIndex, int address, int length, int dataType = 3)
{
    RW_VAR var;
    var.areaIndex = areaIndex;
    var.address = address;
    var.length = length;
    var.dataType = dataType;
    return var;
}

/// One host request to write `data`, acknowledged without storing the reply.
inline RW_VAR makeWrite(int areaIndex, int address, const QByteArray& data, int category, int aux1)
{
    RW_VAR var = makeVar(areaIndex, address, int(data.size()));
    var.category = category;
    var.aux1 = aux1;
    var.aux2 = 1;
    var.data = data;
    return var;
}

/// A request as the builders queue it: variable reply length, data from offset 12 on.
inline Protocol makeRequest(const RW_VAR& var)
{
    Protocol request;
    request.replyLength = -1;
    request.dataOffset = 12;
    request.var = var;
    return request;
}

inline void queueRequest(const Protocol& request)
{
    PLC_driver.requestQueue.append(request);
}

struct ResultCall {
    int hostTag;
    int category;
    int aux1;
    int status;

    friend bool operator==(const ResultCall& a, const ResultCall& b)
    {
        return a.hostTag == b.hostTag && a.category == b.category && a.aux1 == b.aux1 &&
               a.status == b.status;
    }
    friend std::ostream& operator<<(std::ostream& out, const ResultCall& call)
    {
        return out << "{tag " << call.hostTag << ", category " << call.category << ", aux1 "
                   << call.aux1 << ", status " << call.status << '}';
    }
};

struct FailureCall {
    bool hasList;
    int listSize;
    int category;
    int mode;

    friend bool operator==(const FailureCall& a, const FailureCall& b)
    {
        return a.hasList == b.hasList && a.listSize == b.listSize && a.category == b.category &&
               a.mode == b.mode;
    }
    friend std::ostream& operator<<(std::ostream& out, const FailureCall& call)
    {
        return out << '{' << (call.hasList ? "list of " : "no list ") << call.listSize
                   << ", category " << call.category << ", mode " << call.mode << '}';
    }
};

/// What the recording callbacks saw, and whether the list lock was free during any of them.
inline std::vector<ResultCall> resultCalls;
inline std::vector<FailureCall> failureCalls;
inline bool listLockWasFree = false;

inline void noteListLock()
{
    if (PLC_driver.listMutex.tryLock()) {
        listLockWasFree = true;
        PLC_driver.listMutex.unlock();
    }
}

inline void recordResult(int hostTag, int category, int aux1, int status)
{
    noteListLock();
    resultCalls.push_back({hostTag, category, aux1, status});
}

inline void recordFailure(QList<RW_VAR>* list, int category, int mode)
{
    noteListLock();
    failureCalls.push_back({bool(list), list ? int(list->size()) : 0, category, mode});
}

/// Hands a reply over as a host does: once, and once more when its size was only recorded.
inline RW_VAR* deliver(const QByteArray& reply)
{
    ExactBytes bytes(reply);
    const bool sizeIsOpen =
        !PLC_driver.requestQueue.isEmpty() && PLC_driver.requestQueue.first().replyLength == -1;
    RW_VAR* outcome = DataCom(bytes.get(), bytes.size());
    if (sizeIsOpen && outcome->result == 1)
        outcome = DataCom(bytes.get(), bytes.size());
    return outcome;
}

/// Takes the driver through the login exchange.
inline void logIn(int plcInfo1 = 0, int plcInfo2 = 0)
{
    RW_VAR var;
    handshake_data(&var);
    deliver(identificationReply());
    deliver(fileReply(plcInfo2, plcInfo1));
    ASSERT_NE(PLC_driver.loggedIn, 0);
}

/// A driver with a settings record and recording callbacks; afterwards it is as after loading.
class DriverTest : public ::testing::Test {
protected:
    DriverTest()
    {
        settings.maxReadBytes = 200;
        settings.defaultStation = 1;
        settings.retryLimit = 0;
        settings.hostTag = 77;
        SetComInfo(&settings);
        RegistCallBackFuncIntf(recordResult, recordFailure);
    }

    ~DriverTest() override
    {
        EXPECT_TRUE(isFree(PLC_driver.listMutex)) << "listMutex was left locked";
        EXPECT_TRUE(isFree(PLC_driver.dataMutex)) << "dataMutex was left locked";
        EXPECT_TRUE(isFree(PLC_driver.stationMutex)) << "stationMutex was left locked";
        EXPECT_FALSE(listLockWasFree) << "a callback ran without the list lock";
        PLC_driver.~Communication_Protocol();
        new (&PLC_driver) Communication_Protocol;
        resultCalls.clear();
        failureCalls.clear();
        listLockWasFree = false;
    }

    ComInfo settings;

private:
    static bool isFree(QMutex& mutex)
    {
        if (!mutex.tryLock())
            return false;
        mutex.unlock();
        return true;
    }
};

} // namespace plc::test

#endif
