#include "libmodbus_server.h"

#include <modbus.h>
#include <unistd.h>

#include <algorithm>

#include "registers.h"
#include "sockets.h"

namespace plc::bench {
namespace {

modbus_mapping_t* newMapping()
{
    const RegisterMap map = registerMap();
    modbus_mapping_t* mapping =
        modbus_mapping_new(0, 0, int(map.holding.size()), int(map.input.size()));
    if (!mapping)
        giveUp(QStringLiteral("libmodbus: no memory for the registers"));
    std::copy(map.input.begin(), map.input.end(), mapping->tab_input_registers);
    std::copy(map.holding.begin(), map.holding.end(), mapping->tab_registers);
    return mapping;
}

/// Whether the request reads or writes several holding registers, and so one that does not exist.
bool touchesHole(const std::uint8_t* request, int header)
{
    const std::uint8_t function = request[header];
    const int countOfFirstRange = request[header + 3] << 8 | request[header + 4];
    const bool hasCount = function == MODBUS_FC_READ_HOLDING_REGISTERS ||
                          function == MODBUS_FC_WRITE_MULTIPLE_REGISTERS ||
                          function == MODBUS_FC_WRITE_AND_READ_REGISTERS;
    return hasCount && countOfFirstRange > 1;
}

void serve(modbus_t* context, modbus_mapping_t* mapping)
{
    const int header = modbus_get_header_length(context);
    std::uint8_t request[MODBUS_TCP_MAX_ADU_LENGTH];
    for (;;) {
        const int size = modbus_receive(context, request);
        if (size < 0)
            return;
        if (size > 0 && touchesHole(request, header))
            modbus_reply_exception(context, request, MODBUS_EXCEPTION_ILLEGAL_DATA_ADDRESS);
        else if (size > 0)
            modbus_reply(context, request, size, mapping);
    }
}

} // namespace

void runLibmodbusServer()
{
    modbus_mapping_t* mapping = newMapping();
    modbus_t* context = modbus_new_tcp("127.0.0.1", 0);
    const int listener = listenAndTell();
    for (;;) {
        const int client = acceptClient(listener);
        modbus_set_socket(context, client);
        serve(context, mapping);
        ::close(client);
    }
}

} // namespace plc::bench
