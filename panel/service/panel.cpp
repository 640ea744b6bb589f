#include "panel/service/panel.h"

#include <QtCore/QDateTime>
#include <QtCore/QFileInfo>
#include <QtCore/QStorageInfo>

#include "configuration/service_paths.h"
#include "panel/alarms/alarm_history.h"
#include "panel/api/api_routes.h"
#include "panel/service/page_routes.h"
#include "panel/service/start_check.h"
#include "values/nearest_name.h"

namespace plc::panel {
namespace {

constexpr int kSecond = 1000; // ms
constexpr int kTryRecordingAgain = 10 * kSecond;
/// Bytes that a disk has at least where a file can be begun.
constexpr qint64 kLeastRoom = qint64(256) * 1024;
/// For how long a disk may take a record without anybody being told.
constexpr qint64 kUsualWait = qint64(5) * kSecond;
/// How long the end of the program waits for the disk.
constexpr std::chrono::seconds kLastPatience(5);

qint64 wallClock()
{
    return QDateTime::currentMSecsSinceEpoch();
}

ServerSettings serverSettings(const PanelSettings& settings)
{
    ServerSettings server;
    server.address = settings.address;
    server.port = settings.port;
    server.certificate = settings.certificate;
    server.key = settings.key;
    server.socket = settings.socket;
    return server;
}

/// Whether a file beside this one, or more of it, has no room.
bool isDiskFull(const QString& file)
{
    return QStorageInfo(QFileInfo(file).absolutePath()).bytesAvailable() < kLeastRoom;
}

/// What is wrong with a file: the last error, or a disk that has owed an answer for long.
QString troubleOf(const QString& error, const std::optional<qint64>& busySince)
{
    if (error.isEmpty() && busySince && values::steadyTime() - *busySince >= kUsualWait)
        return QStringLiteral("the disk does not answer");
    return error;
}

} // namespace

Panel::Panel(const PanelSettings& settings, const QString& driver, const QString& version, Log log)
    : m_settings(settings),
      m_driver(driver),
      m_version(version),
      m_log(std::move(log)),
      m_diskOwner(std::make_unique<service::Inbox>()),
      m_subscriptions(&m_plants, &wallClock),
      m_queries(settings.record.file),
      m_owner(std::make_unique<service::Inbox>())
{
    m_writes = std::make_shared<WriteDesk>(
        &m_plants,
        [this](const AuditRecord& record, AuditWriter::Kept kept) {
            audit(record, std::move(kept));
        },
        &wallClock, WriteDesk::Limits());
    QObject::connect(&m_seconds, &QTimer::timeout, &m_seconds, [this] { passSecond(); });
}

/// First whoever asks, then what is under way, which PLCs settle when they end, then what is to be
/// on record of that.
Panel::~Panel()
{
    m_queries.stop();
    if (m_recipes)
        m_recipes->stop();
    m_server.reset();
    m_guard.reset();
    m_access.reset(); // whose thread posts what came of a login
    m_owner.reset();
    m_seconds.stop();
    recordLogins(m_logins.finish());
    m_subscriptions.clear();
    m_writes->stop();
    for (const std::unique_ptr<Plant>& plant : m_plants)
        plant->stop();
    m_plants.takeAll();
    finishFiles();
    tellRecording();
    // Its run ends before anybody waits for a question of the past that takes long.
    finishRecording();
}

/// What was on record as asked for is done, and on record as done.
void Panel::finishFiles()
{
    const bool isDone = !m_audit || m_audit->drain(kLastPatience);
    if (m_recipes)
        m_recipes->finish(kLastPatience);
    if (m_alarmDesk)
        m_alarmDesk->finish(kLastPatience);
    if (m_audit)
        m_audit->finish(isDone ? kLastPatience : std::chrono::seconds(0));
    tell(m_auditError, &m_auditTrouble);
}

void Panel::finishRecording()
{
    if (!m_recorder)
        return;
    const qint64 dropped = m_recorder->status().dropped;
    const recorder::RecorderStatus status = m_recorder->finish();
    const qint64 missing = status.waiting + status.dropped - dropped;
    if (missing > 0) {
        m_log(QStringLiteral("%1: %2 changes are not known to be recorded: the disk had not taken"
                             " them when the program ended")
                  .arg(m_settings.record.file)
                  .arg(missing));
    }
    m_recorder.reset();
}

Expected<void> Panel::prepare()
{
    if (Expected<void> areThere = checkFolders(m_settings); !areThere)
        return areThere;
    const bool hasUsers = !m_settings.usersFile.isEmpty();
    if (!m_settings.address.isEmpty()) {
        const Expected<void> mayListen =
            checkListening(m_settings.address, !m_settings.certificate.isEmpty(), hasUsers);
        if (!mayListen)
            return mayListen.error();
        Expected<void> isPair = checkCertificate(serverSettings(m_settings));
        if (!isPair)
            return isPair;
    }
    AccessSettings access;
    access.cookie = cookieName(m_settings.address.isEmpty() ? quint16(0) : m_settings.port);
    access.users = m_settings.usersFile;
    access.isEncrypted = !m_settings.certificate.isEmpty();
    Expected<std::unique_ptr<Access>> opened = Access::open(access);
    if (!opened)
        return opened.error();
    m_access = std::move(*opened);
    m_guard = std::make_unique<AccessGuard>(m_access.get(),
                                            QStringList{m_settings.address} + m_settings.hosts,
                                            m_instance, m_settings.isReadOnly);
    for (const PlcSettings& settings : m_settings.plcs) {
        Expected<std::unique_ptr<Plant>> plant =
            Plant::create(settings, m_settings.isReadOnly, m_driver, this);
        if (!plant)
            return plant.error();
        if (const Expected<void> fit = ValueRecorder::checkDeadbands(**plant); !fit)
            return fit.error();
        if (const Expected<void> areSensible = AlarmWatch::check(**plant); !areSensible)
            return areSensible.error();
        m_plants.add(std::move(*plant));
    }
    return {};
}

ApiContext Panel::context()
{
    ApiContext context;
    context.plants = &m_plants;
    context.subscriptions = &m_subscriptions;
    context.writes = m_writes.get();
    context.access = m_access.get();
    context.logins = &m_logins;
    context.history = m_settings.record.file.isEmpty() ? nullptr : &m_queries;
    context.alarms = m_alarms.get();
    context.recipes = m_recipes.get();
    context.audit = [this](const AuditRecord& record, AuditWriter::Kept kept) {
        audit(record, std::move(kept));
    };
    context.slowly = [this](const Responder& respond, std::function<Response()> work) {
        m_queries.submit(respond, std::move(work));
    };
    context.time = &wallClock;
    context.post = [owner = m_owner.get()](std::function<void()> work) {
        owner->post(std::move(work));
    };
    context.server = [this] { return m_server ? m_server->statistics() : ServerStatistics(); };
    context.recorder = [this] {
        return m_recorder ? std::make_optional(m_recorder->status()) : std::nullopt;
    };
    context.version = m_version;
    context.instance = m_instance;
    context.isReadOnly = m_settings.isReadOnly;
    context.auditFile = m_settings.auditFile;
    return context;
}

Expected<void> Panel::start()
{
    if (const Expected<void> audit = startAudit(); !audit)
        return audit.error();
    if (const Expected<void> recording = startRecording(); !recording) {
        if (!isDiskFull(m_settings.record.file))
            return recording.error();
        m_recordingError = recording.error().text;
    }
    if (const Expected<void> alarms = startAlarms(); !alarms)
        return alarms.error();
    if (!m_settings.recipes.isEmpty())
        m_recipes = std::make_unique<RecipeDesk>(m_settings.recipes,
                                                 onDisk([this] { m_recipes->deliver(); }));
    Expected<std::unique_ptr<Server>> server = Server::start(
        serverSettings(m_settings), apiRoutes(context()) + pageRoutes(), m_guard.get());
    if (!server)
        return server.error();
    m_server = std::move(*server);
    for (const std::unique_ptr<Plant>& plant : m_plants)
        plant->start();
    m_seconds.start(kSecond);
    return {};
}

Expected<void> Panel::startRecording()
{
    if (m_settings.record.file.isEmpty())
        return {};
    const qint64 now = wallClock();
    Expected<std::unique_ptr<ValueRecorder>> recorder =
        ValueRecorder::start(m_settings.record, now);
    if (!recorder)
        return recorder.error();
    m_recorder = std::move(*recorder);
    for (const std::unique_ptr<Plant>& plant : m_plants) {
        if (const Expected<void> added = m_recorder->add(*plant, now); !added)
            return added.error();
    }
    m_recordingError.clear();
    return {};
}

/// What could not be begun for want of room on the disk.
void Panel::tryRecordingAgain()
{
    const qint64 now = values::steadyTime();
    if (m_recordingTriedAt >= 0 && now - m_recordingTriedAt < kTryRecordingAgain)
        return;
    m_recordingTriedAt = now;
    if (const Expected<void> recording = startRecording(); !recording)
        m_recordingError = recording.error().text;
}

/// Where changes are recorded, alarms are, too. On a full disk they are not kept until the program
/// starts again.
Expected<void> Panel::startAlarms()
{
    const QString file = m_settings.record.file.isEmpty()
                             ? QString()
                             : m_settings.record.file + QStringLiteral(".alarms");
    QVector<AlarmSettings> alarms;
    for (const PlcSettings& plc : m_settings.plcs)
        alarms += plc.alarms;
    std::unique_ptr<AlarmHistory> history;
    if (!file.isEmpty() && !alarms.isEmpty()) {
        Expected<std::unique_ptr<AlarmHistory>> opened = AlarmHistory::open(file, {});
        if (!opened && !isDiskFull(file))
            return opened.error();
        if (opened)
            history = std::move(*opened);
        else
            m_log(QStringLiteral("alarms are not kept until the next start: %1")
                      .arg(opened.error().text));
    }
    Expected<std::unique_ptr<AlarmDesk>> desk = AlarmDesk::open(
        alarms, std::move(history), onDisk([this] { m_alarmDesk->deliver(); }), wallClock());
    if (!desk)
        return desk.error();
    m_alarmDesk = std::move(*desk);
    m_alarms = std::make_unique<AlarmWatch>(
        &m_plants, m_alarmDesk.get(), &currentMoment,
        [this](const QByteArray& alarm) { m_subscriptions.tellAll("alarm", alarm); });
    m_alarms->begin();
    return {};
}

/// For a thread that waits for a disk: has this one take what it has done.
service::DiskThread::Wake Panel::onDisk(std::function<void()> deliver)
{
    return [owner = m_diskOwner.get(), deliver = std::move(deliver)] { owner->post(deliver); };
}

/// Without a file nothing is kept. One for which the disk has no room is begun once it has.
Expected<void> Panel::startAudit()
{
    if (m_settings.auditFile.isEmpty())
        return {};
    auto file = std::make_shared<AuditFile>(m_settings.auditFile);
    if (const Expected<void> opened = file->open(wallClock()); !opened) {
        if (!isDiskFull(m_settings.auditFile))
            return opened.error();
        m_auditError = opened.error().text;
    }
    tellFlaw(file->takeFlaw());
    const auto wake = [this, owner = m_diskOwner.get()] {
        owner->post([this] { m_audit->deliver(); });
    };
    m_audit = std::make_unique<AuditWriter>(file, wake, AuditWriter::Limits());
    return {};
}

/// `kept` is called when the disk has the record, or cannot have it.
void Panel::audit(const AuditRecord& record, AuditWriter::Kept kept)
{
    if (!m_audit)
        return kept({});
    m_audit->append(record, [this, kept = std::move(kept)](const Expected<void>& isKept) {
        m_auditError = isKept ? QString() : isKept.error().text;
        kept(isKept);
    });
}

void Panel::tellFlaw(const QString& flaw)
{
    if (!flaw.isEmpty())
        m_log(QStringLiteral("%1; see plc-panel audit").arg(flaw));
}

void Panel::recordLogins(std::optional<AuditRecord> record)
{
    if (!record)
        return;
    record->time = wallClock();
    audit(*record, [](const Expected<void>&) {});
}

void Panel::readAgain()
{
    if (m_access->isLoginRequired())
        tellReading(QStringLiteral("the users"), m_access->reload());
    if (!m_settings.certificate.isEmpty()) {
        const Expected<QDateTime> end = m_server->readCertificate();
        tellReading(QStringLiteral("the certificate"),
                    end ? Expected<void>() : Expected<void>(end.error()));
        if (end)
            m_log(QStringLiteral("the certificate ends on %1").arg(end->toString(Qt::ISODate)));
    }
    if (!m_audit)
        return tellUnread();
    m_audit->reopen(wallClock(), [this](const Expected<void>& reopened) {
        m_log(reopened ? QStringLiteral("the audit goes on in %1").arg(m_settings.auditFile)
                       : QStringLiteral("the audit stays in the file that it was in, for %1")
                             .arg(reopened.error().text));
        tellUnread();
    });
}

/// What another one takes a restart of.
void Panel::tellUnread()
{
    for (const QString& path : {m_settings.usersFile, m_settings.certificate, m_settings.key}) {
        if (!configuration::isCredential(path))
            continue;
        m_log(QStringLiteral("%1 is a credential of the service: unless the service manager renews "
                             "it with a reload, another one takes a restart")
                  .arg(path));
    }
    m_log(
        QStringLiteral("configuration and projects are not read again: changed ones take a "
                       "restart"));
}

void Panel::tellReading(const QString& what, const Expected<void>& outcome)
{
    m_log(outcome ? QStringLiteral("%1: read again").arg(what)
                  : QStringLiteral("%1: as before, for %2").arg(what, outcome.error().text));
}

QString Panel::address() const
{
    if (m_settings.address.isEmpty())
        return {};
    const QString host = m_settings.address.contains(QLatin1Char(':'))
                             ? QStringLiteral("[%1]").arg(m_settings.address)
                             : m_settings.address;
    return QStringLiteral("%1://%2:%3/")
        .arg(m_settings.certificate.isEmpty() ? QStringLiteral("http") : QStringLiteral("https"),
             host)
        .arg(m_server->port());
}

QString Panel::status() const
{
    int up = 0;
    for (const std::unique_ptr<Plant>& plant : m_plants)
        up += plant->link().state == PlcLink::Up ? 1 : 0;
    return QStringLiteral("%1 of %2 PLCs up, %3 streams")
        .arg(up)
        .arg(m_plants.size())
        .arg(m_subscriptions.streams());
}

void Panel::sampled(Plant* plant, const QVector<int>& changed)
{
    m_subscriptions.sampled(plant, changed);
    if (m_recorder)
        m_recorder->sampled(*plant, changed, wallClock());
    m_alarms->sampled(plant, changed);
}

void Panel::linkChanged(Plant* plant)
{
    const PlcLink& link = plant->link();
    m_log(link.state == PlcLink::Up
              ? QStringLiteral("PLC %1: connected").arg(values::quoted(plant->name()))
              : QStringLiteral("PLC %1: %2").arg(values::quoted(plant->name()), link.reason));
    m_subscriptions.linkChanged(plant);
}

void Panel::passSecond()
{
    m_subscriptions.passSecond();
    recordLogins(m_logins.passTime(values::steadyTime()));
    if (m_audit) {
        tell(troubleOf(m_auditError, m_audit->busySince()), &m_auditTrouble);
        tellFlaw(m_audit->takeFlaw());
    }
    m_alarms->passSecond();
    tell(troubleOf(m_alarms->failure(), m_alarmDesk->busySince()), &m_alarmTrouble);
    tellHistory();
    if (m_recipes)
        tell(troubleOf({}, m_recipes->busySince()), &m_recipeTrouble);
    if (!m_recorder && !m_recordingError.isEmpty())
        tryRecordingAgain();
    if (m_recorder)
        m_recorder->passSecond(wallClock());
    tellRecording();
}

void Panel::tellRecording()
{
    const recorder::RecorderStatus status =
        m_recorder ? m_recorder->status() : recorder::RecorderStatus();
    tell(m_recorder ? status.error : m_recordingError, &m_recorderTrouble);
    if (status.changedFiles == m_toldFiles)
        return;
    m_toldFiles = status.changedFiles;
    m_log(QStringLiteral("%1: the recording was moved or removed while it was open; it goes on in"
                         " another file of its name")
              .arg(m_settings.record.file));
}

void Panel::tellHistory()
{
    if (m_alarmDesk->changedFiles() == m_toldHistories)
        return;
    m_toldHistories = m_alarmDesk->changedFiles();
    m_log(QStringLiteral("%1.alarms: the history of alarms was moved or removed while it was open; "
                         "it goes on in another file of its name")
              .arg(m_settings.record.file));
}

/// Each trouble once.
void Panel::tell(const QString& error, Trouble* trouble)
{
    if (error == trouble->told)
        return;
    trouble->told = error;
    m_log(error.isEmpty() ? QLatin1String(trouble->over)
                          : QStringLiteral("%1: %2").arg(QLatin1String(trouble->begins), error));
}

} // namespace plc::panel
