#ifndef PLC_TESTS_FAULTS_STAMPED_RUN_H
#define PLC_TESTS_FAULTS_STAMPED_RUN_H

#include <QtCore/QSet>
#include <QtCore/QString>

#include <deque>
#include <functional>
#include <memory>

#include "faults/plant.h"
#include "faults/stamped_plc.h"
#include "faults/stamped_wire.h"
#include "faults/truth_judge.h"
#include "host/runtime/runtime.h"
#include "project/project.h"
#include "support/random.h"

namespace plc::faults {

/// A host and a stamped PLC without sockets and with a clock of their own, on which things go wrong
/// for a while as a seed says. All that the host tells is judged at each step. Its checks are
/// GoogleTest expectations.
class StampedRun : public host::RuntimeListener {
public:
    StampedRun(const host::DriverFunctions& driver, std::uint32_t seed);
    ~StampedRun() override;

    void run();
    /// What went wrong, one a line.
    QString history() const { return m_wire.history().join(QLatin1Char('\n')); }
    quint64 judgedValues() const { return m_judgedValues; }

private:
    struct Attempt {
        PlannedWrite plan;
        ToldWrite told;
        int outcomes = 0;
        /// The PLC's reply to it cannot be told from a copy that came in its place.
        bool isUndecidable = false;
    };
    struct OneShot {
        Array array;
        qint64 begunAt = 0;
        int outcomes = 0;
    };
    /// What was judged last of a row.
    struct Row {
        QByteArray bytes;
        qint64 readAt = -1;
    };

    void exchangeUnderFaults();
    void comeBack();
    void readAroundRefusals();
    void writeUndisturbed();
    void end();

    /// To the next event, but not beyond `limit`.
    void step(qint64 limit);
    bool until(const char* what, qint64 limit, const std::function<bool()>& condition);
    void standStill();
    void receive();
    void tick();
    void carryOut();
    void act(const host::SessionAction& action);

    void startTransfer();
    void refuseSomething();
    void write(const PlannedWrite& plan);
    void readOnce();
    host::DataPoint point(const QString& text);

    void judgeValues();
    void judgeRow(int row);
    void judgeWrites();
    QString judge(const ToldValue& told) const;
    /// Fails the test, once for each kind of lie.
    void report(const QString& kind, const QString& lie);
    bool isSettled() const;
    bool isFresh(const Array& array, qint64 since) const;

    void linkChanged(host::LinkState, const QString&, int) override {}
    void requestSent(const host::SentRequest&) override {}
    void requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                         const QByteArray& reply) override;

    test::Random m_random;
    HostSettings m_settings;
    project::Project m_project;
    StampedPlc m_plc;
    int m_turnaround;
    StampedWire m_wire;
    TruthJudge m_judge;
    std::unique_ptr<host::Runtime> m_runtime;

    qint64 m_now = 1000;
    qint64 m_connectsAt = -1;
    qint64 m_sentAt = 0; ///< The last request.
    qint64 m_nextTransfer = 0;
    /// A second copy was taken for another reply on this connection.
    bool m_isMisled = false;
    bool m_isLoginMisled = false;
    QVector<Row> m_rows;
    std::deque<Attempt> m_attempts; ///< Elements stay where they are.
    std::deque<OneShot> m_oneShots;
    int m_lastNumber = 0; ///< That marked a written value.
    int m_lies = 0;
    QSet<QString> m_kindsOfLies;
    quint64 m_judgedValues = 0;
    quint64 m_replies = 0;
    QVector<Range> m_refusedReads;
};

} // namespace plc::faults

#endif
