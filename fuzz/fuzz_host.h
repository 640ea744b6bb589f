#ifndef PLC_FUZZ_FUZZ_HOST_H
#define PLC_FUZZ_FUZZ_HOST_H

#include <new>

#include "driver/Communication_Protocol.h"
#include "fuzz_input.h"
#include "guarded_memory.h"
#include "promise.h"

namespace plc::fuzz {

/// A host around a driver as after loading, with one scope MAIN: a variable of each type code, t0
/// to t18, and an array of structures, rec.
class FuzzHost {
public:
    FuzzHost()
    {
        PLC_driver.~Communication_Protocol();
        new (&PLC_driver) Communication_Protocol;
        s_calledUnlocked = false;
        settings.maxReadBytes = 200;
        settings.defaultStation = 1;
        settings.writeMode = 2;
        SetComInfo(&settings);
        RegistCallBackFuncIntf(noteResult, noteFailure);
        QList<Label_Type_Info> symbols = plant();
        PassVarName_2(&symbols);
    }

    /// A word of the settings record becomes any number.
    void changeSettings(FuzzInput& input)
    {
        qint32* const words[] = {
            &settings.maxReadBytes, &settings.defaultStation, &settings.retryLimit,
            &settings.retryCount,   &settings.multiStation,   &settings.frameCount,
            &settings.frameIndex,   &settings.remoteMode,     &settings.localDeviceNo,
            &settings.writeMode,    &settings.scanDone,       &settings.hostTag};
        *words[input.below(int(sizeof words / sizeof words[0]))] = input.number();
    }

    QString label(FuzzInput& input)
    {
        const int choice = input.below(24);
        if (choice == 19)
            return QLatin1String("MAIN.rec[2].b");
        if (choice == 20)
            return QLatin1String("MAIN.rec[1].a");
        if (choice > 20)
            return QString::fromLatin1(input.bytes(input.below(16)));
        return QString::fromLatin1("MAIN.t%1").arg(choice);
    }

    RW_VAR variable(FuzzInput& input)
    {
        RW_VAR var;
        const int members = input.byte();
        var.label = label(input);
        var.address = input.byte();
        var.length = input.number();
        var.category = members & 1 ? input.number() : 1;
        var.aux1 = input.below(4);
        var.aux2 = members & 2 ? 0 : 1;
        var.deviceNo = members & 4 ? input.number() : 0;
        var.dataType = members & 8 ? 13 : input.below(19);
        var.station = input.below(4);
        var.aux12 = members & 16 ? -1 : 0;
        var.areaIndex = members & 32 ? input.number() : 1;
        if (members & 64)
            var.address = input.number();
        var.data = input.bytes(members & 128 ? input.byte() : qBound(0, var.length, 64));
        return var;
    }

    /// What holds after every call, whatever the host and the network did.
    void checkPromises()
    {
        require(!s_calledUnlocked, "callbacks run with the list lock held");
        require(isFree(PLC_driver.listMutex), "no lock is left held");
        require(isFree(PLC_driver.dataMutex), "no lock is left held");
        require(isFree(PLC_driver.stationMutex), "no lock is left held");
        require(PLC_driver.requestQueue.size() <= 2, "one transaction at a time");
        require(PLC_driver.batchCount >= 0 && PLC_driver.batchCount <= kBatchCapacity,
                "a batch fits its array");
        require(PLC_driver.reply.data.isEmpty(), "the reply record carries no bytes");
        if (!PLC_driver.requestQueue.isEmpty())
            checkFrame(PLC_driver.requestQueue.first());
    }

    /// A request is a frame whose header tells its size.
    void checkFrame(const Protocol& request)
    {
        const QByteArray& frame = request.frame;
        require(frame.size() >= 16, "a frame has a header and a trailer");
        require(request.frameLength == frame.size(), "frameLength is the size of the frame");
        require(frame.startsWith("\xBB\xBB"), "a frame begins with BB BB");
        const int told = uchar(frame.at(4)) << 8 | uchar(frame.at(5));
        require(told == (int(frame.size() - 6) & 0xFFFF), "the header tells the payload's length");
    }

    ComInfo settings;

private:
    static bool isFree(QMutex& mutex)
    {
        const bool isLocked = mutex.tryLock();
        if (isLocked)
            mutex.unlock();
        return isLocked;
    }
    static void noteLock() { s_calledUnlocked = s_calledUnlocked || isFree(PLC_driver.listMutex); }
    static void noteResult(int, int, int, int status)
    {
        noteLock();
        require(status == 1 || status == 2, "an outcome is done or failed");
    }
    static void noteFailure(QList<RW_VAR>* list, int, int mode)
    {
        noteLock();
        require(list && list->isEmpty() && mode == 1, "a failure comes with an empty list");
    }

    static Label_Type_Info symbol(const QString& name, int typeFlags, int offset)
    {
        Label_Type_Info record;
        record.name = name;
        record.typeFlags = quint16(typeFlags);
        record.offset = offset;
        record.areaInfo.append(1);
        return record;
    }

    static QList<Label_Type_Info> plant()
    {
        constexpr int kArrayFlag = 0x100;
        constexpr int kStructureFlag = 0x200;
        Label_Type_Info type;
        for (int code = 0; code <= 18; ++code)
            type.members.append(symbol(QString::fromLatin1("t%1").arg(code), code, 16 * code));
        Label_Type_Info rec = symbol(QLatin1String("rec"), kArrayFlag | 12, 400);
        rec.dimCount = 1;
        rec.arrayBounds << 10 << 1 << 8;
        Label_Type_Info structure = symbol(QString(), kStructureFlag, 12);
        structure.members << symbol(QLatin1String("a"), 6, 0) << symbol(QLatin1String("b"), 10, 4);
        structure.memberCount = 2;
        rec.typeDef.append(structure);
        type.members.append(rec);
        type.memberCount = quint32(type.members.size());
        Label_Type_Info scope = symbol(QLatin1String("MAIN"), 0, 0);
        scope.typeDef.append(type);
        return QList<Label_Type_Info>() << scope;
    }

    static bool s_calledUnlocked;
};

inline bool FuzzHost::s_calledUnlocked = false;

} // namespace plc::fuzz

#endif
