#include <QtCore/QCoreApplication>

#include "gateway/service/program.h"
#include "streams/output_stream.h"

int main(int argc, char** argv)
{
    plc::streams::secureStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plc-gateway"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PLC_VERSION));
    return plc::gateway::runProgram(application.arguments());
}
