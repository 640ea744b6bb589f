#ifndef PLC_TESTS_FAULTS_FAULT_RUN_H
#define PLC_TESTS_FAULTS_FAULT_RUN_H

#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>

#include <deque>
#include <functional>
#include <memory>
#include <string>

#include "faults/fault_plan.h"
#include "faults/faulty_proxy.h"
#include "faults/plant.h"
#include "faults/simulated_plc.h"
#include "host/runtime/runtime.h"
#include "host/tcp/tcp_link.h"
#include "project/project.h"
#include "support/random.h"

namespace plc::faults {

/// A host that reads and writes a simulated PLC over a wire on which things go wrong for a while,
/// all as a seed says. Its checks are GoogleTest expectations.
class FaultRun : public host::RuntimeListener {
public:
    /// All times that the settings limit are `slowness` times as long as usual.
    FaultRun(const host::DriverFunctions& driver, std::uint32_t seed, int slowness);
    ~FaultRun() override;

    void run();

    /// What took longer than the settings allow, or did not come to an end; empty: nothing did. The
    /// PLC, another process, may have stood still meanwhile, or be slower than the times allow.
    const std::string& delay() const { return m_delay; }
    /// What went wrong on the wire, one a line.
    QString history() const { return m_proxy->history().join(QLatin1Char('\n')); }

private:
    /// A write that was handed to the host.
    struct Attempt {
        PlannedWrite plan;
        int outcomes = 0;
        host::TransferOutcome::Kind kind = host::TransferOutcome::NotSent;
    };

    void exchangeUnderFaults();
    bool comeBack();
    bool writeUndisturbed();
    void end();

    void startTransfer();
    void write(const PlannedWrite& plan);
    void readOnce();
    void annoy();
    bool isSettled() const;
    bool showsMemory();
    bool showsPeekedMemory() const;
    void peekMemory();
    void fillMemory();

    /// Turns the event loop once; measures how long the process was kept from it.
    void turn();
    /// Turns the event loop until this is so. False, and told as a delay, when it takes
    /// unreasonably long.
    bool until(const char* what, const std::function<bool()>& condition);
    /// Fails the test when something that the settings limit took longer.
    void checkDuration(const char* what, qint64 since, int limit);
    /// Says that it took longer; else nothing.
    std::string delayOf(const char* what, qint64 since, int limit);

    void checkRecord() const;
    int recorded(const WritePiece& piece, bool takenOnly) const;

    void linkChanged(host::LinkState state, const QString& reason, int retryDelay) override;
    void requestSent(const host::SentRequest& request) override;
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;

    test::Random m_random;
    HostSettings m_settings;
    QTemporaryDir m_folder;
    std::unique_ptr<SimulatedPlc> m_plc;
    FaultPlan m_plan;
    std::unique_ptr<FaultyProxy> m_proxy;
    project::Project m_project;
    std::unique_ptr<host::Runtime> m_runtime;
    std::unique_ptr<host::TcpLink> m_link;

    QElapsedTimer m_clock;
    qint64 m_lastTurn = 0;
    qint64 m_longestTurn = 0;
    qint64 m_sentAt = -1;         ///< Of the request that waits for its answer; -1: none does.
    qint64 m_linkStateSince = 0;  ///< When the link last changed.
    int m_linkStateLimit = -1;    ///< How long it may stay as it is; -1: as long as it likes.
    QVector<QByteArray> m_peeked; ///< Memory of the PLC by rows, as it was last looked at.
    qint64 m_nextPeek = 0;
    std::string m_delay;

    std::deque<Attempt> m_attempts; ///< Elements stay where they are.
    int m_readsBegun = 0;
    int m_readsSettled = 0;
    int m_lastNumber = 0; ///< That marked a written value.
    bool m_refusesWrites = false;
    bool m_refusesLogin = false;
};

} // namespace plc::faults

#endif
