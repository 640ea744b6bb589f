// Writes a value to a PLC, reads it once a second and prints it, on Qt's event loop.
#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>
#include "host/driver/driver_library.h"
#include "host/points/value_codec.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "project/symbol_builder.h"

using namespace plc;
int main(int argc, char** argv) // host_qt DRIVER PORT
{
    QCoreApplication application(argc, argv);
    const auto library = host::DriverLibrary::load(QString::fromLocal8Bit(argv[1]));
    if (!library)
        qFatal("%s", qPrintable(library.error().text));
    project::SymbolBuilder builder;
    const auto symbols = builder.scope("TANK").variable("level", "UINT", 1, 10).build();
    QTextStream out(stdout);
    host::RuntimeSettings settings;
    settings.times.cycleTime = 1000;
    host::RuntimeListener listener;
    host::Runtime runtime(*library->take(), settings, *symbols, &listener);
    host::TcpLink link(&runtime.session(), "127.0.0.1", QByteArray(argv[2]).toUShort());
    const host::DataPoint level = *runtime.points().find("TANK.level");
    runtime.readCyclically({level}, link.now());
    runtime.write(level, *host::parsePoint(level, "47"), link.now(), [&](const auto& outcome) {
        out << (outcome.isDone() ? "written" : "not written") << Qt::endl;
    });
    QTimer show;
    QObject::connect(&show, &QTimer::timeout, [&] {
        const host::ValueReading value = runtime.values().reading(0, link.now());
        const bool isGood = value.state == host::ValueState::Good;
        const auto values = host::decodeValues(level, value.bytes);
        out << "TANK.level " << (isGood ? host::pointText(level, values) : "?") << Qt::endl;
    });
    show.start(1000);
    link.start();
    return QCoreApplication::exec();
}
