// Reads one variable through the installed driver, with the PLC's replies made up on the spot.

#include <plc_driver.h>

#include <cstdio>

namespace {

#ifdef DRIVER_QT_MAJOR
static_assert(QT_VERSION_MAJOR == DRIVER_QT_MAJOR, "host and driver share Qt's value types");
#endif

void handOverSymbols()
{
    Label_Type_Info level;
    level.name = QString::fromLatin1("level");
    level.typeFlags = 4;
    level.offset = 10;
    level.areaInfo << 3;
    Label_Type_Info variables;
    variables.members << level;
    variables.memberCount = 1;
    Label_Type_Info scope;
    scope.name = QString::fromLatin1("TANK");
    scope.typeDef << variables;
    QList<Label_Type_Info> symbols;
    symbols << scope;
    PassVarName_2(&symbols);
}

/// A good reply whose payload, status included, has the given size.
QByteArray reply(int payload)
{
    QByteArray frame(6 + payload, '\0');
    frame[0] = frame[1] = char(0xbb);
    frame[4] = char(payload >> 8);
    frame[5] = char(payload & 0xff);
    return frame;
}

/// Sends nothing: compares the next request with what a PLC would have to get, and answers it.
bool exchange(const char* request, QByteArray answer)
{
    const Protocol* next = ComCommunication();
    if (!next || next->frame.toHex() != request) {
        std::fprintf(stderr, "wrong request %s, expected %s\n",
                     next ? next->frame.toHex().constData() : "(none)", request);
        return false;
    }
    const int size = int(answer.size());
    return DataCom(&answer, size)->result == 1 && DataCom(&answer, size)->result == 1;
}

} // namespace

int main()
{
    ComInfo settings;
    settings.maxReadBytes = 200;
    SetComInfo(&settings);
    handOverSymbols();

    HostVarItem item;
    item.label = QString::fromLatin1("TANK.level");
    item.count = 1;
    QList<HostVarItem> cyclic;
    cyclic << item;
    ReCreatReadVarList(&cyclic);

    QByteArray fileReply = reply(30);
    fileReply[24] = 0x34;
    fileReply[25] = 0x12;
    QByteArray readReply = reply(9);
    readReply[13] = 0x05;
    readReply[14] = char(0xdc);
    if (!exchange("bbbb0000000e0100000002000000060000000000", reply(200)) ||
        !exchange("bbbb000000113100000d444f574e4c4f41442e53444200", fileReply) ||
        !exchange("bbbb000000142e0000000001"
                  "00030000000a00000002"
                  "00011234",
                  readReply))
        return 1;

    QByteArray value;
    GetRegisterData(item.label, 0, 0, 0, &value, 1);
    std::printf("TANK.level %d, Qt %s\n", uchar(value[0]) + 256 * uchar(value[1]), qVersion());
}
