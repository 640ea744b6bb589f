#include <QtCore/QTextStream>
#include <QtNetwork/QTcpSocket>

#include "plc_driver.h"

int main(int argc, char** argv)
{
    ComInfo settings;
    settings.maxReadBytes = 200;
    SetComInfo(&settings);

    Label_Type_Info level, variables, scope; // TANK.level: UINT at byte 10 of area 1
    level.name = QStringLiteral("level");
    level.typeFlags = PLC_TYPE_UINT;
    level.offset = 10;
    level.areaInfo << 1;
    variables.members << level;
    variables.memberCount = 1;
    scope.name = QStringLiteral("TANK");
    scope.typeDef << variables;
    QList<Label_Type_Info> symbols{scope};
    PassVarName_2(&symbols);

    HostVarItem item;
    item.label = QStringLiteral("TANK.level");
    item.count = 1;
    QList<HostVarItem> cyclic{item};
    ReCreatReadVarList(&cyclic);

    QTcpSocket plc;
    plc.connectToHost(QStringLiteral("127.0.0.1"), quint16(argc > 1 ? atoi(argv[1]) : 1200));
    while (settings.scanDone == 0) {
        QByteArray reply;
        plc.write(ComCommunication()->frame); // the login first, then the reads
        do {
            if (!plc.waitForReadyRead(2000))
                return 1;
            reply += plc.readAll();
        } while (DataCom(&reply, int(reply.size()))->result == PLC_RESULT_NOT_FINISHED);
        if (DataCom(&reply, int(reply.size()))->result != PLC_RESULT_ACCEPTED)
            return 1;
    }

    QByteArray value; // least significant byte first
    GetRegisterData(item.label, 0, 0, 0, &value, 1);
    QTextStream(stdout) << "TANK.level " << uchar(value[0]) + 256 * uchar(value[1]) << '\n';
}
