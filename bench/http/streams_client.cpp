// Opens so many event streams, reads them for so many seconds and prints how many whole frames came
// in all: streams_client PORT STREAMS SECONDS

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

int main(int, char** arguments)
{
    const char request[] = "GET / HTTP/1.1\r\nHost: localhost\r\n\r\n";
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(std::uint16_t(std::atoi(arguments[1])));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    std::vector<pollfd> sockets;
    for (int i = std::atoi(arguments[2]); i > 0; --i) {
        const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
        if (::connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
            ::write(socket, request, sizeof request - 1) < 0)
            return 1;
        sockets.push_back({socket, POLLIN, 0});
    }
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::seconds(std::atoi(arguments[3]));
    std::vector<char> buffer(1 << 20);
    long long frames = 0;
    while (std::chrono::steady_clock::now() < end) {
        ::poll(sockets.data(), sockets.size(), 100);
        for (const pollfd& socket : sockets) {
            if ((socket.revents & POLLIN) == 0)
                continue;
            const ssize_t count = ::read(socket.fd, buffer.data(), buffer.size());
            frames += std::count(buffer.begin(), buffer.begin() + std::max<ssize_t>(count, 0), '~');
        }
    }
    std::printf("%lld\n", frames);
}
