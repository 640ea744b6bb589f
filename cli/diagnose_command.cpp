#include "cli/diagnose_command.h"

#include <algorithm>

#include "cli/value_lines.h"
#include "host/points/value_codec.h"
#include "host/points/value_layout.h"
#include "host/transfers/result_text.h"
#include "project/symbol_walk.h"

namespace plc::cli {
namespace {

constexpr int kStageDecimals = 1;
constexpr int kExactTimeDecimals = 3;
constexpr int kIndent = 8;
constexpr int kTextWidth = 80;

/// Prints `text` in lines of its own, each indented, behind a heading.
void printParagraph(const QString& heading, const QString& text)
{
    const QString indent(kIndent + int(heading.size()) + 1, QLatin1Char(' '));
    QString line = QString(kIndent, QLatin1Char(' ')) + heading;
    for (const QString& word : text.split(QLatin1Char(' '))) {
        if (int(line.size()) + 1 + int(word.size()) > kTextWidth &&
            int(line.size()) > int(indent.size())) {
            print(line);
            line = indent + word;
        } else {
            line += QLatin1Char(' ') + word;
        }
    }
    print(line);
}

int diagnose(const LinkOptions& options)
{
    return withDriver(options, [&](const CommandContext& context, host::DriverClaim driver) {
        return DiagnoseCommand(options, context, std::move(driver)).execute();
    });
}

} // namespace

const Command kDiagnoseCommand = {
    "diagnose",
    {"[LABEL...]", 0, kAnyNumber, "any number of labels", kCompleteLabel},
    "go step by step from the PLC's name to the values of these labels, explain the step that "
    "fails, and name the labels that the PLC refuses",
    {kLabelNote, kPatternNote, kDurationNote},
    makeOptions<LinkOptions>,
    execute<LinkOptions, diagnose>};

bool DiagnoseCommand::prepare()
{
    if (!findAreas())
        return false;
    if (arguments().isEmpty() && project().cyclic.isEmpty())
        m_labels.append(m_firstOfArea.first());
    else
        m_labels = findPoints();
    if (arguments().isEmpty() && m_labels.size() > 1) {
        m_cyclic = m_labels.mid(1);
        m_labels.resize(1);
    }
    return !m_labels.isEmpty();
}

/// Returns false after complaining when the project has nothing to read.
bool DiagnoseCommand::findAreas()
{
    for (const project::SymbolEntry& entry : project::symbolEntries(project())) {
        const Expected<host::DataPoint> point = runtime().points().find(entry.firstLabel);
        if (!point) {
            complain(point.error().text);
            return false;
        }
        const auto first = m_firstOfArea.constFind(point->area);
        if (first == m_firstOfArea.constEnd() ||
            host::valueBytes(*point).start < host::valueBytes(*first).start)
            m_firstOfArea[point->area] = *point;
    }
    if (m_firstOfArea.isEmpty())
        complain(QStringLiteral("the project declares no variables, so there is nothing to read"));
    return !m_firstOfArea.isEmpty();
}

void DiagnoseCommand::begin()
{
    if (!m_options.json)
        print(QStringLiteral("%1 at %2").arg(project().name, peer()));
    m_stepTime.start();
    if (!QHostAddress(project().address).isNull()) {
        pass(QStringLiteral("%1 is an IP address").arg(project().address), Step::Connection);
        connectToPlc();
        return;
    }
    lookUpName();
}

/// Silent name servers are given the time for a connection.
void DiagnoseCommand::lookUpName()
{
    const int timeout = project().settings.connectTimeout;
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [this, timeout] {
        fail(host::findNameFailure(
            project().address,
            QStringLiteral("no name server answered within %1 ms").arg(timeout)));
    });
    m_patience.start(timeout);
    m_lookup = std::make_unique<host::NameLookup>(
        project().address, [this](const host::NameAddresses& found) { takeAddresses(found); });
}

void DiagnoseCommand::interrupted()
{
    complain(QStringLiteral("interrupted"));
    finish(kExitRefused);
}

void DiagnoseCommand::takeAddresses(const host::NameAddresses& found)
{
    m_patience.stop();
    if (isFinished())
        return;
    if (found.addresses.isEmpty()) {
        fail(host::findNameFailure(project().address, found.error));
        return;
    }
    QStringList addresses;
    for (const QHostAddress& address : found.addresses)
        addresses.append(address.toString());
    pass(QStringLiteral("%1 is %2").arg(project().address, addresses.join(QStringLiteral(", "))),
         Step::Connection);
    connectToPlc();
}

void DiagnoseCommand::connectToPlc()
{
    startLink();
}

void DiagnoseCommand::linkChanged(host::LinkState state, const QString& reason, int)
{
    if (isFinished())
        return;
    if (state == host::LinkState::Up && m_step == Step::Connection) {
        pass(QStringLiteral("connected to %1").arg(peer()), Step::Identification);
        readNext();
    }
    if (state != host::LinkState::Down)
        return;
    if (!m_failure)
        m_failure = host::failureOfLoss(link().lastError(), link().lastReceived(), reason);
    if (m_step == Step::Connection) {
        fail(host::findConnectionFailure(project().address, project().port, link().lastError(),
                                         reason));
    } else if (isLoggingIn()) {
        fail(host::findLoginFailure(loginService(), *m_failure));
    }
}

void DiagnoseCommand::requestSent(const host::SentRequest&)
{
    m_failure.reset();
}

void DiagnoseCommand::requestAnswered(const host::SentRequest& request, const host::Answer& answer,
                                      const QByteArray& reply)
{
    if (isFinished())
        return;
    if (answer.kind != host::Answer::Accepted && answer.kind != host::Answer::Retried &&
        answer.kind != host::Answer::Refused)
        m_failure = host::failureOfReply(answer, reply);
    if (isLoggingIn())
        takeLoginReply(request, answer);
}

void DiagnoseCommand::takeLoginReply(const host::SentRequest& request, const host::Answer& answer)
{
    if (m_failure)
        fail(host::findLoginFailure(loginService(), *m_failure));
    else if (answer.kind != host::Answer::Accepted)
        return;
    else if (request.content.service == host::Service::Identification)
        pass(QStringLiteral("the PLC identified itself"), Step::FileRequest);
    else
        pass(QStringLiteral("the PLC accepted the login"), Step::Area);
}

void DiagnoseCommand::readNext()
{
    if (m_labels.isEmpty()) {
        m_step = Step::Label;
        readCyclic();
        return;
    }
    const int area = m_labels.first().area;
    const bool isReadable = m_readableAreas.contains(area);
    // The first read waits for the login.
    if (!isLoggingIn())
        m_step = isReadable ? Step::Label : Step::Area;
    if (isReadable)
        readLabel(m_labels.takeFirst());
    else
        readArea(area);
}

void DiagnoseCommand::readArea(int area)
{
    const host::DataPoint point = m_firstOfArea.value(area);
    read(point, [this, area, point](const host::TransferOutcome& outcome, const QByteArray&) {
        if (outcome.isDone()) {
            m_readableAreas.append(area);
            pass(QStringLiteral("area %1 can be read (%2)").arg(area).arg(point.text), Step::Label);
            readNext();
        } else if (outcome.kind == host::TransferOutcome::Refused) {
            m_others = m_firstOfArea;
            m_others.remove(area);
            probeOthers(area, readFailure(outcome));
        } else {
            fail(host::findAreaFailure(area, readFailure(outcome), {}));
        }
    });
}

void DiagnoseCommand::probeOthers(int area, const host::ExchangeFailure& failure)
{
    if (m_others.isEmpty()) {
        report(host::findAreaFailure(area, failure, m_readableAreas));
        skipArea(area);
        readNext();
        return;
    }
    const host::DataPoint point = m_others.take(m_others.firstKey());
    read(point,
         [this, area, failure, point](const host::TransferOutcome& outcome, const QByteArray&) {
             if (outcome.isDone() && !m_readableAreas.contains(point.area))
                 m_readableAreas.append(point.area);
             probeOthers(area, failure);
         });
}

void DiagnoseCommand::skipArea(int area)
{
    const auto isThere = [area](const host::DataPoint& point) { return point.area == area; };
    m_labels.erase(std::remove_if(m_labels.begin(), m_labels.end(), isThere), m_labels.end());
}

void DiagnoseCommand::readLabel(const host::DataPoint& point)
{
    read(point, [this, point](const host::TransferOutcome& outcome, const QByteArray& bytes) {
        if (outcome.isDone()) {
            pass(valueLine(point, host::pointText(point, host::decodeValues(point, bytes))),
                 Step::Label);
        } else if (outcome.kind == host::TransferOutcome::Refused) {
            report(host::findLabelFailure(point.text, point.area, readFailure(outcome)));
        } else {
            fail(host::findLabelFailure(point.text, point.area, readFailure(outcome)));
            return;
        }
        readNext();
    });
}

/// All at once; the runtime groups them and finds out which are refused.
void DiagnoseCommand::readCyclic()
{
    m_openCyclic = int(m_cyclic.size());
    if (m_openCyclic == 0)
        finish(m_hasFailed ? kExitRefused : kExitDone);
    const QVector<host::DataPoint> points = m_cyclic;
    for (const host::DataPoint& point : points) {
        read(point, [this, point](const host::TransferOutcome& outcome, const QByteArray&) {
            takeCyclic(point, outcome);
        });
    }
}

void DiagnoseCommand::takeCyclic(const host::DataPoint& point, const host::TransferOutcome& outcome)
{
    const bool isRefused = outcome.kind == host::TransferOutcome::Refused;
    if (!outcome.isDone() && !isRefused) {
        fail(host::findLabelFailure(point.text, point.area, readFailure(outcome)));
        return;
    }
    if (isRefused) {
        ++m_refusedCyclic;
        report(host::findRefusedLabel(point.text, addressText(point), outcome.status));
    }
    if (--m_openCyclic > 0)
        return;
    const QString total = QString::number(m_cyclic.size());
    if (m_refusedCyclic == 0) {
        pass(QStringLiteral("the other %1 cyclic labels can be read").arg(total), Step::Label);
    } else {
        pass(QStringLiteral("of the other %1 cyclic labels %2 can be read, %3 are refused")
                 .arg(total)
                 .arg(m_cyclic.size() - m_refusedCyclic)
                 .arg(m_refusedCyclic),
             Step::Label);
    }
    finish(m_hasFailed ? kExitRefused : kExitDone);
}

void DiagnoseCommand::read(const host::DataPoint& point, const host::ReadSettled& settled)
{
    runtime().readOnce(
        point, link().now(),
        [this, settled](const host::TransferOutcome& outcome, const QByteArray& bytes) {
            if (!isFinished())
                settled(outcome, bytes);
        });
}

host::ExchangeFailure DiagnoseCommand::readFailure(const host::TransferOutcome& outcome) const
{
    host::ExchangeFailure failure;
    failure.status = outcome.status;
    failure.kind = host::ExchangeFailure::Refused;
    if (outcome.kind == host::TransferOutcome::Refused)
        return failure;
    if (m_failure)
        return *m_failure;
    failure.kind = host::ExchangeFailure::LinkBroken;
    failure.reason = host::readOutcomeText(outcome);
    return failure;
}

void DiagnoseCommand::pass(const QString& text, Step next)
{
    printStep(true, text, nullptr);
    m_step = next;
    m_stepTime.restart();
}

void DiagnoseCommand::report(const host::Finding& finding)
{
    m_hasFailed = true;
    printStep(false, finding.happened, &finding);
    m_stepTime.restart();
}

void DiagnoseCommand::fail(const host::Finding& finding)
{
    report(finding);
    finish(kExitRefused);
}

void DiagnoseCommand::printStep(bool hasPassed, const QString& text, const host::Finding* finding)
{
    static constexpr const char* kNames[] = {"name",         "connection", "identification",
                                             "file request", "area",       "label"};
    const QString name = QString::fromLatin1(kNames[int(m_step)]);
    const double time = double(m_stepTime.nsecsElapsed()) / 1e6; // ms
    if (m_options.json) {
        JsonLine line;
        line.add("step", name);
        line.add("outcome", hasPassed ? QStringLiteral("passed") : QStringLiteral("failed"));
        line.add("time", time, kExactTimeDecimals);
        line.add("text", text);
        if (finding)
            line.add("meaning", finding->meaning).add("advice", finding->advice);
        print(line.text());
        return;
    }
    const QString outcome =
        (hasPassed ? QStringLiteral("ok") : QStringLiteral("FAILED")).leftJustified(kIndent);
    print(hasPassed ? Emphasis::Success : Emphasis::Failure, outcome,
          QStringLiteral("%1%2 ms  ").arg(name, -14).arg(time, 9, 'f', kStageDecimals) + text);
    if (!finding)
        return;
    printParagraph(QStringLiteral("means"), finding->meaning);
    printParagraph(QStringLiteral("try  "), finding->advice);
}

} // namespace plc::cli
