#include "cli/link_command.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QTimer>

#include <algorithm>
#include <csignal>

#include "project/label_expansion.h"

namespace plc::cli {

LinkCommand::LinkCommand(const LinkOptions& options, const CommandContext& context,
                         host::DriverClaim driver, int cycleTime)
    : m_options(options),
      m_context(context),
      m_runtime(std::move(driver), context.runtimeSettings(cycleTime), context.project,
                &m_observers),
      m_link(&m_runtime.session(), context.project.address, context.project.port)
{
    if (options.trace)
        m_observers.add(&m_trace);
}

int LinkCommand::execute()
{
    m_observers.add(this);
    const int code = prepare() && startCapture() ? runEventLoop() : m_preparationCode;
    // The runtime is destroyed behind those that a command added.
    m_observers.clear();
    return code;
}

int LinkCommand::runEventLoop()
{
    const streams::SignalNotifier ends({SIGINT, SIGTERM, SIGHUP}, [this](int) { interrupted(); });
    whenOutputIsLost([this] { QTimer::singleShot(0, &m_link, [this] { outputLost(); }); });
    begin();
    int code = QCoreApplication::exec();
    whenOutputIsLost(nullptr);
    m_isFinished = true;
    m_link.stop();
    if (!m_capture.error().isEmpty()) {
        complain(QStringLiteral("the capture %1 is incomplete: %2; what it has can be read")
                     .arg(m_capture.path(), m_capture.error()));
        code = code == kExitDone ? kExitRefused : code;
    }
    return code;
}

/// Returns false after complaining when the capture that the user wants cannot be written.
bool LinkCommand::startCapture()
{
    const QString path = m_options.captureFile;
    if (path.isEmpty())
        return true;
    if (!mayReplace(path, m_options.force)) {
        complain(QStringLiteral("%1 exists; --force replaces it by the capture").arg(path));
        return false;
    }
    const QString application = QStringLiteral("plc ") + QCoreApplication::applicationVersion();
    if (const Expected<void> created = m_capture.create(path, application); !created) {
        if (m_capture.wasMade())
            setPreparationCode(kExitRefused);
        complain(QStringLiteral("cannot write the capture %1: %2; give --capture a file in a "
                                "folder that you may write to and that has room")
                     .arg(path, created.error().text));
        return false;
    }
    m_link.keepIn(&m_capture);
    return true;
}

QString LinkCommand::peer() const
{
    return QStringLiteral("%1:%2").arg(project().address).arg(project().port);
}

QVector<host::DataPoint> LinkCommand::findPoints() const
{
    QVector<host::DataPoint> points;
    const auto add = [&points](const Expected<host::DataPoint>& point) {
        if (point)
            points.append(*point);
        else
            complain(point.error().text);
        return point.hasValue();
    };
    project::LabelExpander expander(project());
    for (const QString& text : arguments()) {
        const Expected<QStringList> labels = expander.expand(text);
        if (!labels) {
            complain(labels.error().text);
            return {};
        }
        const auto addLabel = [&](const QString& label) {
            return add(m_runtime.points().find(label));
        };
        if (!std::all_of(labels->begin(), labels->end(), addLabel))
            return {};
    }
    if (!points.isEmpty())
        return points;
    for (const project::CyclicLabel& label : project().cyclic) {
        if (!add(m_runtime.points().find(label.label, label.elements, label.station)))
            return {};
    }
    if (points.isEmpty())
        complain(QStringLiteral("the project has no cyclic labels; name the labels to read"));
    return points;
}

bool LinkCommand::readCyclically(const QVector<int>& stationsOff)
{
    const QVector<host::DataPoint> points = findPoints();
    if (points.isEmpty())
        return false;
    m_runtime.readCyclically(points, m_link.now());
    for (int station : stationsOff)
        m_runtime.switchStation(station, false, m_link.now());
    return true;
}

void LinkCommand::complainOfLoss(host::LinkState state, const QString& reason, int retryDelay) const
{
    // Without another attempt it was closed from here.
    if (state == host::LinkState::Down && retryDelay >= 0 && !m_isFinished) {
        complain(QStringLiteral("no link to %1: %2; plc diagnose tells where it fails and what to "
                                "try")
                     .arg(peer(), reason));
    }
}

void LinkCommand::finish(ExitCode code)
{
    if (m_isFinished)
        return;
    m_isFinished = true;
    QTimer::singleShot(0, [code] { QCoreApplication::exit(code); });
}

} // namespace plc::cli
