// Reads a value of many PLCs, each over a link of its own, in one process and one thread. Every
// PLC has its own copy of the driver. Prints once a second how many values are good.

#include <QtCore/QCoreApplication>
#include <QtCore/QTextStream>

#include <memory>
#include <vector>

#include "host/driver/driver_library.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "project/symbol_builder.h"

using namespace plc;

namespace {

/// One PLC. What stands first ends last: the link, then the runtime, with it the copy of the
/// driver.
struct Plant {
    Plant(host::DriverClaim driver, const project::Symbols& symbols, quint16 port)
        : runtime(std::move(driver), everySecond(), symbols, &listener),
          link(&runtime.session(), "127.0.0.1", port)
    {
        runtime.readCyclically({*runtime.points().find("TANK.level")}, link.now());
        link.start();
    }

    static host::RuntimeSettings everySecond()
    {
        host::RuntimeSettings settings;
        settings.times.cycleTime = 1000;
        return settings;
    }

    bool isGood() const
    {
        return runtime.values().reading(0, link.now()).state == host::ValueState::Good;
    }

    host::RuntimeListener listener;
    host::Runtime runtime;
    host::TcpLink link;
};

} // namespace

int main(int argc, char** argv) // host_many DRIVER PORT...
{
    QCoreApplication application(argc, argv);
    project::SymbolBuilder builder;
    const auto symbols = builder.scope("TANK").variable("level", "UINT", 1, 10).build();
    std::vector<std::unique_ptr<Plant>> plants;
    for (int i = 2; i < argc; ++i) {
        const auto copy = host::DriverLibrary::loadCopy(QString::fromLocal8Bit(argv[1]));
        if (!copy)
            qFatal("%s", qPrintable(copy.error().text));
        plants.push_back(
            std::make_unique<Plant>(*copy->take(), *symbols, QByteArray(argv[i]).toUShort()));
    }
    QTimer show;
    QObject::connect(&show, &QTimer::timeout, [&plants] {
        int good = 0;
        for (const std::unique_ptr<Plant>& plant : plants)
            good += plant->isGood() ? 1 : 0;
        QTextStream(stdout) << good << " of " << plants.size() << " PLCs\n";
    });
    show.start(1000);
    return QCoreApplication::exec();
}
