#include "bench/gateway/modbus_plants.h"

#include <modbus/modbus.h>

#include <poll.h>
#include <unistd.h>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <utility>
#include <vector>

namespace plc::bench {
namespace {

struct ServedPlant {
    modbus_t* context;
    int listener;
    int client = -1;
};

[[noreturn]] void fail(const char* what)
{
    std::perror(what);
    std::exit(2);
}

void serve(ServedPlant* plant, modbus_mapping_t* memory)
{
    uint8_t query[MODBUS_TCP_MAX_ADU_LENGTH];
    modbus_set_socket(plant->context, plant->client);
    const int size = modbus_receive(plant->context, query);
    if (size > 0)
        modbus_reply(plant->context, query, size, memory);
    else if (size < 0)
        ::close(std::exchange(plant->client, -1));
}

} // namespace

unsigned clockNow()
{
    return unsigned(std::time(nullptr));
}

void serveModbusPlants(int firstPort, int plants, int registers)
{
    modbus_mapping_t* memory = modbus_mapping_new(0, 0, registers, 0);
    std::vector<ServedPlant> all;
    for (int i = 0; i < plants; ++i) {
        modbus_t* context = modbus_new_tcp("127.0.0.1", firstPort + i);
        const int listener = context ? modbus_tcp_listen(context, 1) : -1;
        if (listener < 0)
            fail("listen");
        all.push_back({context, listener});
    }
    std::vector<pollfd> entries(all.size());
    for (;;) {
        for (size_t i = 0; i < all.size(); ++i)
            entries[i] = {all[i].client < 0 ? all[i].listener : all[i].client, POLLIN, 0};
        ::poll(entries.data(), nfds_t(entries.size()), -1);
        const unsigned clock = clockNow();
        for (int i = 0; i + 1 < registers; i += 2) {
            memory->tab_registers[i] = uint16_t(clock >> 16);
            memory->tab_registers[i + 1] = uint16_t(clock);
        }
        for (size_t i = 0; i < all.size(); ++i) {
            if (entries[i].revents == 0)
                continue;
            if (all[i].client < 0)
                all[i].client = modbus_tcp_accept(all[i].context, &all[i].listener);
            else
                serve(&all[i], memory);
        }
    }
}

} // namespace plc::bench
