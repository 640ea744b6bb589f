#include "gateway/service/program.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDateTime>
#include <QtCore/QTimer>

#include <algorithm>
#include <csignal>
#include <optional>

#include "configuration/service_paths.h"
#include "gateway/operation/audit_file.h"
#include "gateway/operation/metrics_server.h"
#include "gateway/operation/metrics_text.h"
#include "gateway/operation/status_document.h"
#include "gateway/operation/status_server.h"
#include "gateway/operation/status_table.h"
#include "gateway/plain/plain_publisher.h"
#include "gateway/service/gateway.h"
#include "gateway/service/options.h"
#include "gateway/service/statistics_collection.h"
#include "gateway/sparkplug/sparkplug_publisher.h"
#include "gateway/store/sqlite_change_store.h"
#include "gateway/store/topic_file.h"
#include "host/driver/driver_library.h"
#include "service/console.h"
#include "service/service_manager.h"
#include "streams/signal_notifier.h"

namespace plc::gateway {
namespace {

constexpr int kSecond = 1000; // ms

using service::complain;
using service::kExitDone;
using service::kExitFailed;
using service::kExitWrongUse;
using service::log;
using service::print;

std::unique_ptr<Publisher> makePublisher(const GatewaySettings& settings, ChangeStore* store)
{
    if (settings.format == PublicationFormat::Plain)
        return std::make_unique<PlainPublisher>(
            PlainIdentity{settings.group, settings.node, settings.retainsValues});
    return std::make_unique<SparkplugPublisher>(
        SparkplugIdentity{settings.group, settings.node, settings.primaryHost},
        [store] { return store->takeSessionNumber(); });
}

AuditRecord recordOf(const WriteOutcome& outcome)
{
    return {
        outcome.time,  outcome.deviceName, outcome.label.isEmpty() ? outcome.name : outcome.label,
        outcome.value, outcome.kind,       outcome.reason,
        outcome.id,    outcome.topic};
}

/// One run of the gateway, with all that is around it.
class Run {
public:
    explicit Run(const Options& options) : m_options(options) {}

    int execute();

private:
    Expected<GatewayParts> makeParts();
    Expected<void> openToOperators();
    int runEventLoop();
    void handleSignal(int number);
    void readAgain();
    void passSecond();
    void tellStore();
    GatewayStatistics statistics() const;

    const Options m_options;
    GatewaySettings m_settings;
    const qint64 m_started = QDateTime::currentMSecsSinceEpoch();
    std::unique_ptr<AuditFile> m_audit;
    std::unique_ptr<Gateway> m_gateway;
    SqliteChangeStore* m_store = nullptr; ///< Owned by the gateway.
    std::unique_ptr<MetricsServer> m_metrics;
    std::unique_ptr<StatusServer> m_status;
    service::ServiceManager m_manager;
    bool m_isEnding = false;
    QTimer m_seconds;
    QTimer m_watchdog;
};

Expected<GatewayParts> Run::makeParts()
{
    GatewayParts parts;
    const Expected<QString> driver =
        host::findDriver(m_options.driverFile, QCoreApplication::applicationDirPath());
    if (!driver)
        return driver.error();
    parts.driver = *driver;
    parts.version = QCoreApplication::applicationVersion();
    parts.log = log;
    m_manager.readyWithin(SqliteChangeStore::longestOpening(m_settings.storeFile));
    Expected<std::unique_ptr<SqliteChangeStore>> store =
        SqliteChangeStore::open(m_settings.storeFile, m_settings.storeSize);
    if (!store)
        return store.error();
    m_store = store->get();
    tellStore();
    parts.store = std::move(*store);
    parts.topics =
        std::make_unique<TopicFile>(m_settings.storeFile + QStringLiteral(".topics"), log);
    parts.publisher = makePublisher(m_settings, parts.store.get());
    if (!m_settings.auditFile.isEmpty()) {
        Expected<std::unique_ptr<AuditFile>> audit = AuditFile::open(m_settings.auditFile);
        if (!audit)
            return audit.error();
        m_audit = std::move(*audit);
    }
    // Without an audit file nothing is writable, and refusals alone are not kept.
    parts.audit = [this](const WriteOutcome& outcome) -> Expected<void> {
        return m_audit ? m_audit->append({recordOf(outcome)}) : Expected<void>();
    };
    parts.auditProblem = [this] { return m_audit ? m_audit->problem() : QString(); };
    return parts;
}

Expected<void> Run::openToOperators()
{
    const MetricsSettings& metrics = m_settings.metrics;
    if (!metrics.address.isEmpty() || !metrics.socket.isEmpty()) {
        Expected<std::unique_ptr<MetricsServer>> server = MetricsServer::start(metrics);
        if (!server)
            return server.error();
        m_metrics = std::move(*server);
    }
    if (!m_settings.statusSocket.isEmpty()) {
        Expected<std::unique_ptr<StatusServer>> server = StatusServer::start(
            m_settings.statusSocket, [this] { return statusDocument(statistics()); });
        if (!server)
            return server.error();
        m_status = std::move(*server);
    }
    return {};
}

int Run::execute()
{
    Expected<GatewaySettings> settings = loadSettings(m_options.configuration);
    if (!settings)
        return complain(settings.error().text, kExitWrongUse);
    m_settings = *settings;
    Expected<GatewayParts> parts = makeParts();
    if (!parts)
        return complain(parts.error().text, kExitFailed);
    m_gateway = std::make_unique<Gateway>(m_settings, std::move(*parts));
    if (const Expected<void> prepared = m_gateway->prepare(); !prepared)
        return complain(prepared.error().text, kExitWrongUse);
    if (const Expected<void> opened = openToOperators(); !opened)
        return complain(opened.error().text, kExitFailed);
    const int code = runEventLoop();
    // Before what it reports to.
    m_status.reset();
    m_gateway.reset();
    return code;
}

int Run::runEventLoop()
{
    const streams::SignalNotifier signalled({SIGINT, SIGTERM, SIGHUP},
                                            [this](int number) { handleSignal(number); });
    QObject::connect(&m_seconds, &QTimer::timeout, &m_seconds, [this] { passSecond(); });
    m_seconds.start(kSecond);
    QObject::connect(&m_watchdog, &QTimer::timeout, &m_watchdog, [this] { m_manager.alive(); });
    if (const std::optional<int> interval = service::ServiceManager::watchdogInterval())
        m_watchdog.start(*interval);
    m_gateway->start();
    m_manager.ready();
    return QCoreApplication::exec();
}

GatewayStatistics Run::statistics() const
{
    GatewayStatistics statistics =
        collectStatistics(*m_gateway, QCoreApplication::applicationVersion(), m_started,
                          QDateTime::currentMSecsSinceEpoch());
    if (statistics.store.problem.isEmpty())
        statistics.store.problem = m_store->problem();
    return statistics;
}

void Run::handleSignal(int number)
{
    if (m_isEnding)
        return;
    if (number == SIGHUP) {
        readAgain();
        return;
    }
    m_isEnding = true;
    m_manager.stopping();
    m_gateway->stop([] { QCoreApplication::exit(kExitDone); });
}

/// A configuration that is wrong changes nothing.
void Run::readAgain()
{
    m_manager.reloading();
    const Expected<GatewaySettings> settings = loadSettings(m_options.configuration);
    const Expected<void> taken =
        settings ? m_gateway->reconfigure(*settings) : Expected<void>(settings.error());
    log(taken ? QStringLiteral("the configuration was read again")
              : QStringLiteral("the configuration stays as it was: %1").arg(taken.error().text));
    if (m_audit) {
        if (const Expected<void> reopened = m_audit->reopen(); !reopened)
            log(QStringLiteral("the audit file stays the one that it was: %1")
                    .arg(reopened.error().text));
    }
    m_manager.ready();
}

void Run::passSecond()
{
    if (m_audit)
        m_audit->bringOntoDisk(m_gateway->now());
    m_store->tryAgain();
    tellStore();
    const GatewayStatistics now = statistics();
    if (m_metrics)
        m_metrics->setText(metricsText(now));
    const auto up = std::count_if(now.devices.begin(), now.devices.end(),
                                  [](const DeviceStatistics& device) { return device.isUp; });
    m_manager.status(QStringLiteral("%1 of %2 PLCs up, broker %3 %4")
                         .arg(up)
                         .arg(now.devices.size())
                         .arg(now.broker.name, now.broker.isConnected ? QStringLiteral("connected")
                                                                      : QStringLiteral("away")));
}

void Run::tellStore()
{
    const QString notice = m_store->takeNotice();
    if (!notice.isEmpty())
        log(notice);
}

/// Tells what is wrong or strange, or how much would be published.
int check(const Options& options)
{
    Expected<GatewaySettings> settings = loadSettings(options.configuration);
    if (!settings)
        return complain(settings.error().text, kExitWrongUse);
    const Expected<QString> driver =
        host::findDriver(options.driverFile, QCoreApplication::applicationDirPath());
    if (!driver)
        return complain(driver.error().text, kExitFailed);
    qint64 metrics = 0;
    qint64 writable = 0;
    for (const DeviceSettings& wanted : std::as_const(settings->devices)) {
        const auto device = PlcDevice::create(0, wanted, *driver, nullptr);
        if (!device)
            return complain(device.error().text, kExitWrongUse);
        for (const QString& warning : (*device)->warnings())
            log(warning);
        const QVector<Metric>& found = (*device)->description().metrics;
        metrics += found.size();
        writable += std::count_if(found.begin(), found.end(),
                                  [](const Metric& metric) { return metric.isWritable; });
    }
    const bool isPrinted = print(QStringLiteral("%1 PLCs, %2 values, %3 of them writable")
                                     .arg(settings->devices.size())
                                     .arg(metrics)
                                     .arg(writable));
    return isPrinted ? kExitDone : kExitFailed;
}

int printStatus(const Options& options)
{
    const Expected<GatewaySettings> settings = loadSettings(options.configuration);
    if (!settings)
        return complain(settings.error().text, kExitWrongUse);
    if (settings->statusSocket.isEmpty())
        return complain(QStringLiteral("the configuration has no \"status\" socket"),
                        kExitWrongUse);
    if (const QString folder = configuration::missingFolder(settings->statusSocket);
        !folder.isEmpty()) {
        return complain(QStringLiteral("\"%1\" lies in a folder of the service: call it with %2=…, "
                                       "which is /run/plc-gateway/NAME for plc-gateway@NAME")
                            .arg(settings->statusSocket, folder),
                        kExitWrongUse);
    }
    const Expected<GatewayStatistics> status = readStatus(settings->statusSocket);
    if (!status)
        return complain(status.error().text, kExitFailed);
    if (options.isJson) {
        const QByteArray document = statusDocument(*status).trimmed();
        return print(QString::fromUtf8(document)) ? kExitDone : kExitFailed;
    }
    const QString text = statusTable(*status).trimmed();
    return print(text) ? kExitDone : kExitFailed;
}

int split(const SplitFiles& files)
{
    const Expected<QString> report = splitFiles(files);
    if (!report)
        return complain(report.error().text, kExitWrongUse);
    return print(*report) ? kExitDone : kExitFailed;
}

} // namespace

int runProgram(const QStringList& arguments)
{
    const Expected<Options> options = readOptions(arguments);
    if (!options)
        return complain(options.error().text, kExitWrongUse);
    if (!options->information.isEmpty())
        return print(options->information) ? kExitDone : kExitFailed;
    if (options->wantsStatus)
        return printStatus(*options);
    if (options->wantsSplit)
        return split(options->split);
    return options->checksOnly ? check(*options) : Run(*options).execute();
}

} // namespace plc::gateway
