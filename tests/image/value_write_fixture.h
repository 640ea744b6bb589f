#ifndef PLC_TESTS_IMAGE_VALUE_WRITE_FIXTURE_H
#define PLC_TESTS_IMAGE_VALUE_WRITE_FIXTURE_H

#include <climits>

#include "image/image_fixture.h"
#include "support/random.h"
#include "support/record_checks.h"
#include "support/symbol_fixture.h"

namespace plc::test {

constexpr int kStart = 1000;
constexpr int kQueuedMode = 2;

/// Variables code0 to code18 at address 1000 of area 3, and some by purpose.
class ValueWrite : public DriverTest {
protected:
    ValueWrite()
    {
        QList<Label_Type_Info> variables;
        for (int code = 0; code <= 18; ++code)
            variables.append(variable(QString("code%1").arg(code), code, kStart, kArea));
        variables.append(variable("high", 10, INT_MAX - 999, kArea));
        variables.append(variable("bit", 13, 17, kArea));
        variables.append(variable("lastBit", 13, -2, kArea));
        symbols.append(scope("MAIN", variables));
        passSymbols(symbols);
        settings.writeMode = kQueuedMode;
    }

    static int write(const QString& label, const QByteArray& value, int count)
    {
        ExactBytes bytes(value);
        return SetRegisterData(label, 0, "second", 5, bytes.get(), count, 6, 7);
    }

    /// Queues a value of a type code and gives all bytes that are queued for it.
    static QByteArray queued(int code, const char* value, int count)
    {
        PLC_driver.writeList.clear();
        EXPECT_EQ(0, write(QString("MAIN.code%1").arg(code), hex(value), count)) << code;
        QByteArray out;
        for (const RW_VAR& var : PLC_driver.writeList) {
            EXPECT_EQ(kStart + int(out.size()), var.address) << code;
            EXPECT_EQ(int(var.data.size()), var.length) << code;
            out += var.data;
        }
        return out;
    }

    QList<Label_Type_Info> symbols;

    static const QList<RW_VAR>& list() { return PLC_driver.writeList; }
    static int bytesInImage() { return int(PLC_driver.localImage.size()); }
    static int byteAt(int address)
    {
        return PLC_driver.localImage.value(DataImage::key(kArea, quint32(address)));
    }
    static bool exists(int address)
    {
        return PLC_driver.localImage.contains(DataImage::key(kArea, quint32(address)));
    }
};

using QueuedWrite = ValueWrite;
using ImageOnlyWrite = ValueWrite;

} // namespace plc::test

#endif
