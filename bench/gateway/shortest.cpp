// The work of the gateways under load in the shortest honest way: one thread reads 200 Modbus
// plants of 100 values twice a second with libmodbus, and publishes what has changed with
// libmosquitto, a JSON object for each plant. No births, no quality, no store, no writes, no
// reconnecting.

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QProcess>
#include <QtCore/QStandardPaths>
#include <QtCore/QTemporaryDir>

#include <modbus/modbus.h>
#include <mosquitto.h>

#include <signal.h>
#include <unistd.h>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <string>
#include <thread>
#include <vector>

#include "bench/gateway/modbus_plants.h"
#include "bench/support/process_figures.h"

namespace plc::bench {
namespace {

constexpr int kPlants = 200;
constexpr int kValues = 100;
constexpr int kRegisters = 2 * kValues;
constexpr int kRegistersAtOnce = 100; // A read takes 125 at most.
constexpr int kFirstPort = 21000;
constexpr int kBrokerPort = 20999;
constexpr auto kCycle = std::chrono::milliseconds(500);
constexpr int kStartTime = 1000000; // us

struct Plant {
    modbus_t* context;
    std::string topic;
    std::vector<uint16_t> last = std::vector<uint16_t>(kRegisters);
    std::vector<uint16_t> now = std::vector<uint16_t>(kRegisters);
};

void readAndPublish(Plant* plant, mosquitto* broker)
{
    for (int at = 0; at < kRegisters; at += kRegistersAtOnce) {
        if (modbus_read_registers(plant->context, at, kRegistersAtOnce, &plant->now[size_t(at)]) !=
            kRegistersAtOnce)
            qFatal("a plant does not answer: %s", modbus_strerror(errno));
    }
    std::string message;
    for (size_t i = 0; i < kRegisters; i += 2) {
        if (std::memcmp(&plant->now[i], &plant->last[i], 2 * sizeof(uint16_t)) == 0)
            continue;
        const unsigned value = unsigned(plant->now[i]) << 16 | plant->now[i + 1];
        message += (message.empty() ? "{\"" : ",\"") + std::to_string(i / 2) +
                   "\":" + std::to_string(value);
    }
    if (message.empty())
        return;
    message += '}';
    mosquitto_publish(broker, nullptr, plant->topic.c_str(), int(message.size()), message.data(), 0,
                      false);
    plant->last = plant->now;
}

void run(int seconds)
{
    mosquitto_lib_init();
    mosquitto* broker = mosquitto_new("shortest", true, nullptr);
    if (mosquitto_connect(broker, "127.0.0.1", kBrokerPort, 60) != MOSQ_ERR_SUCCESS ||
        mosquitto_loop_start(broker) != MOSQ_ERR_SUCCESS)
        qFatal("there is no broker");
    std::vector<Plant> plants;
    for (int i = 0; i < kPlants; ++i) {
        modbus_t* context = modbus_new_tcp("127.0.0.1", kFirstPort + i);
        if (modbus_connect(context) != 0)
            qFatal("plant %d cannot be reached", i);
        plants.push_back({context, "plants/" + std::to_string(i)});
    }
    const double before = processorMs(::getpid());
    auto next = std::chrono::steady_clock::now();
    for (int pass = 0; pass < 2 * seconds; ++pass) {
        for (Plant& plant : plants)
            readAndPublish(&plant, broker);
        next += kCycle;
        std::this_thread::sleep_until(next);
    }
    std::printf("libmodbus and libmosquitto: %.2f ms of processor time for a PLC and second\n",
                (processorMs(::getpid()) - before) / seconds / kPlants);
}

} // namespace
} // namespace plc::bench

int main(int argc, char** argv)
{
    using namespace plc::bench;
    const int seconds = argc > 1 ? std::atoi(argv[1]) : 0;
    if (seconds <= 0) {
        std::fprintf(stderr, "usage: bench_shortest SECONDS\n");
        return 2;
    }
    const pid_t plants = ::fork();
    if (plants == 0)
        serveModbusPlants(kFirstPort, kPlants, kRegisters);
    QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    QFile configuration(folder.filePath(QStringLiteral("broker.conf")));
    configuration.open(QIODevice::WriteOnly);
    configuration.write("listener 20999 127.0.0.1\nallow_anonymous true\n");
    configuration.close();
    QProcess broker;
    broker.setStandardErrorFile(QProcess::nullDevice());
    broker.start(
        QStandardPaths::findExecutable(QStringLiteral("mosquitto"),
                                       {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/bin")}),
        {QStringLiteral("-c"), configuration.fileName()});
    ::usleep(kStartTime);
    run(seconds);
    ::kill(plants, SIGKILL);
    broker.kill();
    broker.waitForFinished();
    return 0;
}
