#include "host/transfers/result_text.h"

#include "host/driver/driver_functions.h"

namespace plc::host {
namespace {

struct ResultMeaning {
    int first;
    int last;
    const char* text;
};

constexpr ResultMeaning one(int result, const char* text)
{
    return {result, result, text};
}

/// Failures are told as a base and a shift, which tells the category of the request.
constexpr ResultMeaning shifted(int base, const char* text)
{
    return {base + 1, base + 1 + PLC_LAST_SHIFTING_CATEGORY, text};
}

constexpr ResultMeaning kMeanings[] = {
    one(PLC_RESULT_NOT_FINISHED, "not finished"),
    one(PLC_RESULT_ACCEPTED, "accepted"),
    shifted(PLC_RESULT_REFUSED_BASE,
            "the reply is no good answer: its length or its status is wrong"),
    shifted(PLC_RESULT_NOTHING_RECEIVED_BASE, "no reply arrived"),
    shifted(PLC_RESULT_LENGTH_WRONG_BASE, "the reply has another size than expected"),
    one(PLC_RESULT_REMOTE_ACCEPTED, "accepted from the remote area"),
    shifted(PLC_RESULT_REMOTE_REFUSED_BASE,
            "remote area: the reply is no good answer: its length or its status is wrong"),
    shifted(PLC_RESULT_REMOTE_NOTHING_RECEIVED_BASE, "remote area: no reply arrived"),
    shifted(PLC_RESULT_REMOTE_LENGTH_WRONG_BASE,
            "remote area: the reply has another size than expected"),
    one(PLC_RESULT_NO_SETTINGS, "the driver has no settings, or cannot tell what happened"),
    one(PLC_RESULT_LOGIN_REFUSED, "the PLC refused the login")};
static_assert(PLC_RESULT_NO_BYTES == PLC_RESULT_NOTHING_RECEIVED_BASE + 1 &&
                  PLC_RESULT_FRAME_LENGTH_WRONG == PLC_RESULT_LENGTH_WRONG_BASE + 1,
              "what is never shifted stands among the shifted ones");

QString writeRefusalText(const TransferOutcome& outcome)
{
    QString text = QStringLiteral("refused: result %1, %2")
                       .arg(outcome.result)
                       .arg(resultText(outcome.result));
    if (outcome.status > 0) {
        text += QStringLiteral(
                    "; the PLC's %1: it may not have this address; compare it with the "
                    "PLC's program")
                    .arg(statusText(outcome.status));
    }
    return text;
}

/// What the PLC took of a write before it ended.
QString takenText(const DataPoint& point, const TransferOutcome& outcome)
{
    if (outcome.taken == 0)
        return QString();
    const QString amount =
        values::isText(*point.type)
            ? QStringLiteral("%1 bytes").arg(outcome.taken)
            : QStringLiteral("%1 of %2 elements").arg(outcome.taken).arg(point.elements);
    return outcome.kind == TransferOutcome::LinkLost
               ? QStringLiteral("; the first %1 were taken").arg(amount)
               : QStringLiteral("; the first %1 were taken before").arg(amount);
}

} // namespace

QString resultText(int result)
{
    for (const ResultMeaning& meaning : kMeanings) {
        if (result >= meaning.first && result <= meaning.last)
            return QLatin1String(meaning.text);
    }
    return QStringLiteral("unknown to this host");
}

QString statusText(int status)
{
    if (status < 0)
        return QStringLiteral("no status");
    return QStringLiteral("status 0x%1")
        .arg(QString::number(status, 16).toUpper(), 4, QLatin1Char('0'));
}

QString writeOutcomeText(const DataPoint& point, const TransferOutcome& outcome)
{
    switch (outcome.kind) {
        case TransferOutcome::Done:
            return QStringLiteral("done");
        case TransferOutcome::Refused:
            return writeRefusalText(outcome) + takenText(point, outcome);
        case TransferOutcome::LinkLost:
            return QStringLiteral("not known: %1; the PLC may or may not have carried it out")
                       .arg(outcome.reason) +
                   takenText(point, outcome);
        case TransferOutcome::NotSent:
            return QStringLiteral("not sent: %1").arg(outcome.reason);
    }
    return QString();
}

QString readOutcomeText(const TransferOutcome& outcome)
{
    switch (outcome.kind) {
        case TransferOutcome::Done:
            return QStringLiteral("done");
        case TransferOutcome::Refused:
            return QStringLiteral(
                       "refused with %1: the PLC does not give this address; compare it "
                       "with the PLC's program")
                .arg(statusText(outcome.status));
        case TransferOutcome::LinkLost:
            return QStringLiteral("not read: %1").arg(outcome.reason);
        case TransferOutcome::NotSent:
            return QStringLiteral("not sent: %1").arg(outcome.reason);
    }
    return QString();
}

QString readOnlyText()
{
    return QStringLiteral("the project is read-only, by its setting readOnly or by --read-only");
}

QString outcomeWord(TransferOutcome::Kind kind)
{
    switch (kind) {
        case TransferOutcome::Done:
            return QStringLiteral("done");
        case TransferOutcome::Refused:
            return QStringLiteral("refused");
        case TransferOutcome::LinkLost:
            return QStringLiteral("lost");
        case TransferOutcome::NotSent:
            return QStringLiteral("unsent");
    }
    return QString();
}

} // namespace plc::host
