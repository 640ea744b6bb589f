#ifndef PLC_PANEL_SERVICE_PANEL_H
#define PLC_PANEL_SERVICE_PANEL_H

#include <QtCore/QTimer>

#include <memory>

#include "panel/access/access.h"
#include "panel/access/access_guard.h"
#include "panel/access/audit_writer.h"
#include "panel/access/login_audit.h"
#include "panel/access/secrets.h"
#include "panel/api/alarm_watch.h"
#include "panel/api/api_context.h"
#include "panel/api/history_queries.h"
#include "panel/config/settings.h"
#include "panel/http/server.h"
#include "panel/plants/plants.h"
#include "panel/plants/value_recorder.h"
#include "panel/recipes/recipe_desk.h"
#include "service/inbox.h"

namespace plc::panel {

/// All of a panel that runs: PLCs, what follows them, and the server. Lives in one thread with an
/// event loop, to which the server's thread posts what concerns PLCs.
class Panel : private PlantListener {
public:
    using Log = std::function<void(const QString&)>;

    Panel(const PanelSettings& settings, const QString& driver, const QString& version, Log log);
    ~Panel() override;

    /// Reads projects and files, and loads the driver for each PLC. Nothing is connected yet.
    Expected<void> prepare();
    /// Connects the PLCs and listens.
    Expected<void> start();
    /// Reads again who may log in and the certificate, goes on with a new audit file, and tells
    /// what came of it.
    void readAgain();

    const Plants& plants() const { return m_plants; }
    /// "http://127.0.0.1:8080/"; empty without TCP.
    QString address() const;
    /// One line for those who ask how the panel does.
    QString status() const;

private:
    static constexpr int kInstanceBytes = 16;

    void sampled(Plant* plant, const QVector<int>& changed) override;
    void linkChanged(Plant* plant) override;
    void passSecond();
    Expected<void> startRecording();
    void tellRecording();
    void tellHistory();
    void tryRecordingAgain();
    Expected<void> startAlarms();
    service::DiskThread::Wake onDisk(std::function<void()> deliver);
    void finishFiles();
    void finishRecording();
    Expected<void> startAudit();
    void audit(const AuditRecord& record, AuditWriter::Kept kept);
    void tellFlaw(const QString& flaw);
    void tellUnread();
    void tellReading(const QString& what, const Expected<void>& outcome);
    void recordLogins(std::optional<AuditRecord> record);
    /// What is told when it begins, and when it is over.
    struct Trouble {
        const char* begins;
        const char* over;
        QString told;
    };
    void tell(const QString& error, Trouble* trouble);
    ApiContext context();

    const PanelSettings m_settings;
    const QString m_driver;
    const QString m_version;
    const QByteArray m_instance = randomBytes(kInstanceBytes).toHex();
    const Log m_log;
    std::unique_ptr<Access> m_access;
    std::unique_ptr<AccessGuard> m_guard;
    LoginAudit m_logins;
    std::unique_ptr<service::Inbox> m_diskOwner; ///< Of the threads that wait for the disk.
    std::unique_ptr<AuditWriter> m_audit;        ///< Null: nothing is kept.
    // What stands first ends last: PLCs settle what is open when they end.
    Plants m_plants;
    Subscriptions m_subscriptions;
    std::shared_ptr<WriteDesk> m_writes;
    std::unique_ptr<ValueRecorder> m_recorder; ///< Null: nothing is recorded.
    QString m_recordingError;                  ///< Why there is none although there is to be one.
    qint64 m_recordingTriedAt = -1;            ///< By the steady clock.
    int m_toldFiles = 0;                       ///< That were changed.
    int m_toldHistories = 0;                   ///< The same, of alarms.
    std::unique_ptr<AlarmDesk> m_alarmDesk;
    std::unique_ptr<AlarmWatch> m_alarms;
    std::unique_ptr<RecipeDesk> m_recipes; ///< Null: none are kept.
    HistoryQueries m_queries;
    QString m_auditError; ///< Why the last record is not in the audit; empty: it is.
    Trouble m_auditTrouble = {"the audit is not kept", "the audit is kept again", {}};
    Trouble m_alarmTrouble = {"alarms are not kept", "alarms are kept again", {}};
    Trouble m_recipeTrouble = {"recipes are neither read nor kept", "recipes are kept again", {}};
    Trouble m_recorderTrouble = {"nothing is recorded", "changes are recorded again", {}};
    QTimer m_seconds;
    std::unique_ptr<service::Inbox> m_owner; ///< Receives what the server's thread posts.
    std::unique_ptr<Server> m_server;
};

} // namespace plc::panel

#endif
