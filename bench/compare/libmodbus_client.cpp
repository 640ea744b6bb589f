#include "libmodbus_client.h"

#include <modbus.h>

#include <array>
#include <cerrno>
#include <memory>

#include "registers.h"

namespace plc::bench {
namespace {

struct Closer {
    void operator()(modbus_t* connection) const
    {
        modbus_close(connection);
        modbus_free(connection);
    }
};
using Connection = std::unique_ptr<modbus_t, Closer>;

[[noreturn]] void giveUpWithReason(const char* what)
{
    giveUp(QStringLiteral("libmodbus: %1: %2")
               .arg(QString::fromLatin1(what), QString::fromLatin1(modbus_strerror(errno))));
}

Connection connectionTo(quint16 port)
{
    Connection connection(modbus_new_tcp("127.0.0.1", port));
    modbus_set_response_timeout(connection.get(), kAnswerTimeout / 1000, 0);
    // It sets TCP_NODELAY by itself.
    if (modbus_connect(connection.get()) != 0)
        giveUpWithReason("connect");
    return connection;
}

class Worker {
public:
    Worker(Work work, modbus_t* connection, Recorder* recorder)
        : m_work(work), m_connection(connection), m_recorder(recorder)
    {
    }

    void pass(const std::vector<RegisterRequest>& requests)
    {
        m_values.words.clear();
        m_values.numbers.clear();
        ++m_written;
        for (const RegisterRequest& request : requests) {
            m_recorder->requestSent();
            carryOut(request);
            m_recorder->arrived(request.values);
        }
    }
    const ReceivedValues& values() const { return m_values; }

    void carryOut(const RegisterRequest& request)
    {
        std::array<std::uint16_t, kMostRegisters> registers;
        if (exchange(request, registers.data()) < 0)
            giveUpWithReason(qPrintable(titleOf(m_work)));
        if (request.kind == RegisterRequest::WriteAndRead && registers[0] != m_written)
            giveUp(QStringLiteral("libmodbus: another value was read back than was written"));
        if (request.kind == RegisterRequest::ReadInput ||
            request.kind == RegisterRequest::ReadHolding)
            receive(m_work, registers.data(), request.registers, &m_values);
    }

private:
    int exchange(const RegisterRequest& request, std::uint16_t* registers)
    {
        switch (request.kind) {
            case RegisterRequest::ReadInput:
                return modbus_read_input_registers(m_connection, request.address, request.registers,
                                                   registers);
            case RegisterRequest::ReadHolding:
                return modbus_read_registers(m_connection, request.address, request.registers,
                                             registers);
            case RegisterRequest::Write:
                return modbus_write_register(m_connection, request.address, m_written);
            case RegisterRequest::WriteAndRead:
                break;
        }
        return modbus_write_and_read_registers(m_connection, request.address, 1, &m_written,
                                               request.address, 1, registers);
    }

    const Work m_work;
    modbus_t* const m_connection;
    Recorder* const m_recorder;
    ReceivedValues m_values;
    std::uint16_t m_written = 0;
};

} // namespace

void LibmodbusClient::measure(Work work, quint16 port, Recorder* recorder)
{
    const Connection connection = connectionTo(port);
    const std::vector<RegisterRequest> requests = registerRequests(work);
    Worker worker(work, connection.get(), recorder);
    worker.carryOut({RegisterRequest::ReadInput, 0, 1, 1});
    recorder->begin();
    do {
        worker.pass(requests);
    } while (!recorder->passDone());
    if (isRead(work) && !areRight(work, worker.values()))
        giveUp(QStringLiteral("libmodbus: %1: wrong values").arg(titleOf(work)));
}

} // namespace plc::bench
