#include "host/result_text.h"

namespace plc {
namespace {

struct ResultMeaning {
    int first;
    int last;
    const char* text;
};

/// Failures come in groups of twelve: the number within a group tells the category of the request.
const ResultMeaning kMeanings[] = {
    {0, 0, "not finished"},
    {1, 1, "accepted"},
    {11, 22, "the reply is no good answer: its length or its status is wrong"},
    {41, 52, "no reply arrived"},
    {71, 82, "the reply has another size than expected"},
    {100, 100, "accepted from the remote area"},
    {111, 122, "remote area: the reply is no good answer: its length or its status is wrong"},
    {141, 152, "remote area: no reply arrived"},
    {171, 182, "remote area: the reply has another size than expected"},
    {200, 200, "the driver has no settings, or cannot tell what happened"},
    {201, 201, "the PLC refused the login"}};

QString refusalText(const TransferOutcome& outcome)
{
    QString text = QStringLiteral("refused: result %1, %2")
                       .arg(outcome.result)
                       .arg(resultText(outcome.result));
    if (outcome.status > 0) {
        text += QStringLiteral(
                    "; the PLC's status is %1, so it may not have this address: compare "
                    "it with the PLC's program")
                    .arg(outcome.status);
    }
    return text;
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

QString outcomeText(const TransferOutcome& outcome)
{
    switch (outcome.kind) {
        case TransferOutcome::Done:
            return QStringLiteral("done");
        case TransferOutcome::Refused:
            return refusalText(outcome);
        case TransferOutcome::LinkLost:
            return QStringLiteral("not known: %1; the PLC may or may not have carried it out")
                .arg(outcome.reason);
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

} // namespace plc
