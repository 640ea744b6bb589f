#include "panel/service/program.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include <csignal>
#include <optional>

#include "host/driver/driver_library.h"
#include "panel/service/audit_command.h"
#include "panel/service/options.h"
#include "panel/service/panel.h"
#include "panel/service/start_check.h"
#include "panel/service/user_command.h"
#include "service/console.h"
#include "service/service_manager.h"
#include "streams/signal_notifier.h"

namespace plc::panel {
namespace {

constexpr int kStatusInterval = 1000; // ms

using service::complain;
using service::kExitDone;
using service::kExitFailed;
using service::kExitWrongUse;
using service::log;
using service::print;

/// One run of the panel, with all that is around it.
class Run {
public:
    explicit Run(const PanelSettings& settings, const QString& driver)
        : m_panel(std::make_unique<Panel>(settings, driver, QCoreApplication::applicationVersion(),
                                          log))
    {
    }

    int execute()
    {
        if (const Expected<void> prepared = m_panel->prepare(); !prepared)
            return complain(prepared.error().text, kExitWrongUse);
        const streams::SignalNotifier signalled({SIGINT, SIGTERM, SIGHUP},
                                                [this](int number) { handleSignal(number); });
        if (const Expected<void> started = m_panel->start(); !started)
            return complain(started.error().text, kExitFailed);
        if (!m_panel->address().isEmpty())
            print(QStringLiteral("listening on ") + m_panel->address());
        const int code = runEventLoop();
        m_panel.reset();
        return code;
    }

private:
    int runEventLoop()
    {
        QObject::connect(&m_seconds, &QTimer::timeout, &m_seconds,
                         [this] { m_manager.status(m_panel->status()); });
        m_seconds.start(kStatusInterval);
        QObject::connect(&m_watchdog, &QTimer::timeout, &m_watchdog, [this] { m_manager.alive(); });
        if (const std::optional<int> interval = service::ServiceManager::watchdogInterval())
            m_watchdog.start(*interval);
        m_manager.ready();
        return QCoreApplication::exec();
    }

    void handleSignal(int number)
    {
        if (number == SIGHUP) {
            m_manager.reloading();
            m_panel->readAgain();
            m_manager.ready();
            return;
        }
        m_manager.stopping();
        QCoreApplication::exit(kExitDone);
    }

    std::unique_ptr<Panel> m_panel;
    service::ServiceManager m_manager;
    QTimer m_seconds;
    QTimer m_watchdog;
};

/// Tells what is wrong, or what would be served.
int check(const PanelSettings& settings, const QString& driver)
{
    Panel panel(settings, driver, QCoreApplication::applicationVersion(), log);
    if (const Expected<void> prepared = panel.prepare(); !prepared)
        return complain(prepared.error().text, kExitWrongUse);
    if (const Expected<void> areThere = checkPlaces(settings); !areThere)
        return complain(areThere.error().text, kExitWrongUse);
    int recorded = 0;
    for (const std::unique_ptr<Plant>& plant : panel.plants())
        recorded += int(plant->recorded().size());
    const QString line = QStringLiteral("%1 PLCs, %2 values that are read all the time")
                             .arg(panel.plants().size())
                             .arg(recorded);
    return print(line) ? kExitDone : kExitFailed;
}

int report(const Expected<QString>& result)
{
    if (!result)
        return complain(result.error().text, kExitWrongUse);
    return result->isEmpty() || print(*result) ? kExitDone : kExitFailed;
}

int verify(const Options& options)
{
    const Expected<AuditReport> report = auditReport(options.arguments.first(), options.auditLines);
    if (!report)
        return complain(report.error().text, kExitWrongUse);
    const bool isPrinted = print(report->text);
    return isPrinted && report->isIntact ? kExitDone : kExitFailed;
}

} // namespace

int runProgram(const QStringList& arguments)
{
    const Expected<Options> options = readOptions(arguments);
    if (!options)
        return complain(options.error().text, kExitWrongUse);
    if (!options->information.isEmpty())
        return print(options->information) ? kExitDone : kExitFailed;
    if (options->task == Options::Users)
        return report(changeUsers(options->users, options->arguments));
    if (options->task == Options::Audit)
        return verify(*options);
    const Expected<PanelSettings> settings = settingsOf(*options);
    if (!settings)
        return complain(settings.error().text, kExitWrongUse);
    const Expected<QString> driver =
        host::findDriver(options->driverFile, QCoreApplication::applicationDirPath());
    if (!driver)
        return complain(driver.error().text, kExitFailed);
    if (options->task == Options::Check)
        return check(*settings, *driver);
    return Run(*settings, *driver).execute();
}

} // namespace plc::panel
