#include "host/tcp/diagnosis.h"

#include <QtCore/QStringList>

#include "host/transfers/result_text.h"
#include "host/wire/frame_entries.h"

namespace plc::host {
namespace {

struct Explanation {
    const char* meaning;
    const char* advice;
};

/// Means the same for whatever request it happens to.
Explanation commonExplanation(ExchangeFailure::Kind kind)
{
    switch (kind) {
        case ExchangeFailure::NoReply:
            return {
                "the connection stands but the request is not answered: the PLC is too busy, or "
                "this is another device or the port of another service",
                "try a longer --timeout; compare address and port with the PLC's settings; see "
                "with --trace what is sent"};
        case ExchangeFailure::ClosedByPeer:
            return {
                "something accepts connections here and then turns this one away: the PLC has "
                "as many clients as it serves, a firewall steps in, or the port belongs to "
                "another service",
                "end other clients (panels, the programming tool), compare the port with the "
                "PLC's settings, and try again"};
        case ExchangeFailure::HalfReply:
            return {
                "a reply began and did not end: the PLC or the network is too slow, or the "
                "network loses large packets",
                "try a longer --timeout, then a smaller maxReadBytes in the project; keep the "
                "session with --capture and look where it stops"};
        case ExchangeFailure::NotAFrame:
            return {"a service of another kind answers at this port",
                    "compare address and port with the PLC's settings"};
        case ExchangeFailure::WrongLength:
            return {
                "the reply has more or fewer bytes than were asked for, so it is none to this "
                "request: something between answers in the PLC's place, or the PLC speaks "
                "another version of the protocol",
                "connect without gateways or proxies between; keep the session with --capture"};
        case ExchangeFailure::ShortReply:
            return {
                "the reply is too short for a login: the PLC refuses it in this way, or it is "
                "no PLC of this family",
                "compare the PLC's type with what this driver is for; see the reply with "
                "--trace"};
        case ExchangeFailure::Refused:
        case ExchangeFailure::LinkBroken:
            break;
    }
    return {"the network failed while the reply was awaited",
            "check cable and switch, and whether the PLC has just started anew; then try again"};
}

QString happenedText(const ExchangeFailure& failure)
{
    if (failure.kind == ExchangeFailure::Refused && failure.status > 0) {
        return QStringLiteral("the PLC answered with status %1 (0x%2)")
            .arg(failure.status)
            .arg(failure.status, 4, 16, QLatin1Char('0'));
    }
    return failure.reason;
}

Finding finding(const QString& happened, const Explanation& explanation)
{
    return {happened, QLatin1String(explanation.meaning), QLatin1String(explanation.advice)};
}

QString numbersText(const QVector<int>& numbers)
{
    QStringList texts;
    for (int number : numbers)
        texts.append(QString::number(number));
    return texts.join(QStringLiteral(", "));
}

} // namespace

ExchangeFailure failureOfLoss(QAbstractSocket::SocketError error, const QByteArray& received,
                              const QString& reason)
{
    ExchangeFailure failure;
    failure.received = int(received.size());
    failure.reason = reason;
    const bool isClosedByPeer = error == QAbstractSocket::RemoteHostClosedError;
    if (!mayBeginFrame(received))
        failure.kind = ExchangeFailure::NotAFrame;
    else if (error != QAbstractSocket::UnknownSocketError && !isClosedByPeer)
        failure.kind = ExchangeFailure::LinkBroken;
    else if (!received.isEmpty())
        failure.kind = ExchangeFailure::HalfReply;
    else
        failure.kind = isClosedByPeer ? ExchangeFailure::ClosedByPeer : ExchangeFailure::NoReply;
    return failure;
}

ExchangeFailure failureOfReply(const Answer& answer, const QByteArray& reply)
{
    ExchangeFailure failure;
    failure.status = answer.status;
    failure.received = int(reply.size());
    if (answer.status > 0) {
        failure.kind = ExchangeFailure::Refused;
    } else if (answer.kind == Answer::LoginRefused) {
        failure.kind = ExchangeFailure::ShortReply;
        failure.reason = QStringLiteral("the PLC answered with %1 bytes").arg(reply.size());
    } else {
        failure.kind = ExchangeFailure::WrongLength;
        failure.reason =
            answer.kind == Answer::Misfit
                ? QStringLiteral("the PLC answered with %1 bytes, which is not what was asked for")
                      .arg(reply.size())
                : QStringLiteral("the PLC answered with %1 bytes; result %2, %3")
                      .arg(reply.size())
                      .arg(answer.result)
                      .arg(resultText(answer.result));
    }
    return failure;
}

Finding findNameFailure(const QString& host, const QString& reason)
{
    return finding(
        QStringLiteral("%1 has no address: %2").arg(host, reason),
        {"no name server that this computer asks knows the name, or none of them answers",
         "check how the name is written, or give the PLC's IP address with --address or "
         "as \"address\" in the project"});
}

Finding findConnectionFailure(const QString& host, int port, QAbstractSocket::SocketError error,
                              const QString& reason)
{
    const QString happened =
        QStringLiteral("no connection to %1 port %2: %3").arg(host).arg(port).arg(reason);
    switch (error) {
        case QAbstractSocket::ConnectionRefusedError:
            return finding(happened,
                           {"the computer at this address is there, but nothing listens at this "
                            "port, or a firewall refuses for it",
                            "compare address and port with the PLC's settings (--address, --port, "
                            "or \"plc\" in the project); see whether the PLC has started"});
        case QAbstractSocket::HostNotFoundError:
            return findNameFailure(host, reason);
        case QAbstractSocket::UnknownSocketError: // the session's own limit
        case QAbstractSocket::SocketTimeoutError:
            return finding(happened,
                           {"nothing at this address answers: the PLC is off or has another "
                            "address, or a firewall drops what is sent to it",
                            "see whether the PLC answers a ping from here; check its power, its "
                            "cable and its IP settings; over a slow network try a longer "
                            "--timeout"});
        case QAbstractSocket::NetworkError:
            return finding(happened,
                           {"this computer knows no way to this address: it is in another network, "
                            "or the network interface is down",
                            "check this computer's own IP address, network mask and gateway, and "
                            "the cable"});
        default:
            return finding(happened, {"the connection could not be made",
                                      "check address and port, and this computer's network"});
    }
}

Finding findLoginFailure(Service service, const ExchangeFailure& failure)
{
    const QString happened = happenedText(failure);
    if (failure.kind != ExchangeFailure::Refused)
        return finding(happened, commonExplanation(failure.kind));
    if (service == Service::Identification) {
        return finding(happened, {"the PLC speaks the protocol and refuses to log this client in",
                                  "end other clients that may hold the PLC; see whether it runs "
                                  "and whether its settings permit access over the network"});
    }
    return finding(happened, {"the PLC told who it is, but does not give the file that completes "
                              "the login: most likely it has no program",
                              "download the program to the PLC again, with its symbols, and try "
                              "again"});
}

Finding findAreaFailure(int area, const ExchangeFailure& failure, const QVector<int>& readable)
{
    const QString happened = happenedText(failure);
    if (failure.kind != ExchangeFailure::Refused)
        return finding(happened, commonExplanation(failure.kind));
    if (readable.isEmpty()) {
        return finding(happened, {"the login is accepted, but the PLC lets nothing be read of this "
                                  "project: the project is for another PLC or another program, or "
                                  "the PLC does not permit to read",
                                  "compare the areas of the project with the PLC's program; see "
                                  "whether the PLC runs"});
    }
    return {happened,
            QStringLiteral("the PLC has no area %1, or a smaller one than the project says; of "
                           "area %2 it can be read")
                .arg(area)
                .arg(numbersText(readable)),
            QStringLiteral("compare area %1 of the project, its index and its size, with the "
                           "PLC's program")
                .arg(area)};
}

Finding findLabelFailure(const QString& label, int area, const ExchangeFailure& failure)
{
    const QString happened = happenedText(failure);
    if (failure.kind != ExchangeFailure::Refused)
        return finding(happened, commonExplanation(failure.kind));
    return {happened,
            QStringLiteral("area %1 can be read, but not where %2 lies: the area of the PLC ends "
                           "before, so the project does not fit the PLC's program")
                .arg(area)
                .arg(label),
            QStringLiteral("compare the offset of %1 (plc resolve shows it) and the size of "
                           "area %2 with the PLC's program")
                .arg(label)
                .arg(area)};
}

Finding findRefusedLabel(const QString& label, const QString& place, int status)
{
    return {QStringLiteral("%1 (%2): refused with %3").arg(label, place, statusText(status)),
            QStringLiteral("the PLC does not give this address: its area may end before, or the "
                           "project may be for another program"),
            QStringLiteral("compare the offset of %1 (plc resolve shows it) with the PLC's program")
                .arg(label)};
}

} // namespace plc::host
