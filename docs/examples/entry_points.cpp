#include "entry_points.h"

#include <QtCore/QtEndian>

#include <cstring>

namespace example {

Label_Type_Info symbol(const char* name, int typeFlags, int offset)
{
    Label_Type_Info record;
    record.name = QLatin1String(name);
    record.typeFlags = quint16(typeFlags);
    record.offset = offset;
    return record;
}

Label_Type_Info variable(const char* name, int typeFlags, int offset, int area)
{
    Label_Type_Info record = symbol(name, typeFlags, offset);
    record.areaInfo << area;
    return record;
}

QList<Label_Type_Info> plantSymbols()
{
    // UINT at bytes 10 and 11 of area 3; STRING from byte 300; bit 35 of area 5.
    Label_Type_Info variables;
    variables.members << variable("speed", PLC_TYPE_UINT, 10, 3)
                      << variable("name", PLC_TYPE_STRING, 300, 3)
                      << variable("running", PLC_TYPE_BIT, 35, 5);

    // ARRAY [0..3, 1..5] OF UINT. Upper bounds are handed over one higher: the driver takes
    // upper - lower for the number of elements.
    Label_Type_Info table = variable("table", PLC_TYPE_UINT | PLC_TYPE_ARRAY, 100, 3);
    table.dimCount = 2;
    table.arrayBounds << 10 << 0 << 3 + 1 << 1 << 5 + 1;
    variables.members << table;

    // ARRAY [1..8] OF a structure of 12 bytes: REAL flow at 0, BYTE state at 4.
    Label_Type_Info pump = symbol("Pump", PLC_TYPE_STRUCTURE_DEFINITION, 12);
    pump.members << symbol("flow", PLC_TYPE_REAL, 0) << symbol("state", PLC_TYPE_BYTE, 4);
    pump.memberCount = quint32(pump.members.size());

    Label_Type_Info pumps = variable("pumps", PLC_TYPE_STRUCTURE | PLC_TYPE_ARRAY, 200, 3);
    pumps.dimCount = 1;
    pumps.arrayBounds << 10 << 1 << 8 + 1;
    pumps.typeDef << pump;
    variables.members << pumps;

    variables.memberCount = quint32(variables.members.size());
    Label_Type_Info scope = symbol("MAIN", 0, 0);
    scope.typeDef << variables;
    return QList<Label_Type_Info>() << scope;
}

ComInfo settings; // lives as long as the driver uses it

void handOverSettings()
{
    settings.maxReadBytes = 200;               // bytes of one read entry at most
    settings.retryLimit = 2;                   // a third failed reply abandons the transaction
    settings.writeMode = PLC_WRITE_MODE_QUEUE; // writes go to the PLC
    settings.hostTag = 77;                     // comes back in the result callback
    SetComInfo(&settings);
}

QHash<QPair<int, int>, bool> finished;
bool transactionWasAbandoned = false;

void onResult(int /*hostTag*/, int category, int aux1, int status)
{
    finished.insert(qMakePair(category, aux1), status == PLC_STATUS_DONE);
}

void onFailure(QList<RW_VAR>* /*list*/, int /*category*/, int /*mode*/)
{
    transactionWasAbandoned = true;
}

void handOverCallbacks()
{
    RegistCallBackFuncIntf(onResult, onFailure);
}

void handOverSymbols()
{
    QList<Label_Type_Info> symbols = plantSymbols();
    PassVarName_2(&symbols);
}

QStringList unknownLabels(const QStringList& labels)
{
    QStringList unknown;
    for (const QString& label : labels) {
        if (PLCAddressChangeIntef(0, label) == -1)
            unknown << label;
    }
    return unknown;
}

int readCyclically(const QStringList& labels)
{
    QList<HostVarItem> items;
    for (const QString& label : labels) {
        HostVarItem item;
        item.label = label;
        item.count = 1; // one register, or one element of a one-byte type
        items << item;
    }
    return ReCreatReadVarList(&items);
}

int readRangeCyclically(int area, int address, int bytes)
{
    RW_VAR read;
    read.aux1 = PLC_NO_HOST_REQUEST;
    read.deviceNo = settings.localDeviceNo;
    read.station = settings.defaultStation;
    read.areaIndex = area;
    read.address = address;
    read.length = bytes;
    return AddListReadVar(&read);
}

const int kScreenCategory = 1;

int readOnce(const QString& label, int count, int tag)
{
    RW_VAR read;
    read.category = kScreenCategory;
    read.aux1 = tag;
    read.aux2 = PLC_REPLY_STORED; // in the image
    read.deviceNo = settings.localDeviceNo;
    read.label = label;
    read.length = count; // in registers; the driver makes bytes of it
    return AddListOnceReadVar(&read, PLC_APPEND_NEW);
}

int writeRange(int area, int address, const QByteArray& bytes, int tag)
{
    RW_VAR write;
    write.category = kScreenCategory;
    write.aux1 = tag;
    write.aux2 = PLC_REPLY_ACKNOWLEDGED; // it holds no data
    write.deviceNo = settings.localDeviceNo;
    write.station = settings.defaultStation;
    write.areaIndex = area;
    write.address = address;
    write.length = int(bytes.size());
    write.data = bytes; // most significant byte first
    return AddListWriteVar(&write, PLC_APPEND_NEW);
}

void** handOverMemories(void* bits, void* words, void* indexed)
{
    return FlashLocalRegister(bits, words, indexed);
}

bool isFinished()
{
    return QueryFinishFlag() == 1;
}

void switchAllStationsOn()
{
    EnableEthernet(PLC_ALL_STATIONS, PLC_STATION_ON);
}

void switchStation(int station, bool on)
{
    EnCommStation(station, on ? PLC_STATION_ON : PLC_STATION_OFF);
}

quint16 speed()
{
    QByteArray value;
    GetRegisterData(QStringLiteral("MAIN.speed"), 0, 0, 0, &value, 1);
    return qFromLittleEndian<quint16>(reinterpret_cast<const uchar*>(value.constData()));
}

float flow(int pump)
{
    QByteArray value;
    GetRegisterData(QStringLiteral("MAIN.pumps[%1].flow").arg(pump), 0, 0, 0, &value, 2);
    const quint32 bits =
        qFromLittleEndian<quint32>(reinterpret_cast<const uchar*>(value.constData()));
    float number = 0;
    std::memcpy(&number, &bits, sizeof number);
    return number;
}

QString name()
{
    QByteArray value;
    GetRegisterData(QStringLiteral("MAIN.name"), 0, 0, 0, &value, 20); // 40 bytes
    return QString::fromLatin1(value.constData());                     // up to the terminating zero
}

bool isRunning()
{
    QByteArray value;
    GetRegisterData(QStringLiteral("MAIN.running"), 0, 0, 0, &value, 1);
    return value == QByteArray(1, '\1');
}

void setSpeed(quint16 value, int tag)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(value, reinterpret_cast<uchar*>(bytes.data()));
    SetRegisterData(QStringLiteral("MAIN.speed"), 0, QString(), 0, &bytes, 1, kScreenCategory, tag);
}

void setState(int pump, quint8 value, int tag)
{
    QByteArray bytes(2, '\0'); // one register for one byte
    bytes[0] = char(value);
    SetRegisterData(QStringLiteral("MAIN.pumps[%1].state").arg(pump), 0, QString(), 0, &bytes, 1,
                    kScreenCategory, tag);
}

void setRunning(bool on, int tag)
{
    QByteArray bit(1, on ? '\1' : '\0');
    SetRegisterData(QStringLiteral("MAIN.running"), 0, QString(), 0, &bit, 1, kScreenCategory, tag);
}

} // namespace example
