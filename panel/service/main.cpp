#include <QtCore/QCoreApplication>

#include "panel/service/program.h"
#include "streams/output_stream.h"

int main(int argc, char** argv)
{
    plc::streams::secureStandardStreams();
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("plc-panel"));
    QCoreApplication::setApplicationVersion(QStringLiteral(PLC_VERSION));
    return plc::panel::runProgram(application.arguments());
}
