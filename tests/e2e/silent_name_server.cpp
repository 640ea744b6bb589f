// The system's call for the addresses of a name, with a name server that never answers.

#include <netdb.h>
#include <unistd.h>

extern "C" int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo**)
{
    for (;;)
        ::pause();
}
