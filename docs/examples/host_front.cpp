// Writes a value from another thread than the one that talks to the PLC, and ends when its outcome
// is known.

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <thread>

#include "host/driver/driver_library.h"
#include "host/points/value_codec.h"
#include "host/runtime/runtime_front.h"
#include "host/tcp/tcp_link.h"
#include "host/transfers/result_text.h"
#include "project/symbol_builder.h"

using namespace plc;

int main(int argc, char** argv) // host_front DRIVER PORT
{
    QCoreApplication application(argc, argv);
    const auto library = host::DriverLibrary::load(QString::fromLocal8Bit(argv[1]));
    if (!library)
        qFatal("%s", qPrintable(library.error().text));
    project::SymbolBuilder builder;
    const auto symbols = builder.scope("TANK").variable("level", "UINT", 1, 10).build();
    host::RuntimeListener listener;
    host::Runtime runtime(*library->take(), host::RuntimeSettings(), *symbols, &listener);
    host::TcpLink link(&runtime.session(), "127.0.0.1", QByteArray(argv[2]).toUShort());
    const host::DataPoint level = *runtime.points().find("TANK.level");
    link.start();

    QObject owner; // in the thread of the link; ends behind the front, before the loop runs again
    host::RuntimeFront front(&runtime, [&] {
        QMetaObject::invokeMethod(&owner, [&] {
            front.carryOut(link.now());
            link.pump();
        });
    });

    std::thread other([&] {
        front.write(level, *host::parsePoint(level, "47"), [&](const auto& outcome) {
            QTextStream(stdout) << host::writeOutcomeText(level, outcome) << "\n";
            QCoreApplication::exit(outcome.isDone() ? 0 : 1);
        });
    });
    const int code = QCoreApplication::exec();
    other.join();
    return code;
}
