// Reads a value of a PLC once a second and prints it; a socket and poll(2) are all it needs.

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "host/driver/driver_library.h"
#include "host/points/value_codec.h"
#include "host/runtime/runtime.h"
#include "project/symbol_builder.h"

using namespace plc;

static qint64 now()
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

static int connectTo(const char* address, int port)
{
    const int plc = ::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    sockaddr_in place{};
    place.sin_family = AF_INET;
    place.sin_port = htons(uint16_t(port));
    ::inet_pton(AF_INET, address, &place.sin_addr);
    ::connect(plc, reinterpret_cast<sockaddr*>(&place), sizeof place); // poll() tells how it went
    return plc;
}

int main(int, char** argv) // host_poll DRIVER PORT
{
    const auto library = host::DriverLibrary::load(QString::fromLocal8Bit(argv[1]));
    if (!library)
        return std::fprintf(stderr, "%s\n", qPrintable(library.error().text));
    project::SymbolBuilder builder;
    const auto symbols = builder.scope("TANK").variable("level", "UINT", 1, 10).build();
    host::RuntimeSettings settings;
    settings.times.cycleTime = 1000;
    host::RuntimeListener listener;
    host::Runtime runtime(*library->take(), settings, *symbols, &listener);
    const host::DataPoint level = *runtime.points().find("TANK.level");
    runtime.readCyclically({level}, now());
    host::Session& session = runtime.session();
    session.start(now());
    int plc = -1;
    for (quint64 shown = 0;;) {
        for (const host::SessionAction& action : session.takeActions()) {
            if (action.kind == host::SessionAction::Connect)
                plc = connectTo("127.0.0.1", std::atoi(argv[2]));
            else if (action.kind == host::SessionAction::Send)
                ::send(plc, action.bytes.constData(), size_t(action.bytes.size()), MSG_NOSIGNAL);
            else
                ::close(std::exchange(plc, -1));
        }
        const bool isUp = session.linkState() == host::LinkState::Up;
        pollfd event{plc, short(isUp ? POLLIN : POLLOUT), 0};
        const qint64 deadline = session.nextDeadline();
        ::poll(&event, 1, deadline < 0 ? -1 : int(qMax<qint64>(0, deadline - now())));
        QByteArray bytes(4096, '\0');
        bytes.resize(int(event.revents == POLLIN ? ::recv(plc, bytes.data(), 4096, 0) : 0));
        if (!bytes.isEmpty())
            session.received(bytes, now());
        else if (event.revents == POLLOUT)
            session.connected(now());
        else if (event.revents != 0)
            session.disconnected("the connection broke", now());
        session.tick(now());
        if (std::exchange(shown, runtime.values().reads(0)) != runtime.values().reads(0)) {
            const auto values = host::decodeValues(level, runtime.values().bytes(0));
            std::printf("TANK.level %s\n", qPrintable(host::pointText(level, values)));
            std::fflush(stdout);
        }
    }
}
